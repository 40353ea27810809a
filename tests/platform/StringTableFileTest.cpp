#include "platform/StringTableFile.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tavril {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

std::vector<int> problemLines(const StringTableFile &file) {
  std::vector<int> lines;
  for (const StringTableFile::Problem &problem : file.problems()) {
    EXPECT_FALSE(problem.what.isEmpty());
    lines.push_back(problem.line);
  }
  return lines;
}

QString valueOf(const QByteArray &text, const QString &key = QStringLiteral("k")) {
  const StringTableFile file = StringTableFile::parse(text);
  EXPECT_THAT(problemLines(file), IsEmpty()) << text.constData();
  EXPECT_TRUE(file.entries().contains(key)) << text.constData();
  return file.entries().value(key);
}

TEST(StringTableFile, ReadsOneEntryPerLine) {
  const StringTableFile file = StringTableFile::parse("\"a\"=\"1\";\n\"b c %@\"=\"\";\n");
  EXPECT_THAT(problemLines(file), IsEmpty());
  EXPECT_EQ(file.entries().size(), 2);
  EXPECT_EQ(file.entries().value(QStringLiteral("a")), QStringLiteral("1"));
  EXPECT_EQ(file.entries().value(QStringLiteral("b c %@"), QStringLiteral("missing")), QString());
}

TEST(StringTableFile, AllowsWhiteSpaceBetweenTheParts) {
  EXPECT_EQ(valueOf(" \t\"k\" = \" v \" ; "), QStringLiteral(" v "));
}

TEST(StringTableFile, ReadsTheLastLineWithoutANewline) {
  EXPECT_EQ(valueOf("\n\n\"k\"=\"v\";"), QStringLiteral("v"));
}

TEST(StringTableFile, ReadsTheEscapes) {
  EXPECT_EQ(valueOf(R"("k"="a\"b\\c\nd\te\rf";)"), QStringLiteral("a\"b\\c\nd\te\rf"));
  EXPECT_EQ(valueOf(R"("k"="\U4f3a\U00B0x\UD83D\UDE00";)"), QStringLiteral("\u4f3a\u00b0x\U0001f600"));
}

TEST(StringTableFile, IgnoresABomAndCarriageReturns) {
  EXPECT_EQ(valueOf("\xef\xbb\xbf\"k\"=\"v\";\r\n"), QStringLiteral("v"));
}

TEST(StringTableFile, ReadsATableMergedFromFilesWithCarriageReturnsAndFinalNewlines) {
  const StringTableFile file = StringTableFile::parse("\"k\r\"=\"v\r\";\n\"\"=\"\";\n");
  EXPECT_THAT(problemLines(file), IsEmpty());
  EXPECT_THAT(file.entries().keys(), ElementsAre(QStringLiteral("k")));
  EXPECT_EQ(file.entries().value(QStringLiteral("k")), QStringLiteral("v"));
}

TEST(StringTableFile, SkipsComments) {
  EXPECT_EQ(valueOf("// \"k\"=\"no\";\n/* \"k\"=\"no\";\n \"k\"=\"no\"; */ \"k\" /**/ = \"v\"; // end\n"),
            QStringLiteral("v"));
  EXPECT_EQ(valueOf("\"k\"=\"http://x /* y */\";"), QStringLiteral("http://x /* y */"));
}

TEST(StringTableFile, ReportsACommentWithoutEndWhereItBegins) {
  EXPECT_THAT(problemLines(StringTableFile::parse("\"a\"=\"1\";\n/* one */ /* two\n\"b\"=\"2\";\n")),
              ElementsAre(2));
}

TEST(StringTableFile, SkipsAMalformedLineAndKeepsTheOthers) {
  for (const char *line : {"nonsense", "\"b\"", "\"b\"=", "\"b\"=\"2\"", "\"b\" \"2\";", "\"b\"=\"2;",
                           "b=\"2\";", "\"b\"=2;", "=", ";", "\"b\"=\"\\x\";", "\"b\"=\"\\",
                           "\"b\"=\"\\U12\";", "\"b\"=\"\\U12g4\";", "\"b\"=\"\\UD83D\";",
                           "\"b\"=\"\\U0000\";", "\"b\"=\"\x01\";", "\"b\"=\"say \"hi\"\";", "\"\"=\"2\";"}) {
    const StringTableFile file =
        StringTableFile::parse(QByteArray("\"a\"=\"1\";\n") + line + "\n\"c\"=\"3\";\n");
    EXPECT_THAT(problemLines(file), ElementsAre(2)) << line;
    EXPECT_EQ(file.entries().size(), 2) << line;
    EXPECT_EQ(file.entries().value(QStringLiteral("c")), QStringLiteral("3")) << line;
  }
}

TEST(StringTableFile, ANulByteIsReportedAndEndsNothing) {
  using namespace std::string_literals;
  const std::string text = "\"a\"=\"x\0y\";\n\"b\"=\"2\";\n"s;
  const StringTableFile file = StringTableFile::parse(QByteArray::fromStdString(text));
  EXPECT_THAT(problemLines(file), ElementsAre(1));
  EXPECT_EQ(file.entries().value(QStringLiteral("b")), QStringLiteral("2"));
}

TEST(StringTableFile, TheLaterOfTwoEqualKeysWinsAndIsReported) {
  const StringTableFile file = StringTableFile::parse("\"k\"=\"1\";\n\n\"k\"=\"2\";\n");
  EXPECT_THAT(problemLines(file), ElementsAre(3));
  EXPECT_EQ(file.entries().value(QStringLiteral("k")), QStringLiteral("2"));
}

TEST(StringTableFile, ReportsALineThatIsNotUtf8) {
  const StringTableFile file =
      StringTableFile::parse("\"a\"=\"\xff\";\n\"b\"=\"\xc3\";\n\"c\"=\"\xc3\xa9\";\n");
  EXPECT_THAT(problemLines(file), ElementsAre(1, 2));
  EXPECT_THAT(file.entries().keys(), ElementsAre(QStringLiteral("c")));
}

TEST(StringTableFile, ACommentMayEndOnALineThatIsNotUtf8) {
  const StringTableFile file = StringTableFile::parse("/*\n\xff */\n\"k\"=\"v\";\n");
  EXPECT_THAT(problemLines(file), ElementsAre(2));
  EXPECT_EQ(file.entries().value(QStringLiteral("k")), QStringLiteral("v"));
}

TEST(StringTableFile, RefusesUtf16AsAWhole) {
  EXPECT_THAT(problemLines(StringTableFile::parse(QByteArray("\xff\xfe\"\0k\0", 6))), ElementsAre(1));
  EXPECT_THAT(problemLines(StringTableFile::parse(QByteArray("\xfe\xff\0\"\0k", 6))), ElementsAre(1));
}

TEST(StringTableFile, RefusesATableThatIsTooLarge) {
  QByteArray text("\"k\"=\"v\";\n");
  text.append(StringTableFile::largestSize - text.size(), ' ');
  EXPECT_EQ(valueOf(text), QStringLiteral("v"));
  text.append(' ');
  const StringTableFile file = StringTableFile::parse(text);
  EXPECT_THAT(problemLines(file), ElementsAre(1));
  EXPECT_TRUE(file.entries().isEmpty());
}

TEST(StringTableFile, ReportsNoMoreProblemsThanAnybodyReads) {
  const StringTableFile file = StringTableFile::parse(QByteArray("x\n").repeated(1000) + "\"k\"=\"v\";");
  EXPECT_EQ(file.problems().size(), StringTableFile::mostProblems);
  EXPECT_EQ(file.entries().value(QStringLiteral("k")), QStringLiteral("v"));
}

}  // namespace
}  // namespace tavril
