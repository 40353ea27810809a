#include "records/HistoryLines.h"
#include "tests/records/HistoryBench.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <fstream>
#include <string>
#include <variant>

namespace tavril::records {
namespace {

struct Pair {
  HistoryLine line;
  std::string text;
};

/// One of each kind. The texts, and their checksums with another program's CRC-32, are written by hand.
std::vector<Pair> examples() {
  return {
      {EntryLine{3, someTime, Reason::BeforePlan, "usbserial-A1", "tavril 0.9.1", someSettings},
       R"({"format":1,"kind":"entry","number":3,"time":"2026-03-04T05:06:07Z","why":"before-plan","port":"usbserial-A1","program":"tavril 0.9.1","settings":[1,2,0,1,70,90,140,400,440,0,120,100,100,100,-3],"crc":"b38f9c26"})"},
      {NameLine{4, someTime + std::chrono::seconds(1), "linke Hüfte", {1, 3}},
       R"({"format":1,"kind":"name","number":4,"time":"2026-03-04T05:06:08Z","name":"linke Hüfte","entries":[1,3],"crc":"db77a11e"})"},
      {PlanBeginLine{5, std::chrono::sys_days(std::chrono::year(2024) / 3 / 1) - std::chrono::seconds(1),
                     "usbserial-A1", "tavril 0.9.1", someSettings, settingsWith(9, 450)},
       R"({"format":1,"kind":"plan-begin","number":5,"time":"2024-02-29T23:59:59Z","port":"usbserial-A1","program":"tavril 0.9.1","before":[1,2,0,1,70,90,140,400,440,0,120,100,100,100,-3],"after":[1,2,0,1,70,90,140,400,450,0,120,100,100,100,-3],"crc":"9415d0ba"})"},
      {PlanEndLine{6, {}, 5, PlanOutcome::RolledBack, "interrupted by \"Move\""},
       R"({"format":1,"kind":"plan-end","number":6,"time":"1970-01-01T00:00:00Z","plan":5,"outcome":"rolled-back","detail":"interrupted by \"Move\"","crc":"5f83df72"})"},
  };
}

LineProblem problemOf(const std::string &text) {
  const DecodedLine decoded = lineFrom(text);
  EXPECT_EQ(decoded.line.has_value(), decoded.problem == LineProblem::None) << text;
  return decoded.problem;
}

/// The first example as the start of a line, with another text in the place of one.
std::string entryText(const std::string &was, const std::string &is) {
  std::string content = examples().front().text;
  content.erase(content.rfind(",\"crc\""));
  const std::size_t at = content.find(was);
  EXPECT_NE(at, std::string::npos) << was;
  return sealed(content.replace(at, was.size(), is));
}

TEST(Crc32, IsThatOfZip) {
  EXPECT_EQ(crc32(""), 0U);
  EXPECT_EQ(crc32("123456789"), 0xCBF43926U);
}

TEST(HistoryLines, AreWrittenAsDocumented) {
  for (const auto &[line, text] : examples()) EXPECT_EQ(textOf(line), text);
}

TEST(HistoryLines, AreReadAsTheyWereWritten) {
  for (const auto &[line, text] : examples()) {
    const DecodedLine decoded = lineFrom(text);
    EXPECT_EQ(decoded.problem, LineProblem::None) << text;
    EXPECT_EQ(decoded.line, line) << text;
  }
}

TEST(HistoryLines, OfTheDocumentAreRead) {
  std::ifstream document(HISTORY_DOCUMENT);
  std::size_t found = 0;
  for (std::string line; std::getline(document, line);) {
    if (!line.starts_with("{\"format\"")) continue;
    EXPECT_EQ(problemOf(line), LineProblem::None) << line;
    ++found;
  }
  EXPECT_EQ(found, std::variant_size_v<HistoryLine>) << "one of each kind";
}

TEST(HistoryLines, OfAnyContentAreReadAsTheyWereWritten) {
  for (std::uint32_t seed = 0; seed < 2000; ++seed) {
    const HistoryLine line = RandomLines(seed).line(seed + 1);
    const std::string text = textOf(line);
    ASSERT_EQ(text.find('\n'), std::string::npos) << seed;
    ASSERT_EQ(lineFrom(text).line, line) << seed << ' ' << text;
  }
}

TEST(HistoryLines, HaveReplacementCharactersForBytesThatAreNotUtf8) {
  EntryLine line = entryWith(someSettings);
  line.number = 1;
  line.port = "tty\xff!";
  const DecodedLine decoded = lineFrom(textOf(line));
  ASSERT_TRUE(decoded.line);
  EXPECT_EQ(std::get<EntryLine>(*decoded.line).port, "tty\xef\xbf\xbd!");
}

TEST(HistoryLines, InWhichAByteIsWrongAreNeverAccepted) {
  for (const Pair &example : examples()) {
    for (std::size_t at = 0; at < example.text.size(); ++at) {
      for (int other = 1; other < 256; ++other) {
        std::string text = example.text;
        text[at] = static_cast<char>(static_cast<unsigned char>(text[at]) ^ other);
        ASSERT_NE(problemOf(text), LineProblem::None) << at << ' ' << other << ' ' << text;
      }
    }
  }
}

TEST(HistoryLines, ThatAreCutOrJoinedAreNeverAccepted) {
  for (const Pair &example : examples()) {
    for (std::size_t length = 0; length < example.text.size(); ++length) {
      ASSERT_EQ(problemOf(example.text.substr(0, length)), LineProblem::Damaged) << length;
    }
    for (const std::string between : {"", " ", "\r", "\t", ","}) {
      EXPECT_EQ(problemOf(example.text + between + example.text), LineProblem::Damaged) << between;
    }
    EXPECT_EQ(problemOf(example.text + "\r"), LineProblem::Damaged);
  }
}

TEST(HistoryLines, OfALaterFormatAreKnownByTheirBeginning) {
  EXPECT_EQ(problemOf(R"({"format":2,"anything":"else"})"), LineProblem::LaterFormat);
  EXPECT_EQ(problemOf(R"({"format":12,not even JSON)"), LineProblem::LaterFormat);
  EXPECT_EQ(problemOf(entryText("\"format\":1", "\"format\":2")), LineProblem::LaterFormat);
  for (const char *none :
       {R"({"format":0,"a":1})", R"({"format":-1,"a":1})", R"({"format":99999999999,"a":1})",
        R"({"format":2)", R"({"format":)", "", "{}", "\0"}) {
    EXPECT_EQ(problemOf(none), LineProblem::Damaged) << none;
  }
}

TEST(HistoryLines, OfAnUnknownKindAreSkipped) {
  EXPECT_EQ(problemOf(entryText("\"entry\"", "\"photo\"")), LineProblem::UnknownKind);
  EXPECT_EQ(problemOf(entryText("\"entry\"", "7")), LineProblem::Malformed);
}

TEST(HistoryLines, WithMembersThatNobodyKnowsYetAreRead) {
  const DecodedLine decoded = lineFrom(entryText("\"port\"", "\"mood\":[{}],\"port\""));
  ASSERT_TRUE(decoded.line);
  EXPECT_EQ(*decoded.line, examples().front().line);
}

TEST(HistoryLines, WithWordsOfALaterVersionAreRead) {
  const DecodedLine decoded = lineFrom(entryText("\"before-plan\"", "\"before-lunch\""));
  ASSERT_TRUE(decoded.line);
  EXPECT_EQ(std::get<EntryLine>(*decoded.line).why, Reason::Other);
}

TEST(HistoryLines, HoldValuesThatAreOutOfRangeToday) {
  const DecodedLine decoded = lineFrom(entryText("440", "65535"));
  ASSERT_TRUE(decoded.line);
  EXPECT_EQ(std::get<EntryLine>(*decoded.line).settings.at(8), 65535);
}

TEST(HistoryLines, WhoseContentIsNotWhatTheFormatSaysAreMalformed) {
  EXPECT_EQ(problemOf(sealed("{\"format\":1,")), LineProblem::Malformed) << "no JSON";
  EXPECT_EQ(problemOf(sealed("{\"format\":1,\"a\":1")), LineProblem::Malformed) << "no kind";
  struct {
    const char *was;
    const char *is;
  } const changes[] = {
      {"\"number\":3", "\"number\":0"},
      {"\"number\":3", "\"number\":-3"},
      {"\"number\":3", "\"number\":3.0"},
      {"\"number\":3", "\"number\":\"3\""},
      {"\"number\":3", "\"number\":9007199254740992"},
      {"\"number\":3", "\"number\":18446744073709551615"},
      {"\"number\":3,", ""},
      {"2026-03-04T05:06:07Z", "2026-03-04T05:06:07"},
      {"2026-03-04T05:06:07Z", "2026-02-29T05:06:07Z"},
      {"2026-03-04T05:06:07Z", "2026-03-04 05:06:07Z"},
      {"2026-03-04T05:06:07Z", "2026-03-04T24:00:00Z"},
      {"2026-03-04T05:06:07Z", "2026-03-04T05:06:60Z"},
      {"\"before-plan\"", "null"},
      {"\"usbserial-A1\"", "[]"},
      {"\"program\":", "\"programme\":"},
      {"[1,2,", "[2,"},
      {"[1,2,", "[0,1,2,"},
      {"440", "440.5"},
      {"440", "\"440\""},
      {"440", "65536"},
      {"440", "18446744073709551615"},
      {"-3]", "-65536]"},
      {"[1,2,0,1,70,90,140,400,440,0,120,100,100,100,-3]", "{}"},
  };
  for (const auto &[was, is] : changes) {
    EXPECT_EQ(problemOf(entryText(was, is)), LineProblem::Malformed) << was << " -> " << is;
  }
}

}  // namespace
}  // namespace tavril::records
