"""Uses the program as a screen reader does: over AT-SPI, on a bus of its own, with neither eyes nor pointer.

Called with the paths of the program and of the virtual servo:
dbus-run-session -- tools/under-xvfb /usr/bin/python3 THIS PROGRAM SERVO
"""

import os
import subprocess
import sys
import tempfile
import unittest

import gi

gi.require_version("Atspi", "2.0")
from gi.repository import Atspi, GLib  # noqa: E402

SERVO = os.path.abspath(sys.argv.pop())
PROGRAM = os.path.abspath(sys.argv.pop())
LIMIT_S = 60  # only there to end a test that has failed
EVENTS = (
    "window:activate",
    "object:children-changed",
    "object:state-changed",
    "object:property-change",
    "object:text-changed",
)
USABLE_ROLES = {"text", "push button", "combo box", "dial", "slider"}


class Screen:
    """What the running program tells an assistive technology."""

    def __init__(self):
        self.context = GLib.MainContext.default()
        # While the program waits for the bridge to start, it answers nobody.
        Atspi.set_timeout(LIMIT_S * 1000, LIMIT_S * 1000)
        # The handler has nothing to do: an event ends the wait, and then the tree is looked at.
        self.listener = Atspi.EventListener.new(lambda event: None)
        for event in EVENTS:
            self.listener.register(event)

    def wait_for(self, condition, what):
        """Waits for events until the condition gives something, and returns that."""
        expired = []
        timer = GLib.timeout_add_seconds(LIMIT_S, lambda: expired.append(True) or GLib.SOURCE_CONTINUE)
        try:
            while True:
                found = condition()
                if found:
                    return found
                if expired:
                    raise AssertionError(f"{what} did not come about within {LIMIT_S} s")
                self.context.iteration(True)
        finally:
            GLib.source_remove(timer)

    def application(self):
        desktop = Atspi.get_desktop(0)
        for index in range(desktop.get_child_count()):
            child = desktop.get_child_at_index(index)
            if child and child.get_name() == "Tavril":
                return child
        return None

    def window(self, role, name=None):
        for child in children(self.application()):
            if role_of(child) == role and name in (None, child.get_name()) and is_in(child, "SHOWING"):
                return child
        return None

    def find(self, role, name, top=None):
        for each in everything(top or self.application()):
            if role_of(each) == role and each.get_name() == name:
                return each
        return None

    def shown(self, role, name):
        found = self.find(role, name)
        return found if found and is_in(found, "SHOWING") else None


def role_of(element):
    """The name of its role; that of push buttons is "button" since version 2.54 of AT-SPI."""
    name = element.get_role_name()
    return "push button" if name == "button" else name


def is_in(element, state):
    return element.get_state_set().contains(getattr(Atspi.StateType, state))


def children(element):
    if not element:
        return
    for index in range(element.get_child_count()):
        child = element.get_child_at_index(index)
        if child:
            yield child


def everything(element):
    for child in children(element):
        yield child
        yield from everything(child)


def press(element):
    """Does the first thing that can be done with an element: a press, or the choice of a menu item."""
    assert element.get_action_iface().do_action(0), element.get_name()


def text_of(element):
    return Atspi.Text.get_text(element.get_text_iface(), 0, -1)


def spoken_name(element):
    """The element's own name, but a combo box is called by its caption: its name is what it shows."""
    for relation in element.get_relation_set():
        is_caption = relation.get_relation_type() == Atspi.RelationType.LABELLED_BY
        if is_caption and (role_of(element) == "combo box" or not element.get_name()):
            return relation.get_target(0).get_name()
    return element.get_name()


class AssistiveTechnologyTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        # The registry has to know of us first, or the events of the start are told to nobody.
        cls.screen = Screen()
        cls.home = tempfile.TemporaryDirectory()
        environment = dict(
            os.environ, QT_LINUX_ACCESSIBILITY_ALWAYS_ON="1", TAVRIL_LOG="0", HOME=cls.home.name, XDG_DATA_HOME=cls.home.name
        )
        cls.servo = subprocess.Popen([SERVO], stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True)
        port = cls.servo.stdout.readline().strip()
        cls.program = subprocess.Popen([PROGRAM, "--port", port, "--language", "en"], env=environment)
        screen = cls.screen
        try:
            cls.main = screen.wait_for(lambda: screen.window("frame", "Tavril"), "the window")
            cls.before_the_connection()
            press(screen.find("menu item", "Port Settings"))
            screen.wait_for(lambda: screen.window("dialog", "Port Settings"), "the port dialog")
            cls.dialog_names = usable_names(screen.window("dialog", "Port Settings"))
            press(screen.find("push button", "Confirm", screen.window("dialog", "Port Settings")))
            screen.wait_for(lambda: text_of(screen.find("text", "Present load")), "the read-out")
            screen.wait_for(lambda: is_in(screen.find("text", "Kp"), "ENABLED"), "fields to enter values in")
        except BaseException:
            cls.tearDownClass()
            raise

    @classmethod
    def before_the_connection(cls):
        cls.names_at_first = usable_names(cls.main)
        cls.state_at_first = cls.screen.shown("label", "Not connected") is not None
        cls.kp_at_first = is_in(cls.screen.find("text", "Kp"), "ENABLED")

    @classmethod
    def tearDownClass(cls):
        for process in (cls.program, cls.servo):
            process.terminate()
            process.wait(LIMIT_S)
        cls.servo.stdout.close()
        cls.home.cleanup()

    def test_everything_that_can_have_the_focus_has_a_role_and_a_name_of_its_own(self):
        names = usable_names(self.main)
        self.assertGreaterEqual(len(names), 24)
        self.assertNotIn("", [name for name, role in names])
        self.assertEqual(len(names), len({name for name, role in names}), names)
        self.assertLessEqual({role for name, role in names}, USABLE_ROLES)

    def test_before_the_connection_there_is_little_to_use_and_the_state_can_be_read(self):
        self.assertIn(("Position", "text"), self.names_at_first)
        self.assertNotIn(("Read", "push button"), self.names_at_first)
        self.assertTrue(self.state_at_first)
        self.assertFalse(self.kp_at_first)

    def test_the_port_dialog_is_named_throughout(self):
        self.assertEqual(
            sorted(self.dialog_names),
            [("Cancel", "push button"), ("Confirm", "push button"), ("Serial port", "combo box")],
        )

    def test_values_are_read_by_the_names_of_their_captions(self):
        for name, value in (("Servo ID", "1"), ("Kp", "440"), ("Max. load", "400"), ("Error status", "0 Items")):
            self.assertEqual(text_of(self.screen.find("text", name)), value, name)
        for name in ("Present voltage", "Present temperature", "Present load"):
            self.assertRegex(text_of(self.screen.find("text", name)), r"^\d+$", name)

    def test_a_field_tells_its_range_and_its_notice(self):
        range_, notice = self.screen.find("text", "Kp").get_description().split("\n", 1)
        self.assertEqual(range_, "Proportional gain: 0 to 32766")
        self.assertTrue(notice.startswith("The proportional gain of the position control."), notice)

    def test_frames_and_connection_can_be_read(self):
        self.assertRegex(text_of(self.screen.find("text", "Last frame sent")), r"^TX: ff ")
        self.assertRegex(text_of(self.screen.find("text", "Last frame received")), r"^RX: 255 ")
        labels = [each.get_name() for each in everything(self.main) if role_of(each) == "label"]
        self.assertTrue([name for name in labels if name.startswith("Connected to usbport-")], labels)

    def test_a_question_is_a_dialog_with_the_focus_on_cancel_and_goes_when_that_is_pressed(self):
        press(self.screen.find("menu item", "Reboot Servo"))
        panel = self.screen.wait_for(lambda: self.screen.shown("dialog", "Warning"), "the question")
        self.assertIn("Reboot the servo now?", panel.get_description())
        cancel = self.screen.find("push button", "Cancel", panel)
        self.screen.wait_for(lambda: is_in(cancel, "FOCUSED"), "the focus on Cancel")
        press(cancel)
        self.screen.wait_for(lambda: not self.screen.shown("dialog", "Warning"), "the end of the question")

    def test_a_button_can_be_pressed(self):
        press(self.screen.find("push button", "Capture"))
        position = self.screen.find("text", "Position")
        self.screen.wait_for(lambda: text_of(position), "the position")
        self.assertRegex(text_of(position), r"^\d+$")


def usable_names(top):
    """Name and role of all that can have the focus and can be seen."""
    return [
        (spoken_name(each), role_of(each))
        for each in everything(top)
        if is_in(each, "FOCUSABLE") and is_in(each, "SHOWING") and is_in(each, "ENABLED")
        and role_of(each) not in ("menu item", "list item")
    ]


if __name__ == "__main__":
    unittest.main(verbosity=2)
