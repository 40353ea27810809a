"""Runs tools/as-plain-user as an ordinary user, for whom it changes nothing."""

import os
import shutil
import subprocess
import tempfile
import unittest

TOOL = os.path.abspath(os.path.join(os.path.dirname(__file__), "..", "..", "tools", "as-plain-user"))


class AsPlainUserTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        os.chmod(folder.name, 0o755)
        self.root = os.path.join(folder.name, "a trée")
        os.makedirs(os.path.join(self.root, "tools"))
        shutil.copy(TOOL, os.path.join(self.root, "tools"))

    def run_tool(self, *arguments):
        # Root would really become another user, who would then be on the machine for good.
        drop = ["setpriv", "--reuid=65534", "--regid=65534", "--clear-groups"] if os.geteuid() == 0 else []
        tool = os.path.join(self.root, "tools/as-plain-user")
        return subprocess.run([*drop, tool, *arguments], capture_output=True, text=True, cwd="/", check=False)

    def test_runs_the_command_in_the_tree_as_the_user_who_asked(self):
        result = self.run_tool("bash", "-c", 'echo "$1"; pwd; id -u', "bash", "an argument")
        asked = 65534 if os.geteuid() == 0 else os.geteuid()
        self.assertEqual(result.stdout, f"an argument\n{os.path.realpath(self.root)}\n{asked}\n", result.stderr)

    def test_ends_as_the_command_does(self):
        self.assertEqual(self.run_tool("bash", "-c", "exit 7").returncode, 7)

    def test_wants_a_command(self):
        self.assertEqual(self.run_tool().returncode, 2)


if __name__ == "__main__":
    unittest.main()
