"""Runs tools/check-links on small sets of documents with and without dead links."""

import os
import subprocess
import tempfile
import unittest

TOOL = os.path.abspath(os.path.join(os.path.dirname(__file__), "..", "..", "tools", "check-links"))


class CheckLinksTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.root = folder.name

    def write(self, name, text):
        path = os.path.join(self.root, name)
        os.makedirs(os.path.dirname(path), exist_ok=True)
        with open(path, "w", encoding="utf-8") as file:
            file.write(text)

    def check(self, **settings):
        return subprocess.run([TOOL, self.root], capture_output=True, text=True, check=False, **settings)

    def expect_dead(self, text, reason):
        self.write("README.md", text)
        result = self.check()
        self.assertEqual(result.returncode, 1, result.stdout + result.stderr)
        self.assertIn(reason, result.stdout)

    def test_is_content_with_links_that_lead_somewhere(self):
        self.write("docs/a.md", "# One thing\n\n## One thing\n\n[up](../README.md#top-of-it)\n")
        self.write("docs/p.png", "")
        self.write("README.md", "# Top of *it*\n\n[a](docs/a.md) [b](docs/a.md#one-thing-1) ![p](docs/p.png \"title\")\n"
                   "[c](#top-of-it) [folder](docs) [web](https://example.org/nowhere#x) [m](mailto:a@example.org)\n"
                   "[reference][r] <img src=\"docs/p.png\">\n\n[r]: docs/a.md\n")
        result = self.check()
        self.assertEqual((result.returncode, result.stdout), (0, ""), result.stderr)
        self.assertIn("10 links in 2 documents, 0 dead", result.stderr)

    def test_names_the_place_of_a_dead_link(self):
        self.expect_dead("# A\n\ntext\n[gone](docs/gone.md)\n", "README.md:4: docs/gone.md: is not there")

    def test_finds_dead_pictures_anchors_and_references(self):
        self.expect_dead("![p](p.png)\n", "p.png: is not there")
        self.expect_dead("<img src=\"p.png\">\n", "p.png: is not there")
        self.expect_dead("# A\n[b](#c)\n", "#c: no such heading")
        self.expect_dead("# A\n[b](README.md#a-1)\n", "README.md#a-1: no such heading")
        self.expect_dead("[b][nowhere]\n", "defined nowhere")
        self.expect_dead("[b]: gone.md\n", "gone.md: is not there")

    def test_finds_what_leads_out_of_the_tree(self):
        self.expect_dead("[b](../other.md)\n", "leads out")
        self.expect_dead("[b](/etc/passwd)\n", "not relative")

    def test_takes_no_code_for_links(self):
        self.write("README.md", "# A\n\n`[b](gone.md)` and ``[`c`](gone.md)``\n\n```sh\n[d](gone.md)\n# E\n```\n[e](#a)\n")
        result = self.check()
        self.assertEqual(result.returncode, 0, result.stdout)
        self.expect_dead("```sh\n# E\n```\n[e](#e)\n", "no such heading")

    def test_needs_no_git_where_there_is_no_repository(self):
        self.write("README.md", "# A\n\n[b](gone.md)\n")
        result = self.check(env={"PATH": os.path.join(self.root, "no-such-folder")})
        self.assertEqual((result.returncode, result.stdout), (1, "README.md:3: gone.md: is not there\n"), result.stderr)

    def test_wants_documents_to_check(self):
        self.assertEqual(self.check().returncode, 2)


if __name__ == "__main__":
    unittest.main()
