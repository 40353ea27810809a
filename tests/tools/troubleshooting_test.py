"""The tables of docs/troubleshooting.md and docs/threat-model.md are about messages and tests that there are.

Every test that a row names stands in the sources of the tests, every text that a row quotes in the string table or in
the sources of the program, and every failure that the command line programs can end with has a row.
"""

import glob
import os
import re
import unittest

ROOT = os.path.abspath(os.path.join(os.path.dirname(__file__), "..", ".."))
LITERAL = re.compile(r'"((?:[^"\\]|\\.)*)"')
# What a text has in the places of names and numbers.
PLACE = re.compile(r"%\d\$@|%@|%[0-9s]|…")
SHORTEST = 8


def read(path):
    with open(os.path.join(ROOT, path), encoding="utf-8") as file:
        return file.read()


def sources(*patterns):
    paths = [path for pattern in patterns for path in sorted(glob.glob(os.path.join(ROOT, pattern), recursive=True))]
    return {path: read(path) for path in paths}


def joined(source):
    """The source with literals that stand one behind the other made into one, as the compiler does it."""
    return re.sub(r'"\s*\n\s*"', "", source)


def plain(text):
    return text.replace('\\"', '"').replace("\\n", " ").replace("\\\\", "\\")


def rows_of(document):
    """The cells of every row of every table, without the heads."""
    rows = []
    for line in read(document).splitlines():
        if line.startswith("|") and not re.match(r"\|[-|]+\|$", line):
            rows.append([cell.strip() for cell in line.strip("|").split(" | ")])
    return [row for row in rows if row[-1] not in ("Test", "Tests")]


def pieces(text):
    return [piece.strip() for piece in PLACE.split(text) if len(piece.strip()) >= SHORTEST]


def test_names():
    names = set()
    for text in sources("tests/**/*.cpp", "tests/**/*.h").values():
        names |= {".".join(found) for found in re.findall(r"TEST(?:_F|_P)?\(\s*(\w+),\s*(\w+)\)", text)}
    for text in sources("tests/**/*_test.py").values():
        names |= {".".join(found) for found in re.findall(r"(?s)class (\w+)\(unittest.*?def (test_\w+)", text)}
        for owner, body in re.findall(r"(?s)class (\w+)\(unittest[^\n]*\n(.*?)(?=\nclass |\Z)", text):
            names |= {owner + "." + method for method in re.findall(r"def (test_\w+)", body)}
    return names


class Troubleshooting(unittest.TestCase):
    document = "docs/troubleshooting.md"

    def test_every_row_has_the_four_columns(self):
        rows = rows_of(self.document)
        self.assertGreater(len(rows), 90)
        for row in rows:
            self.assertEqual(len(row), 4, row)
            for cell in row[:3]:
                self.assertTrue(cell, row)

    def test_every_test_that_is_named_is_there(self):
        known = test_names()
        unknown = []
        count = 0
        for document in (self.document, "docs/threat-model.md"):
            for row in rows_of(document):
                for name in re.findall(r"`(\w+\.\w+)`", row[-1]):
                    count += 1
                    if name not in known:
                        unknown.append(f"{document}: {name}")
        self.assertEqual(unknown, [])
        self.assertGreater(count, 110)

    def test_every_text_that_is_quoted_can_be_met(self):
        corpus = plain("\n".join(joined(text) for text in sources("src/**/*.cpp", "src/**/*.h").values()))
        corpus += plain(read("resources/strings/en.strings"))
        missing = []
        count = 0
        for row in rows_of(self.document):
            for quoted in re.findall(r'(?:^|or )"(.+?)"(?=$| or "| beside| as an)', row[0]):
                found = pieces(quoted)
                missing += [piece for piece in found if piece not in corpus]
                count += len(found)
        self.assertEqual(missing, [])
        self.assertGreater(count, 90)

    def test_every_failure_of_the_command_line_programs_has_a_row(self):
        table = "\n".join(row[0] for row in rows_of(self.document))
        failure = re.compile(r"(?s)(?:Failure|NoAnswer|UsageError)\{(.*?)\};|\b(?:complain|finish|usage)\((.*?)\);")
        missing = []
        count = 0
        for text in sources("src/cli/*.cpp", "src/app/*.cpp").values():
            for found in failure.findall(joined(text)):
                for literal in LITERAL.findall(found[0] or found[1]):
                    if literal in ("tavril: ", "tavrilctl: "):
                        continue
                    for piece in pieces(plain(literal)):
                        count += 1
                        if piece not in table:
                            missing.append(piece)
        self.assertEqual(missing, [])
        self.assertGreater(count, 50)

    def test_every_problem_that_the_doctor_finds_has_a_row(self):
        table = "\n".join(row[0] for row in rows_of(self.document))
        texts = dict(re.findall(r'^"(.*?)"="(.*)";$', read("resources/strings/en.strings"), re.MULTILINE))
        cases = re.findall(r'\{"(\w+)",\s*CheckId::\w+,\s*State::(Failed|Warning),', read("tests/doctor/ExaminationTest.cpp"))
        self.assertGreater(len(cases), 25)
        for finding, _ in cases:
            for piece in pieces(texts["doctor_" + finding]):
                self.assertIn(piece, table, finding)


class ThreatModel(unittest.TestCase):
    """What can be seen of the claims in the sources alone."""

    program = sources("src/**/*.cpp", "src/**/*.h")

    def test_the_sources_are_found(self):
        self.assertGreater(len(self.program), 300)

    def test_nothing_is_executed(self):
        call = re.compile(r"(?<!QRandomGenerator::)\b(QProcess|popen|system|exec[lv]p?e?|posix_spawnp?|fork|dlopen|QLibrary|QPluginLoader)\s*\(|"
                          r"\bQProcess\b")
        for path, text in self.program.items():
            self.assertIsNone(call.search(text), os.path.relpath(path, ROOT))

    def test_no_temporary_file_has_a_name_that_can_be_known(self):
        for path, text in self.program.items():
            self.assertIsNone(re.search(r'\b(tmpnam|tempnam|mktemp)\s*\(|"/tmp|"/var/tmp|::tempPath', text),
                              os.path.relpath(path, ROOT))

    def test_no_mode_lets_everybody_write_but_the_one_that_the_users_mask_narrows(self):
        for path, text in self.program.items():
            modes = re.findall(r"\b0[0-7]*[2367]\b(?=[;,)])", "\n".join(
                line for line in text.splitlines() if re.search(r"mode_t|chmod|mkdir|umask|O_CREAT", line)))
            if path.endswith("PosixUserFiles.cpp"):
                self.assertEqual(modes, ["0666", "0777"])
            else:
                self.assertEqual(modes, [], os.path.relpath(path, ROOT))

    def test_no_socket_is_opened(self):
        for path, text in self.program.items():
            self.assertIsNone(re.search(r"QLocalServer|QTcpServer|QUdpSocket|\bsocket\s*\(|\bbind\s*\(", text),
                              os.path.relpath(path, ROOT))

    def test_every_label_of_a_screen_design_is_plain_text(self):
        designs = sources("src/**/*.ui")
        self.assertGreater(len(designs), 5)
        for path, text in designs.items():
            for label in re.findall(r'(?s)<widget class="(?:QLabel|tavril::ConnectionLine)".*?</widget>', text):
                self.assertIn("Qt::PlainText", label, os.path.relpath(path, ROOT))


if __name__ == "__main__":
    unittest.main()
