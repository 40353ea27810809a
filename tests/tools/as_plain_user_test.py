"""Runs tools/as-plain-user as an ordinary user, for whom it changes nothing, and where the tests are root's, as root."""

import os
import shutil
import subprocess
import tempfile
import unittest

TOOL = os.path.abspath(os.path.join(os.path.dirname(__file__), "..", "..", "tools", "as-plain-user"))
IS_ROOT = os.geteuid() == 0
MAY_MOUNT = IS_ROOT and subprocess.run(["unshare", "--mount", "true"], capture_output=True, check=False).returncode == 0
# For this one command, users and their homes are copies: the user that the tool makes must not stay on the machine.
ISOLATED = """set -e
cp -a /etc "$1/etc"
sed -i /^tavril-tests:/d "$1"/etc/{passwd,shadow,group,gshadow}
mount --bind "$1/etc" /etc
mount -t tmpfs none /var/lib
mount -t tmpfs none /var/log
shift
exec "$@"
"""


class Tree(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        os.chmod(folder.name, 0o755)
        self.folder = os.path.realpath(folder.name)
        self.closed = os.path.join(self.folder, "closed")
        self.root = os.path.join(self.closed, "a trée")
        os.makedirs(os.path.join(self.root, "tools"))
        shutil.copy(TOOL, os.path.join(self.root, "tools"))
        with open(os.path.join(self.root, "CMakeLists.txt"), "w", encoding="utf-8") as file:
            file.write("the project\n")
        self.tool = os.path.join(self.root, "tools/as-plain-user")

    def run_command(self, *command):
        return subprocess.run(command, capture_output=True, text=True, cwd="/", check=False)


class AsPlainUserTest(Tree):
    def run_tool(self, *arguments):
        drop = ["setpriv", "--reuid=65534", "--regid=65534", "--clear-groups"] if IS_ROOT else []
        return self.run_command(*drop, self.tool, *arguments)

    def test_runs_the_command_in_the_tree_as_the_user_who_asked(self):
        result = self.run_tool("bash", "-c", 'echo "$1"; pwd; id -u', "bash", "an argument")
        asked = 65534 if IS_ROOT else os.geteuid()
        self.assertEqual(result.stdout, f"an argument\n{self.root}\n{asked}\n", result.stderr)

    def test_ends_as_the_command_does(self):
        self.assertEqual(self.run_tool("bash", "-c", "exit 7").returncode, 7)

    def test_wants_a_command(self):
        self.assertEqual(self.run_tool().returncode, 2)


@unittest.skipUnless(MAY_MOUNT, "only root is asked, and only where it may make mounts")
class AsRootTest(Tree):
    def run_isolated(self, *command):
        return self.run_command("unshare", "--mount", "bash", "-c", ISOLATED, "bash", self.folder, *command)

    def test_becomes_another_user_who_owns_the_build_folder(self):
        os.makedirs(os.path.join(self.root, "build/ci"))
        result = self.run_isolated("env", "XDG_RUNTIME_DIR=/run", self.tool, "bash", "-c",
                                   'id -un; pwd; echo "$HOME $USER $LOGNAME ${XDG_RUNTIME_DIR-}"; stat -c %U build/ci')
        self.assertEqual(result.stdout, f"tavril-tests\n{self.root}\n/var/lib/tavril-tests tavril-tests tavril-tests \n"
                                        "tavril-tests\n", result.stderr)

    def test_becomes_the_user_who_is_there_already(self):
        result = self.run_isolated("bash", "-c", '"$0" id -u && "$0" id -u', self.tool)
        first, second = result.stdout.split()
        self.assertEqual(first, second)
        self.assertNotEqual(first, "0")

    def test_keeps_the_rights_to_itself(self):
        result = self.run_isolated(self.tool, "bash", "-c", "touch CMakeLists.txt new; grep CapEff /proc/self/status")
        self.assertEqual(result.stdout.split(), ["CapEff:", "0" * 16], result.stderr)
        self.assertFalse(os.path.exists(os.path.join(self.root, "new")))

    def test_ends_as_the_command_does(self):
        self.assertEqual(self.run_isolated(self.tool, "bash", "-c", "exit 7").returncode, 7)
        os.chmod(self.closed, 0o700)
        self.assertEqual(self.run_isolated(self.tool, "bash", "-c", "exit 7").returncode, 7)

    def test_leads_to_a_tree_below_a_folder_that_only_root_may_enter(self):
        os.chmod(self.closed, 0o700)
        with open(os.path.join(self.closed, "secret"), "w", encoding="utf-8"):
            pass
        result = self.run_isolated(self.tool, "bash", "-c", 'id -un; pwd; cat CMakeLists.txt; touch build/new; ls ..')
        self.assertEqual(result.stdout, f"tavril-tests\n{self.root}\nthe project\na trée\n", result.stderr)
        self.assertEqual(result.stderr, "")
        self.assertTrue(os.path.exists(os.path.join(self.root, "build/new")))

    def test_refuses_a_tree_that_is_for_root_alone(self):
        os.chmod(self.root, 0o700)
        result = self.run_isolated(self.tool, "touch", "build/ran")
        self.assertEqual(result.returncode, 1)
        self.assertIn(f"{self.root} is for root alone: chmod -R go+rX it", result.stderr)
        self.assertFalse(os.path.exists(os.path.join(self.root, "build/ran")))

    def test_says_so_where_the_machine_allows_no_mounts(self):
        os.chmod(self.closed, 0o700)
        result = self.run_isolated("setpriv", "--bounding-set=-sys_admin", "--inh-caps=-sys_admin", self.tool, "true")
        self.assertEqual(result.returncode, 1)
        self.assertIn(f"tavril-tests may not enter {self.root}, and this machine allows no mounts", result.stderr)


if __name__ == "__main__":
    unittest.main()
