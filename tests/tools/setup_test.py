"""Runs tools/setup with stand-ins for dpkg-query, apt-get and sudo that only write down what they are asked."""

import os
import shutil
import subprocess
import tempfile
import unittest

TOOL = os.path.abspath(os.path.join(os.path.dirname(__file__), "..", "..", "tools", "setup"))
# Nothing else of the machine is in the PATH, above all neither apt-get nor sudo.
BORROWED = ("bash", "cat", "env", "grep", "sleep")

DPKG_QUERY = """#!/bin/bash
shift 2
for package in "$@"; do
  if grep -qx "$package" "$STATE/missing"; then echo "no packages found matching $package" >&2; else
    echo "$package installed"; fi
done
"""
APT_GET = """#!/bin/bash
echo "$DEBIAN_FRONTEND: $*" >>"$STATE/apt-get"
case " $* " in
  *" update "*) echo >"$STATE/known" ;;
  *" install "*) [ ! -e "$STATE/stale" ] || [ -e "$STATE/known" ] ;;
esac
"""
APT_CACHE = """#!/bin/bash
[ ! -e "$STATE/known" ] || echo "Package: ${!#}"
"""
ID = """#!/bin/bash
cat "$STATE/user"
"""
SUDO = """#!/bin/bash
echo "$1" >>"$STATE/sudo"
exec "$@"
"""


class SetupTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.bin = os.path.join(folder.name, "bin")
        self.state = os.path.join(folder.name, "state")
        os.mkdir(self.bin)
        os.mkdir(self.state)
        for name in BORROWED:
            os.symlink(shutil.which(name), os.path.join(self.bin, name))
        self.program("dpkg-query", DPKG_QUERY)
        self.program("apt-get", APT_GET)
        self.program("apt-cache", APT_CACHE)
        self.program("id", ID)
        self.note("missing", "")
        self.note("known", "")
        self.note("user", "0\n")

    def program(self, name, text):
        path = os.path.join(self.bin, name)
        with open(path, "w", encoding="utf-8") as file:
            file.write(text)
        os.chmod(path, 0o755)

    def note(self, name, text):
        with open(os.path.join(self.state, name), "w", encoding="utf-8") as file:
            file.write(text)

    def said(self, name):
        path = os.path.join(self.state, name)
        if not os.path.exists(path):
            return []
        with open(path, encoding="utf-8") as file:
            return file.read().splitlines()

    def setup_groups(self, *groups):
        return subprocess.run([TOOL, *groups], env={"PATH": self.bin, "STATE": self.state}, capture_output=True,
                              text=True, check=False)

    def test_leaves_apt_alone_when_everything_is_there(self):
        result = self.setup_groups("run", "test", "vm", "package", "check")
        self.assertEqual((result.returncode, result.stdout, result.stderr), (0, "", ""))
        self.assertEqual(self.said("apt-get"), [])

    def test_installs_what_is_missing_and_only_that(self):
        self.note("missing", "ninja-build\nlibudev-dev\nshellcheck\n")
        result = self.setup_groups("run")
        self.assertEqual((result.returncode, result.stdout), (0, ""), result.stderr)
        calls = self.said("apt-get")
        self.assertEqual(len(calls), 1, calls)
        self.assertTrue(calls[0].startswith("noninteractive: "), calls)
        self.assertIn("DPkg::Lock::Timeout=", calls[0])
        self.assertTrue(calls[0].endswith(" install --no-install-recommends ninja-build libudev-dev"), calls)

    def test_renews_the_lists_when_they_do_not_know_a_package(self):
        self.note("missing", "ninja-build\n")
        os.remove(os.path.join(self.state, "known"))
        result = self.setup_groups("run")
        self.assertEqual(result.returncode, 0, result.stderr)
        self.assertEqual([call.split()[-1] for call in self.said("apt-get")], ["update", "ninja-build"])

    def test_renews_the_lists_when_they_are_too_old_to_fetch_by(self):
        self.note("missing", "ninja-build\n")
        os.remove(os.path.join(self.state, "known"))
        self.note("stale", "")
        self.program("apt-cache", "#!/bin/bash\necho Package: known\n")
        result = self.setup_groups("run")
        self.assertEqual(result.returncode, 0, result.stderr)
        self.assertEqual([call.split()[-1] for call in self.said("apt-get")],
                         ["ninja-build", "update", "ninja-build"])

    def test_uses_sudo_when_it_is_not_root(self):
        self.note("missing", "ninja-build\n")
        self.note("user", "1000\n")
        self.program("sudo", SUDO)
        result = self.setup_groups("run")
        self.assertEqual(result.returncode, 0, result.stderr)
        self.assertEqual(self.said("sudo"), ["env"])
        self.assertEqual(len(self.said("apt-get")), 1)

    def test_says_what_to_do_when_there_is_neither_root_nor_sudo(self):
        self.note("missing", "ninja-build\n")
        self.note("user", "1000\n")
        result = self.setup_groups("run")
        self.assertEqual(result.returncode, 1)
        self.assertIn("neither root nor sudo", result.stderr)
        self.assertIn("apt-get install --no-install-recommends ninja-build\n", result.stderr)
        self.assertEqual(self.said("apt-get"), [])

    def test_names_the_packages_where_there_is_no_dpkg(self):
        os.remove(os.path.join(self.bin, "dpkg-query"))
        result = self.setup_groups("run")
        self.assertEqual(result.returncode, 0)
        self.assertIn("qt6-base-dev", result.stderr)
        self.assertEqual(self.said("apt-get"), [])

    def test_refuses_a_group_that_it_does_not_know(self):
        for groups in ((), ("fun",), ("run", "fun")):
            with self.subTest(groups):
                result = self.setup_groups(*groups)
                self.assertEqual(result.returncode, 2)
                self.assertIn("groups: run test vm bench package coverage check", result.stderr)
        self.assertEqual(self.said("apt-get"), [])


if __name__ == "__main__":
    unittest.main()
