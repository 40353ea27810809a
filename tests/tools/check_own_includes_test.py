"""Runs tools/check-own-includes over small trees."""

import os
import subprocess
import tempfile
import unittest

TOOL = os.path.abspath(os.path.join(os.path.dirname(__file__), "..", "..", "tools", "check-own-includes"))


class CheckOwnIncludesTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.root = os.path.join(folder.name, "a tree")
        self.qt = os.path.join(folder.name, "qt6")
        for header in ("QtCore/QString", "QtGui/QColor", "QtCore/qstring.h"):
            self.put(os.path.join(self.qt, header), "")

    @staticmethod
    def put(path, text):
        os.makedirs(os.path.dirname(path), exist_ok=True)
        with open(path, "w", encoding="utf-8") as file:
            file.write(text)

    def check(self, *options, **files):
        for name, text in files.items():
            self.put(os.path.join(self.root, "src/room", name.replace("_", ".")), text)
        return subprocess.run([TOOL, "--root", self.root, "--qt", self.qt, *options], capture_output=True, text=True, check=False)

    def expect_wrong(self, lines, **files):
        result = self.check(**files)
        self.assertEqual(result.stdout.splitlines(), lines)
        self.assertEqual(result.returncode, 1 if lines else 0, result.stderr)

    def test_names_a_class_of_qt_without_its_header_once_with_its_first_line(self):
        self.expect_wrong(["src/room/A.h:3: QColor needs <QColor>"], A_h="#pragma once\n\nQColor a();\nQColor b();\n")

    def test_names_what_is_of_the_library(self):
        self.expect_wrong(
            ["src/room/A.cpp:1: std::move needs <utility>", "src/room/A.cpp:2: std::ranges::sort needs <algorithm>"],
            A_cpp="auto a = std::move(b);\nvoid c() { std::ranges::sort(d); }\n")

    def test_wants_the_header_of_a_text_for_its_macro(self):
        self.expect_wrong(["src/room/A.cpp:1: QStringLiteral needs <QString>"], A_cpp='auto a = QStringLiteral("x");\n')

    def test_is_content_with_the_header_and_with_that_of_the_file_s_own_header(self):
        self.expect_wrong([], A_h="#pragma once\n#include <QColor>\nQColor a();\n",
                          A_cpp='#include "room/A.h"\n\n#include <QString>\nQColor a() { return QString(); }\n')

    def test_is_not_content_with_another_file_s_header(self):
        self.expect_wrong(["src/room/B.cpp:2: QColor needs <QColor>"], A_h="#include <QColor>\n",
                          B_cpp='#include "room/A.h"\nQColor a();\n')

    def test_lets_a_declared_class_be(self):
        self.expect_wrong([], A_h="class QColor;\nQColor *a();\n", A_cpp="QColor *a() { return nullptr; }\n")

    def test_reads_no_comments_and_no_texts(self):
        self.expect_wrong(
            [], A_cpp='// QColor\n/* std::move\n QColor */ auto a = "QColor \\" QColor"; int b = 10\'000; // QColor\'s\n')

    def test_a_separator_of_digits_begins_no_text(self):
        self.expect_wrong(["src/room/A.cpp:1: QColor needs <QColor>"], A_cpp="int a = 1'000; QColor b; int c = 1'000;\n")

    def test_knows_no_name_that_qt_has_not(self):
        self.expect_wrong([], A_h="Quarrel a(); QOther b();\n")

    def test_adds_what_is_missing(self):
        result = self.check("--fix", A_h="#pragma once\nQColor a();\n", A_cpp='#include "room/A.h"\nQColor a() { QString b; }\n')
        self.assertEqual(result.returncode, 0, result.stderr)
        self.assertEqual(self.check().stdout, "")
        with open(os.path.join(self.root, "src/room/A.cpp"), encoding="utf-8") as file:
            self.assertEqual(file.read(), '#include "room/A.h"\n#include <QString>\nQColor a() { QString b; }\n')

    def test_an_empty_tree_or_a_missing_qt_is_no_success(self):
        self.assertEqual(self.check().returncode, 2)
        self.put(os.path.join(self.root, "src/room/A.h"), "")
        self.qt += "-nowhere"
        self.assertEqual(self.check().returncode, 2)


if __name__ == "__main__":
    unittest.main()
