"""Runs the editor as a Wayland program: under-weston python3 wayland_test.py TAVRIL

It connects to the virtual servo and saves a picture, and what it says to the compositor is looked at.
"""

import os
import subprocess
import sys
import tempfile
import unittest

PROGRAM = sys.argv.pop()


class WaylandTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.folder = tempfile.TemporaryDirectory()
        cls.addClassCleanup(cls.folder.cleanup)
        cls.picture = os.path.join(cls.folder.name, "picture.png")
        home = {name: cls.folder.name for name in ("HOME", "XDG_CONFIG_HOME", "XDG_DATA_HOME")}
        cls.outcome = subprocess.run([PROGRAM, "--demo", "--language", "en", "--snapshot", cls.picture], timeout=100, check=False,
                                 capture_output=True, text=True, env=dict(os.environ, WAYLAND_DEBUG="1", TAVRIL_LOG="0", **home))
        cls.talk = cls.outcome.stderr

    def test_it_connects_and_saves_its_picture(self):
        self.assertEqual(self.outcome.returncode, 0, self.talk[-2000:])
        with open(self.picture, "rb") as file:
            self.assertEqual(file.read(4)[1:], b"PNG")

    def test_its_window_has_its_title_and_the_name_of_its_desktop_entry(self):
        self.assertRegex(self.talk, r'xdg_toplevel[@#]\d+\.set_title\("[^"]*Tavril[^"]*"\)')
        self.assertRegex(self.talk, r'xdg_toplevel[@#]\d+\.set_app_id\("org\.tavril\.Tavril"\)')

    def test_its_window_is_drawn(self):
        self.assertRegex(self.talk, r"wl_surface[@#]\d+\.attach\(wl_buffer[@#]\d+")
        self.assertRegex(self.talk, r"wl_surface[@#]\d+\.commit\(\)")


if __name__ == "__main__":
    unittest.main()
