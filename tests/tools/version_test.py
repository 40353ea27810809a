"""Sees that the version stands in CMakeLists.txt alone, and that CHANGELOG.md tells of it."""

import os
import re
import subprocess
import unittest

ROOT = os.path.abspath(os.path.join(os.path.dirname(__file__), "..", ".."))


def read(name):
    with open(os.path.join(ROOT, name), encoding="utf-8") as file:
        return file.read()


class VersionTest(unittest.TestCase):
    def setUp(self):
        self.version = re.search(r"^project\(tavril VERSION ([0-9]+\.[0-9]+\.[0-9]+) ", read("CMakeLists.txt"), re.M)[1]

    def test_has_a_section_in_the_changelog_with_a_date(self):
        released = re.findall(r"^## \[([0-9.]+)\] - [0-9]{4}-[0-9]{2}-[0-9]{2}$", read("CHANGELOG.md"), re.M)
        self.assertIn(self.version, released)
        self.assertEqual(released[0], self.version, "the newest section is of another version")

    def test_stands_in_no_other_file(self):
        result = subprocess.run(
            ["grep", "-rlIF", "--exclude-dir=build", "--exclude-dir=.git", "-e", f"VERSION {self.version}",
             "-e", f"version=\"{self.version}\"", "-e", f"tavril_{self.version}", "-e", f"tavril {self.version}",
             "-e", f"Tavril {self.version}", "."],
            cwd=ROOT, capture_output=True, text=True, check=True)
        self.assertEqual(result.stdout.split(), ["./CMakeLists.txt"])


if __name__ == "__main__":
    unittest.main()
