"""Runs tools/check-includes on small trees made for the purpose, some good and some bad."""

import os
import subprocess
import tempfile
import unittest

TOOL = os.path.join(os.path.dirname(__file__), "..", "..", "tools", "check-includes")

QT_HEADERS = ("QtCore/QString", "QtGui/QImage", "QtWidgets/QWidget", "QtWidgets/qwidget.h", "QtDBus/QDBusConnection")


class CheckIncludesTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.root = os.path.join(folder.name, "tree")
        self.qt = os.path.join(folder.name, "qt6")
        for header in QT_HEADERS:
            self.put(os.path.join(self.qt, header), "")
        for header in ("platform/Log.h", "platform/linux/StderrLog.h", "protocol/Function.h", "serial/SerialPort.h",
                       "protocol/SharedState.h", "app/AppDelegate.h", "editor/Dial.h", "simulator/Servo.h",
                       "posix/Files.h", "terminal/Terminal.h"):
            self.put(os.path.join(self.root, "src", header), "#pragma once\n")
        self.put(os.path.join(self.root, "tests/support/FakeLog.h"), "#pragma once\n")

    @staticmethod
    def put(path, text):
        os.makedirs(os.path.dirname(path), exist_ok=True)
        with open(path, "w", encoding="utf-8") as file:
            file.write(text)

    def check(self, path=None, text=""):
        if path:
            self.put(os.path.join(self.root, path), text)
        return subprocess.run([TOOL, "--root", self.root, "--qt", self.qt], capture_output=True, text=True, check=False)

    def assert_good(self, path, text):
        result = self.check(path, text)
        self.assertEqual((result.returncode, result.stdout), (0, ""))

    def assert_bad(self, path, text, *reasons, line=1):
        result = self.check(path, text)
        self.assertEqual(result.returncode, 1, result)
        rows = result.stdout.splitlines()
        self.assertEqual(len(rows), 1, rows)
        self.assertTrue(rows[0].startswith(f"{path}:{line}: "), rows[0])
        for reason in reasons:
            self.assertIn(reason, rows[0])

    # What is allowed

    def test_every_room_may_use_itself_the_standard_library_and_qt_core(self):
        for room, header in (("platform", "Log"), ("protocol", "Function"), ("serial", "SerialPort"),
                             ("app", "AppDelegate"), ("editor", "Dial"), ("simulator", "Servo")):
            with self.subTest(room):
                self.assert_good(f"src/{room}/{header}.cpp",
                                 f'#include "{room}/{header}.h"\n\n#include <QString>\n\n#include <vector>\n'
                                 "#include <cerrno>\n#include <string.h>\n")

    def test_the_rooms_above_may_use_those_below(self):
        self.assert_good("src/protocol/Function.cpp", '#include "platform/Log.h"\n')
        self.assert_good("src/platform/linux/StderrLog.cpp", '#include "platform/Log.h"\n')
        self.assert_good("src/app/AppDelegate.cpp",
                         '#include "platform/Log.h"\n#include "protocol/Function.h"\n#include "serial/SerialPort.h"\n')
        self.assert_good("src/editor/Dial.cpp", '#include "app/AppDelegate.h"\n#include <QWidget>\n')

    def test_a_header_of_a_newer_qt_is_judged_by_its_module(self):
        self.assert_good("src/editor/Dial.cpp", "#include <QAccessibilityHints>\n")
        self.check("src/editor/Dial.cpp", "")
        self.assert_bad("src/serial/SerialPort.cpp", "#include <QAccessibilityHints>\n", "may not use QtGui")

    def test_main_may_use_everything(self):
        self.assert_good("src/program/tavril/main.cpp",
                         '#include "editor/Dial.h"\n#include "simulator/Servo.h"\n'
                         '#include "platform/linux/StderrLog.h"\n#include <QWidget>\n#include <unistd.h>\n')

    def test_the_implementations_of_the_platform_may_use_the_system(self):
        self.assert_good("src/platform/linux/Udev.cpp",
                         "#include <libudev.h>\n#include <sys/ioctl.h>\n#include <QDBusConnection>\n")

    def test_widgets_are_for_the_alert_and_the_painting_of_the_platform(self):
        self.assert_good("src/platform/linux/QtModalAlert.cpp", "#include <QWidget>\n")
        self.assert_good("src/platform/linux/PaintingWait.cpp", "#include <QWidget>\n")
        self.assert_bad("src/platform/linux/QtTimers.cpp", "#include <QWidget>\n", "QtWidgets")

    def test_files_are_for_the_platform_and_one_source_of_the_command_line(self):
        self.assert_good("src/platform/linux/PosixUserFiles.cpp", '#include "posix/Files.h"\n')
        self.assert_good("src/cli/Files.cpp", '#include "posix/Files.h"\n#include <fcntl.h>\n')
        self.assert_bad("src/cli/Servo.cpp", '#include "posix/Files.h"\n', "posix")

    def test_files_know_nothing_of_qt(self):
        self.assert_bad("src/posix/Files.cpp", "#include <QString>\n", "QtCore")

    def test_terminals_know_the_system_and_nothing_of_qt(self):
        self.assert_good("src/terminal/Terminal.cpp",
                         '#include "posix/Files.h"\n#include <libudev.h>\n#include <termios.h>\n')
        self.assert_bad("src/terminal/Terminal.cpp", "#include <QString>\n", "QtCore")
        self.assert_bad("src/terminal/Terminal.cpp", '#include "platform/Log.h"\n', "may not use platform")

    def test_serial_may_use_terminals_and_no_system_call(self):
        self.assert_good("src/serial/SerialPort.cpp", '#include "terminal/Terminal.h"\n')
        for header in ("unistd.h", "termios.h"):
            self.assert_bad("src/serial/SerialPort.cpp", f"#include <{header}>\n", "system headers")

    def test_the_doctor_may_use_the_record_of_line_settings_and_no_call(self):
        self.assert_good("src/doctor/PortProbe.cpp", "#include <termios.h>\n")
        self.assert_bad("src/doctor/PortProbe.cpp", "#include <unistd.h>\n", "system headers")

    def test_the_port_dialog_may_use_the_shared_state_and_nothing_else_of_the_protocol(self):
        self.assert_good("src/serial/config/Config.cpp", '#include "protocol/SharedState.h"\n#include <QWidget>\n')
        self.assert_bad("src/serial/config/Config.cpp", '#include "protocol/Function.h"\n', "may not use protocol")

    def test_tests_may_use_fakes_test_libraries_and_the_system(self):
        self.assert_good("tests/serial/SerialPortTest.cpp",
                         '#include "serial/SerialPort.h"\n#include "tests/support/FakeLog.h"\n'
                         "#include <gtest/gtest.h>\n#include <umockdev.h>\n#include <unistd.h>\n#include <QWidget>\n")

    def test_generated_files_are_known_by_their_names(self):
        self.assert_good("src/editor/Dial.cpp", '#include "ui_Dial.h"\n#include "Dial.moc"\n#include "moc_Dial.cpp"\n')
        self.assert_bad("src/protocol/Function.cpp", '#include "ui_Dial.h"\n', "screen designs")

    def test_comments_are_no_includes(self):
        self.assert_good("src/protocol/Function.cpp",
                         '// #include "serial/SerialPort.h"\n/*\n#include <unistd.h>\n*/\n'
                         'const char *url = "http://x/*";\n')

    # What is not

    def test_includes_against_the_arrows(self):
        for path, header, reason in (
            ("src/platform/Log.cpp", "platform/linux/StderrLog.h", "may not use platform/linux"),
            ("src/platform/Log.cpp", "protocol/Function.h", "may not use protocol"),
            ("src/platform/linux/Udev.cpp", "serial/SerialPort.h", "may not use serial"),
            ("src/protocol/Function.cpp", "serial/SerialPort.h", "may not use serial"),
            ("src/protocol/Function.cpp", "app/AppDelegate.h", "may not use app"),
            ("src/serial/SerialPort.cpp", "protocol/SharedState.h", "may not use protocol"),
            ("src/serial/SerialPort.cpp", "platform/linux/StderrLog.h", "may not use platform/linux"),
            ("src/app/AppDelegate.cpp", "editor/Dial.h", "may not use editor"),
            ("src/editor/Dial.cpp", "serial/SerialPort.h", "may not use serial"),
            ("src/editor/Dial.cpp", "simulator/Servo.h", "may not use simulator"),
            ("src/simulator/Servo.cpp", "protocol/Function.h", "may not use protocol"),
            ("src/simulator/Servo.cpp", "platform/Log.h", "may not use platform"),
            ("tests/protocol/FunctionTest.cpp", "simulator/Servo.h", "may not use simulator"),
            ("tests/simulator/ServoTest.cpp", "protocol/Function.h", "may not use protocol"),
        ):
            with self.subTest(path=path, header=header):
                self.assert_bad(path, f'#include "{header}"\n', header, reason)
                os.remove(os.path.join(self.root, path))

    def test_qt_modules_that_are_not_for_the_room(self):
        for path, header, module in (
            ("src/protocol/Function.cpp", "QWidget", "QtWidgets"),
            ("src/protocol/Function.cpp", "qwidget.h", "QtWidgets"),
            ("src/serial/SerialPort.cpp", "QtWidgets/QWidget", "QtWidgets"),
            ("src/app/AppDelegate.cpp", "QImage", "QtGui"),
            ("src/platform/Log.h", "QDBusConnection", "QtDBus"),
            ("src/editor/Dial.cpp", "QDBusConnection", "QtDBus"),
            ("src/app/AppDelegate.cpp", "QNoSuchThing", "not found"),
        ):
            with self.subTest(path=path, header=header):
                self.assert_bad(path, f"#include <{header}>\n", header, module)
                self.put(os.path.join(self.root, path), "")

    def test_system_headers_outside_the_platform(self):
        for header in ("unistd.h", "sys/ioctl.h", "libudev.h", "termios.h", "signal.h", "gtest/gtest.h"):
            with self.subTest(header):
                self.assert_bad("src/protocol/Function.cpp", f"#include <{header}>\n", header)

    def test_relative_includes(self):
        self.assert_bad("src/platform/linux/Udev.cpp", '#include "../Log.h"\n', "relative")
        self.assert_bad("src/platform/linux/Udev.cpp", '#include "platform/../platform/Log.h"\n', "relative")
        self.assert_bad("src/platform/linux/Udev.cpp", '#include "./StderrLog.h"\n', "relative")

    def test_a_header_without_its_room(self):
        self.assert_bad("src/protocol/Function.cpp", '#include "Function.h"\n', 'write "protocol/Function.h"')
        self.assert_bad("src/protocol/Function.cpp", '#include "src/protocol/Function.h"\n',
                        'write "protocol/Function.h"')

    def test_a_header_of_ours_in_angle_brackets(self):
        self.assert_bad("src/protocol/Function.cpp", "#include <protocol/Function.h>\n",
                        'write "protocol/Function.h"')

    def test_a_quoted_header_that_is_not_ours(self):
        self.assert_bad("src/protocol/Function.cpp", '#include "unistd.h"\n', "no header of a room")
        self.assert_bad("src/protocol/Function.cpp", '#include "protocol/Gone.h"\n', "no header of a room")

    def test_includes_that_cannot_be_judged(self):
        self.assert_bad("src/protocol/Function.cpp", "#include HEADER\n", "HEADER")
        self.assert_bad("src/protocol/Function.cpp", "#include_next <vector>\n", "include_next")

    def test_unusual_spelling_does_not_hide_an_include(self):
        self.assert_bad("src/protocol/Function.cpp", '\t#\tinclude"serial/SerialPort.h"\n', "may not use serial")
        self.assert_bad("src/protocol/Function.cpp", '/**/ #include /* */ "serial/SerialPort.h"\n',
                        "may not use serial")
        self.assert_bad("src/protocol/Function.cpp", '#include \\\n"serial/SerialPort.h"\n', "may not use serial")

    def test_the_line_is_that_of_the_include(self):
        self.assert_bad("src/protocol/Function.cpp",
                        '/* two\nlines */\n#define A \\\n  1\n\n#include <unistd.h>\n', "unistd.h", line=6)

    def test_a_room_that_the_table_does_not_know(self):
        self.assert_bad("src/attic/Old.cpp", "", "src/attic has no row")
        os.remove(os.path.join(self.root, "src/attic/Old.cpp"))
        self.assert_bad("tests/attic/OldTest.cpp", "", "tests/attic has no row")

    def test_every_offence_is_told(self):
        result = self.check("src/protocol/Function.cpp", "#include <unistd.h>\n#include <vector>\n#include <poll.h>\n")
        self.assertEqual([row.split(": ")[0] for row in result.stdout.splitlines()],
                         ["src/protocol/Function.cpp:1", "src/protocol/Function.cpp:3"])

    # What it cannot do

    def test_nothing_to_check_is_an_error(self):
        self.root += "-empty"
        result = self.check()
        self.assertEqual(result.returncode, 2)
        self.assertIn("no sources", result.stderr)

    def test_a_missing_qt_is_an_error(self):
        self.qt += "-missing"
        result = self.check()
        self.assertEqual(result.returncode, 2)
        self.assertIn("Qt", result.stderr)


if __name__ == "__main__":
    unittest.main()
