"""Asks tools/check-distribution what it cannot mean, and tools/clean-system.sh for mirrors, with a stand-in for apt-get."""

import os
import subprocess
import tempfile
import unittest

ROOT = os.path.abspath(os.path.join(os.path.dirname(__file__), "..", ".."))
TOOL = os.path.join(ROOT, "tools", "check-distribution")
APT_GET = """#!/bin/bash
cat <<END
other main http://other.example/debian/
{own} contrib http://contrib.example/debian/
{own} main http://own.example/debian/
{own} main http://later.example/debian/
END
"""


class CheckDistributionTest(unittest.TestCase):
    def test_says_how_it_is_called_when_it_is_not_told_a_release_or_told_what_it_does_not_know(self):
        for arguments in ([], ["../etc"], ["13"], ["trixie", "everything"], ["trixie", "run", "bogus"]):
            result = subprocess.run([TOOL, *arguments], capture_output=True, text=True, check=False)
            self.assertEqual((result.returncode, result.stdout), (2, ""), arguments)
            self.assertIn("tools/check-distribution RELEASE [WHAT...]", result.stderr)
            for what in ("run", "core", "tests", "clang", "package"):
                self.assertRegex(result.stderr, rf"(?m)^ +{what} ")

    def mirror_of(self, release):
        with tempfile.TemporaryDirectory() as folder:
            own = self.shell("own_release", {})
            with open(os.path.join(folder, "apt-get"), "w", encoding="utf-8") as file:
                file.write(APT_GET.format(own=own))
            os.chmod(file.name, 0o755)
            return self.shell(f"mirror_of {release or own}", {"PATH": f"{folder}:{os.environ['PATH']}"})

    def shell(self, command, environment):
        return subprocess.run(["bash", "-c", f". tools/clean-system.sh; {command}"], cwd=ROOT, capture_output=True,
                              text=True, check=True, env={**os.environ, **environment}).stdout.strip()

    def test_takes_the_first_mirror_that_apt_has_of_a_release(self):
        self.assertEqual(self.mirror_of("other"), "http://other.example/debian/")
        self.assertEqual(self.mirror_of(None), "http://own.example/debian/")

    def test_takes_the_mirror_of_this_machines_release_for_one_that_apt_does_not_know(self):
        self.assertEqual(self.mirror_of("unknown"), "http://own.example/debian/")


if __name__ == "__main__":
    unittest.main()
