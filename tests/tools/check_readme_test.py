"""Runs tools/check-readme on small documents, in the folder where they are."""

import os
import subprocess
import tempfile
import unittest

TOOL = os.path.abspath(os.path.join(os.path.dirname(__file__), "..", "..", "tools", "check-readme"))


class CheckReadmeTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.root = folder.name

    def check(self, text, *arguments):
        readme = os.path.join(self.root, "README.md")
        with open(readme, "w", encoding="utf-8") as file:
            file.write(text)
        return subprocess.run([TOOL, "--here", "--seconds", "1", *arguments, readme], cwd=self.root, capture_output=True, text=True,
                              check=False)

    def test_runs_each_line_of_each_block_of_shell(self):
        result = self.check("text\n\n```sh\necho one > a\n# a comment\n\necho two \\\n  >> a\n```\n\n```\nfalse\n```\n")
        self.assertEqual(result.returncode, 0, result.stdout + result.stderr)
        with open(os.path.join(self.root, "a"), encoding="utf-8") as file:
            self.assertEqual(file.read(), "one\ntwo\n")
        self.assertIn("2 commands run, 0 failed", result.stdout)

    def test_fails_when_a_command_fails_and_says_which(self):
        result = self.check("```sh\ntrue\nexit 3\ntouch later\n```\n")
        self.assertEqual(result.returncode, 1)
        self.assertIn("---- 3: exit 3\n     FAILED: ended with status 3\n", result.stdout)
        self.assertTrue(os.path.exists(os.path.join(self.root, "later")))

    def test_fails_on_a_command_that_is_not_there(self):
        self.assertEqual(self.check("```sh\nno-such-program --help\n```\n").returncode, 1)

    def test_does_not_run_what_is_marked_so_and_shows_it(self):
        result = self.check("<!-- check-readme: not-run it would be rude -->\n```sh\ntouch a\n```\n\n```sh\ntrue\n```\n")
        self.assertEqual(result.returncode, 0, result.stdout + result.stderr)
        self.assertFalse(os.path.exists(os.path.join(self.root, "a")))
        self.assertIn("not run: it would be rude", result.stdout)

    def test_does_not_run_what_was_done_already(self):
        result = self.check("```sh\nfalse\ntrue\n```\n", "--done", "false")
        self.assertEqual(result.returncode, 0, result.stdout)

    def test_fails_when_nothing_at_all_was_run(self):
        self.assertEqual(self.check("```sh\nfalse\n```\n", "--done", "false").returncode, 1)

    def test_fails_when_a_window_or_what_should_keep_running_ends_by_itself(self):
        for mark in ("window", "background"):
            result = self.check(f"<!-- check-readme: {mark} -->\n```sh\ntrue\n```\n")
            self.assertEqual(result.returncode, 1, mark)
            self.assertIn("ended by itself, with status 0", result.stdout)

    def test_ends_what_keeps_running_with_all_it_has_started(self):
        for mark in ("window", "background"):
            result = self.check(f"<!-- check-readme: {mark} -->\n```sh\ncat /dev/zero > /dev/null & echo $! > pid; wait\n```\n")
            self.assertEqual(result.returncode, 0, result.stdout)
            with open(os.path.join(self.root, "pid"), encoding="utf-8") as file:
                pid = int(file.read())
            with self.assertRaises(ProcessLookupError):
                os.kill(pid, 0)

    def test_what_needs_a_servo_must_fail_with_a_word_where_there_is_none(self):
        mark = "<!-- check-readme: no-servo -->\n"
        self.assertEqual(self.check(mark + "```sh\necho 'tavril: no port.' >&2; exit 1\n```\n").returncode, 0)
        self.assertEqual(self.check(mark + "```sh\nexit 1\n```\n").returncode, 1)
        self.assertEqual(self.check(mark + "```sh\ntrue\n```\n").returncode, 1)

    def test_takes_each_command_of_a_block_as_its_own_mark_says(self):
        mark = "<!-- check-readme: plain | no-servo | background -->\n"
        block = "```sh\ntrue\necho 'tavril: no' >&2; exit 1\ncat > /dev/null < /dev/zero\n```\n"
        result = self.check(mark + block)
        self.assertEqual(result.returncode, 0, result.stdout)
        self.assertEqual(self.check(mark + block.replace("true", "false")).returncode, 1)

    def test_refuses_marks_that_it_does_not_understand(self):
        for text in ("<!-- check-readme: windows -->\n```sh\ntrue\n```\n",
                     "<!-- check-readme: window -->\ntext\n```sh\ntrue\n```\n",
                     "<!-- check-readme: window -->\n```\ntrue\n```\n",
                     "<!--check-readme: window-->\n```sh\ntrue\n```\n",
                     "<!-- check-readme: plain | window -->\n```sh\ntrue\n```\n",
                     "```sh\ntrue\n", "no commands\n"):
            with self.subTest(text):
                self.assertEqual(self.check(text).returncode, 2)


if __name__ == "__main__":
    unittest.main()
