"""Runs tools/check-kept on small trees with and without mistakes."""

import os
import subprocess
import tempfile
import unittest

TOOL = os.path.abspath(os.path.join(os.path.dirname(__file__), "..", "..", "tools", "check-kept"))
ROW = "| C1 | A misspelt key | Tables have it. | None. | `Keys.AreSpeltAsEver` |\n"


class CheckKeptTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.root = folder.name
        self.write("docs/compatibility.md", "| No. | What | Why | Effect | Test |\n|---|---|---|---|---|\n" + ROW)
        self.write("src/protocol/Keys.cpp", "// Kept: C1.\n")
        self.write("tests/protocol/KeysTest.cpp", "TEST_F(Keys,\n       AreSpeltAsEver) {}\nTEST(Keys, AreFew) {}\n")

    def write(self, name, text, mode="w"):
        path = os.path.join(self.root, name)
        os.makedirs(os.path.dirname(path), exist_ok=True)
        with open(path, mode, encoding="utf-8") as file:
            file.write(text)

    def check(self):
        return subprocess.run([TOOL, self.root], capture_output=True, text=True, check=False)

    def expect(self, *mistakes):
        result = self.check()
        self.assertEqual(result.stdout.splitlines(), list(mistakes), result.stderr)
        self.assertEqual(result.returncode, 1)

    def test_is_content_with_a_number_in_both_and_a_test(self):
        result = self.check()
        self.assertEqual((result.returncode, result.stdout), (0, ""), result.stderr)
        self.assertIn("1 oddities, 0 mistakes", result.stderr)

    def test_finds_a_number_that_only_the_code_has(self):
        self.write("src/protocol/Keys.h", "\n  int old = 1;  // Kept: C2.\n")
        self.expect("src/protocol/Keys.h:2: C2 is not in docs/compatibility.md")

    def test_finds_a_number_that_only_the_document_has(self):
        self.write("docs/compatibility.md", ROW.replace("C1 ", "C2 "), "a")
        self.expect("docs/compatibility.md:4: C2 is not in src")

    def test_finds_a_number_that_is_used_twice(self):
        self.write("docs/compatibility.md", ROW, "a")
        self.write("src/protocol/Keys.cpp", "// Kept: C1.\n", "a")
        self.expect("docs/compatibility.md:4: C1 is already in docs/compatibility.md:3",
                    "src/protocol/Keys.cpp:2: C1 is already in src/protocol/Keys.cpp:1")

    def test_finds_a_test_that_is_not_there(self):
        self.write("docs/compatibility.md", ROW.replace("AreSpeltAsEver", "AreSpeltAnew"))
        self.expect("docs/compatibility.md:1: Keys.AreSpeltAnew is no test")

    def test_wants_a_test_in_the_last_column(self):
        self.write("docs/compatibility.md", ROW.replace("`Keys.AreSpeltAsEver`", "-").replace("None.", "`Keys.AreFew`"))
        self.expect("docs/compatibility.md:1: C1 has no test")

    def test_wants_tags_of_one_form(self):
        for tag in ("Kept C1", "Kept: C1", "Kept: the old key", "Kept:C1."):
            self.write("src/protocol/Keys.h", f"// {tag}\n")
            self.expect("src/protocol/Keys.h:1: a tag has the form \"Kept: C12.\"")

    def test_wants_rows(self):
        self.write("docs/compatibility.md", "# Compatibility\n")
        self.write("src/protocol/Keys.cpp", "")
        self.assertEqual(self.check().returncode, 2)
        os.remove(os.path.join(self.root, "docs/compatibility.md"))
        self.assertEqual(self.check().returncode, 2)
        self.assertIn("is not there", self.check().stderr)


if __name__ == "__main__":
    unittest.main()
