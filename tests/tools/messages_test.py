"""The tables of docs/messages.md, docs/troubleshooting.md and docs/threat-model.md are about existing messages and tests.

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
    """The cells of every row of every table, without the heads and the lists of two columns."""
    rows = []
    for line in read(document).splitlines():
        if line.startswith("|") and not re.match(r"\|[-|]+\|$", line):
            rows.append([cell.strip() for cell in line.strip("|").split(" | ")])
    return [row for row in rows if len(row) > 2 and row[-1] not in ("Test", "Tests", "What to do")]


def pieces(text):
    return [piece.strip() for piece in PLACE.split(text) if len(piece.strip()) >= SHORTEST]


def test_names():
    names = set()
    for text in sources("tests/**/*.cpp", "tests/**/*.h").values():
        names |= {".".join(found) for found in re.findall(r"TEST(?:_F|_P)?\(\s*(\w+),\s*(\w+)\)", text)}
    for text in sources("tests/**/*_test.py").values():
        for owner, body in re.findall(r"(?s)class (\w+)\(unittest[^\n]*\n(.*?)(?=\nclass |\Z)", text):
            names |= {owner + "." + method for method in re.findall(r"def (test_\w+)", body)}
    return names


def quoted_texts(document):
    """The pieces of all texts that the first cells of a document's tables quote."""
    found = []
    for row in rows_of(document):
        for quoted in re.findall(r'(?:^|or )"(.+?)"(?=$| or "| beside| as an)', row[0]):
            found += pieces(quoted)
    return found


def texts_of_the_programs():
    corpus = plain("\n".join(joined(text) for text in sources("src/**/*.cpp", "src/**/*.h").values()))
    return corpus + plain(read("resources/strings/en.strings"))


def texts_of_the_doctors_problems():
    texts = dict(re.findall(r'^"(.*?)"="(.*)";$', read("resources/strings/en.strings"), re.MULTILINE))
    cases = re.findall(r'\{"(\w+)",\s*CheckId::\w+,\s*State::(Failed|Warning),', read("tests/doctor/ExaminationTest.cpp"))
    return {finding: texts["doctor_" + finding] for finding, _ in cases}


class QuotedTexts:
    """What holds for each document whose tables quote texts."""

    def test_every_text_that_is_quoted_can_be_met(self):
        corpus = texts_of_the_programs()
        quoted = quoted_texts(self.document)
        self.assertEqual([piece for piece in quoted if piece not in corpus], [])
        self.assertGreater(len(quoted), self.fewest_quotes)


class Messages(unittest.TestCase, QuotedTexts):
    document = "docs/messages.md"
    fewest_quotes = 90

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
        problems = texts_of_the_doctors_problems()
        self.assertGreater(len(problems), 25)
        for finding, text in problems.items():
            for piece in pieces(text):
                self.assertIn(piece, table, finding)

    def test_no_advice_sends_the_reader_back_to_the_message(self):
        for row in rows_of(self.document):
            self.assertNotRegex(row[2], r"^As (it says|above)", row)


class Troubleshooting(unittest.TestCase, QuotedTexts):
    document = "docs/troubleshooting.md"
    fewest_quotes = 40

    def test_every_row_says_what_is_seen_why_and_what_to_do(self):
        rows = rows_of(self.document)
        self.assertGreater(len(rows), 40)
        for row in rows:
            self.assertEqual(len(row), 3, row)
            for cell in row:
                self.assertTrue(cell, row)

    def test_every_problem_that_the_doctor_finds_is_explained(self):
        text = read(self.document)
        for finding, problem in texts_of_the_doctors_problems().items():
            for piece in pieces(problem):
                self.assertIn(piece, text, finding)

    def test_names_no_tests(self):
        self.assertNotRegex(read(self.document), r"`\w+(Test|Program)?\.[A-Z]\w+`")


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

    def test_the_only_socket_is_the_one_that_sends_to_the_log(self):
        sends = []
        for path, text in self.program.items():
            self.assertIsNone(re.search(r"QLocalServer|QLocalSocket|QTcp|QUdpSocket|\bbind\s*\(|(?<!\w)::(listen|accept4?|recv(from|msg)?)\s*\(", text),
                              os.path.relpath(path, ROOT))
            if re.search(r"\bsocket\s*\(", text):
                sends.append(os.path.relpath(path, ROOT))
        self.assertEqual(sends, ["src/platform/linux/SystemLog.cpp"])
        self.assertIn("::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0)", read(sends[0]))

    def test_every_label_of_a_screen_design_is_plain_text(self):
        designs = sources("src/**/*.ui")
        self.assertGreater(len(designs), 5)
        for path, text in designs.items():
            for label in re.findall(r'(?s)<widget class="(?:QLabel|tavril::ConnectionLine)".*?</widget>', text):
                self.assertIn("Qt::PlainText", label, os.path.relpath(path, ROOT))


if __name__ == "__main__":
    unittest.main()
