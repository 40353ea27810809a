"""Runs tools/coverage-table on small summaries."""

import json
import os
import subprocess
import tempfile
import unittest

ROOT = os.path.abspath(os.path.join(os.path.dirname(__file__), "..", ".."))
TOOL = os.path.join(ROOT, "tools", "coverage-table")


def entry(name, lines, branches):
    return {"filename": name, "line_covered": lines[0], "line_total": lines[1],
            "branch_covered": branches[0], "branch_total": branches[1]}


class CoverageTableTest(unittest.TestCase):
    def table(self, *files):
        with tempfile.NamedTemporaryFile("w", suffix=".json") as summary:
            json.dump({"files": files}, summary)
            summary.flush()
            return subprocess.run([TOOL, summary.name], capture_output=True, text=True, check=False)

    def test_adds_up_the_files_of_each_room_and_names_those_that_are_little_run(self):
        result = self.table(entry("src/a/One.cpp", (9, 10), (1, 2)), entry("src/a/Two.cpp", (1, 10), (0, 2)),
                            entry("src/a/b/Three.cpp", (20, 20), (4, 4)))
        self.assertEqual(result.returncode, 0, result.stderr)
        self.assertEqual(result.stdout.splitlines()[2:],
                         ["| a | 20 | 50.0 | 4 | 25.0 |", "| a/b | 20 | 100.0 | 4 | 100.0 |",
                          "| all | 40 | 75.0 | 8 | 62.5 |", "", "src/a/Two.cpp: 1 of 10 lines"])

    def test_a_header_counts_for_its_room_by_whatever_way_it_was_reached(self):
        result = self.table(entry("src/a/One.cpp", (5, 5), (0, 0)),
                            entry("build/coverage/rooms/tavril_a/a/One.h", (1, 5), (0, 0)))
        self.assertEqual(result.stdout.splitlines()[2:], ["| a | 10 | 60.0 | 0 | 100.0 |", "| all | 10 | 60.0 | 0 | 100.0 |",
                                                          "", "src/a/One.h: 1 of 5 lines"])

    def test_a_file_without_branches_counts_as_covered(self):
        self.assertIn("| a | 3 | 100.0 | 0 | 100.0 |", self.table(entry("src/a/One.cpp", (3, 3), (0, 0))).stdout)

    def test_a_summary_of_nothing_is_an_error(self):
        result = self.table()
        self.assertEqual(result.returncode, 1)
        self.assertIn("no file was counted", result.stderr)

    def test_the_table_in_the_document_has_a_row_for_each_folder_with_sources(self):
        sources = os.path.join(ROOT, "src")
        folders = sorted(os.path.relpath(folder, sources) for folder, _, names in os.walk(sources)
                         if any(name.endswith(".cpp") for name in names))
        with open(os.path.join(ROOT, "docs", "reliability.md"), encoding="utf-8") as document:
            table = document.read().partition("| Room | Lines | run (%) |")[2].partition("\n\n")[0]
        rows = [line.split("|")[1].strip() for line in table.splitlines()[2:]]
        self.assertEqual(rows, folders + ["all"])


if __name__ == "__main__":
    unittest.main()
