"""Runs tools/check-udev-rules on rules that are right and wrong."""

import os
import subprocess
import tempfile
import unittest

ROOT = os.path.abspath(os.path.join(os.path.dirname(__file__), "..", ".."))
TOOL = os.path.join(ROOT, "tools", "check-udev-rules")


class CheckUdevRulesTest(unittest.TestCase):
    def check(self, text, name="72-test.rules"):
        with tempfile.TemporaryDirectory() as folder:
            path = os.path.join(folder, name)
            with open(path, "w", encoding="utf-8") as file:
                file.write(text)
            return subprocess.run([TOOL, path], capture_output=True, text=True, check=False)

    def expect_mistake(self, text, reason, **named):
        result = self.check(text, **named)
        self.assertEqual(result.returncode, 1, text)
        self.assertIn(reason, result.stdout)

    def test_is_content_with_what_udev_understands(self):
        result = self.check('# a comment\n\nACTION=="remove", GOTO="end"\n'
                            'SUBSYSTEMS=="usb", ATTRS{idVendor}!="0403", \\\n  ENV{A}="1", TAG+="uaccess", RUN{builtin}+="x"\n'
                            'LABEL="end"\n')
        self.assertEqual((result.returncode, result.stdout), (0, ""))

    def test_is_content_with_the_rules_of_this_project(self):
        folder = os.path.join(ROOT, "packaging", "udev")
        rules = [os.path.join(folder, name) for name in os.listdir(folder)]
        self.assertTrue(rules)
        self.assertEqual(subprocess.run([TOOL, *rules], check=False).returncode, 0)

    def test_finds_what_udev_would_leave_out(self):
        self.expect_mistake('FOO=="x"\n', "FOO is no key")
        self.expect_mistake('KERNEL{x}=="x"\n', "KERNEL is no key with an argument")
        self.expect_mistake('KERNEL=="x\n', "not understood")
        self.expect_mistake('KERNEL="x"\n', "KERNEL does not go with =")
        self.expect_mistake('GOTO=="x"\nLABEL="x"\n', "GOTO does not go with ==")

    def test_finds_jumps_that_lead_nowhere_or_back(self):
        self.expect_mistake('GOTO="end"\n', 'no label "end"')
        self.expect_mistake('LABEL="end"\nGOTO="end"\n', 'no label "end"')

    def test_finds_a_tag_that_comes_too_late(self):
        self.expect_mistake('TAG+="uaccess"\n', "73-seat-late", name="73-seat.rules.rules")
        self.assertEqual(self.check('TAG+="uaccess"\n', name="73-seat-late.rules").returncode, 1)

    def test_finds_a_question_that_is_always_true(self):
        self.expect_mistake('SUBSYSTEMS!="usb", GOTO="end"\nLABEL="end"\n', "one always does")


if __name__ == "__main__":
    unittest.main()
