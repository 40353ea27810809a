#include "records/HistoryBook.h"
#include "tests/records/HistoryBench.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

namespace tavril::records {
namespace {

using Grade = Resemblance::Grade;
using testing::ElementsAre;
using testing::IsEmpty;

/// A book to which lines are added one after the other, each with the next number.
class HistoryBookTest : public testing::Test {
 protected:
  LineNumber add(HistoryLine line) {
    const LineNumber number = book.nextNumber();
    const std::string text = numbered(std::move(line), number);
    EXPECT_EQ(book.take(text), text.size());
    return number;
  }
  LineNumber addEntry(const RawSettings &settings, Reason why = Reason::ReadOut) {
    return add(entryWith(settings, why));
  }
  void name(const char *name, std::vector<LineNumber> entries) {
    add(NameLine{0, someTime, name, std::move(entries)});
  }
  LineNumber begin() { return add(PlanBeginLine{0, someTime, "", "", someSettings, settingsWith(9, 450)}); }

  HistoryBook book;
};

std::vector<LineNumber> numbersOf(const auto &lines) {
  std::vector<LineNumber> all(lines.size());
  std::ranges::transform(lines, all.begin(), [](const auto *line) { return line->number; });
  return all;
}

TEST_F(HistoryBookTest, OfNothingKnowsNothing) {
  EXPECT_EQ(book.take(""), 0U);
  EXPECT_EQ(book.newest(), nullptr);
  EXPECT_EQ(book.find(1), nullptr);
  EXPECT_THAT(book.remarks(), IsEmpty());
  EXPECT_EQ(book.nextNumber(), 1);
  EXPECT_EQ(book.looksLike(someSettings).grade, Grade::Nobody);
}

TEST_F(HistoryBookTest, FindsEntriesByNumberAndTheNewest) {
  const LineNumber first = addEntry(someSettings, Reason::Imported);
  begin();
  const LineNumber second = addEntry(settingsWith(9, 450));
  EXPECT_EQ(book.newest()->number, second);
  EXPECT_EQ(book.newest()->settings, settingsWith(9, 450));
  EXPECT_EQ(book.find(first)->why, Reason::Imported);
  EXPECT_EQ(book.find(2), nullptr) << "is no entry";
  EXPECT_EQ(book.find(9), nullptr);
}

TEST_F(HistoryBookTest, KnowsTheEntriesOfAName) {
  for (int i = 0; i < 4; ++i) addEntry(someSettings);
  name("left hip", {1, 3});
  name("right hip", {2, 77});
  EXPECT_THAT(numbersOf(book.entriesOf("left hip")), ElementsAre(1, 3));
  EXPECT_THAT(numbersOf(book.entriesOf("right hip")), ElementsAre(2));
  EXPECT_THAT(numbersOf(book.entriesOf("")), ElementsAre(4));
  EXPECT_EQ(book.nameOf(3), "left hip");
  EXPECT_EQ(book.nameOf(4), "");
}

TEST_F(HistoryBookTest, TakesTheLastNameOfAnEntry) {
  addEntry(someSettings);
  addEntry(someSettings);
  name("left hip", {1, 2});
  name("left knee", {1});
  name("", {2});
  EXPECT_EQ(book.nameOf(1), "left knee");
  EXPECT_EQ(book.nameOf(2), "");
  EXPECT_THAT(book.entriesOf("left hip"), IsEmpty());
}

TEST_F(HistoryBookTest, HasAPlanOpenUntilItsEnd) {
  const LineNumber first = begin();
  const LineNumber second = begin();
  const LineNumber third = begin();
  add(PlanEndLine{0, someTime, second, PlanOutcome::Cancelled, ""});
  EXPECT_THAT(numbersOf(book.openPlans()), ElementsAre(first, third));
  EXPECT_EQ(book.plans().at(1).end->outcome, PlanOutcome::Cancelled);
  add(PlanEndLine{0, someTime, first, PlanOutcome::Other, ""});
  add(PlanEndLine{0, someTime, 77, PlanOutcome::Done, ""});
  EXPECT_THAT(numbersOf(book.openPlans()), ElementsAre(third));
}

TEST(SettingDifferences, AreThoseOfTheRegistersInTheirOrder) {
  EXPECT_THAT(differencesBetween(someSettings, someSettings), IsEmpty());
  RawSettings other = settingsWith(15, 4);
  other.front() = 7;
  EXPECT_THAT(differencesBetween(someSettings, other),
              ElementsAre(SettingDifference{wire::findRegister(1), 1, 7},
                          SettingDifference{wire::findRegister(15), -3, 4}));
}

TEST(SettingsOutOfRange, AreNamedByTheirRegisters) {
  EXPECT_THAT(outOfRange(someSettings), IsEmpty());
  EXPECT_THAT(outOfRange(settingsWith(2, 3)), ElementsAre(wire::findRegister(2)));
}

TEST_F(HistoryBookTest, SaysProbableIfAllSettingsAreThoseOfAName) {
  addEntry(someSettings);
  addEntry(settingsWith(1, 2));
  name("left hip", {1});
  name("left knee", {2});
  EXPECT_EQ(book.looksLike(someSettings), (Resemblance{Grade::Probable, {"left hip"}}));
}

TEST_F(HistoryBookTest, SaysMaybeIfIdAndCalibrationAreThoseOfAName) {
  addEntry(someSettings);
  addEntry(settingsWith(1, 2));
  addEntry(settingsWith(15, 0));
  name("left hip", {1});
  name("left knee", {2});
  name("left foot", {3});
  EXPECT_EQ(book.looksLike(settingsWith(9, 1)), (Resemblance{Grade::Maybe, {"left hip"}}));
  EXPECT_EQ(book.looksLike(settingsWith(1, 3)).grade, Grade::Nobody) << "only the calibration is the same";
}

TEST_F(HistoryBookTest, PrefersTheNameOfWhichAllSettingsAreTheSame) {
  addEntry(someSettings);
  addEntry(settingsWith(9, 1));
  name("left hip", {1});
  name("left knee", {2});
  EXPECT_EQ(book.looksLike(someSettings), (Resemblance{Grade::Probable, {"left hip"}}));
}

TEST_F(HistoryBookTest, CannotTellServosApartThatAreAlike) {
  addEntry(someSettings);
  addEntry(someSettings);
  name("left hip", {1});
  name("left knee", {2});
  EXPECT_EQ(book.looksLike(someSettings), (Resemblance{Grade::CannotTell, {"left knee", "left hip"}}));
  EXPECT_EQ(book.looksLike(settingsWith(9, 1)), (Resemblance{Grade::CannotTell, {"left knee", "left hip"}}));
}

TEST_F(HistoryBookTest, RecognisesAServoByItsNewestEntry) {
  addEntry(someSettings);
  addEntry(settingsWith(1, 5));
  addEntry(someSettings);
  name("left hip", {1, 2});
  name("left knee", {3});
  EXPECT_EQ(book.looksLike(someSettings), (Resemblance{Grade::Probable, {"left knee"}}));
}

TEST_F(HistoryBookTest, RecognisesNobodyByFactorySettings) {
  addEntry(someSettings, Reason::AfterReset);
  addEntry(someSettings);
  addEntry(settingsWith(9, 1));
  name("left hip", {1, 2});
  name("left knee", {3});
  EXPECT_EQ(book.looksLike(someSettings), Resemblance()) << "all are the factory's";
  EXPECT_EQ(book.looksLike(settingsWith(9, 2)), Resemblance()) << "ID and calibration are the factory's";
  EXPECT_EQ(book.looksLike(settingsWith(9, 1)), (Resemblance{Grade::Probable, {"left knee"}}));
}

TEST_F(HistoryBookTest, RecognisesNobodyByEntriesWithoutAName) {
  addEntry(someSettings);
  EXPECT_EQ(book.looksLike(someSettings), Resemblance());
}

TEST_F(HistoryBookTest, SkipsWhatItDoesNotUnderstandAndSaysWhere) {
  std::string damaged = numbered(entryWith(someSettings), 2);
  damaged[40] = 'x';
  const std::string text = numbered(entryWith(someSettings), 1) + damaged + "\n" +
                           "{\"format\":2,\"kind\":\"entry\"}\n" +
                           sealed("{\"format\":1,\"kind\":\"photo\",\"number\":5") + '\n' +
                           sealed("{\"format\":1,\"kind\":\"entry\",\"number\":6") + '\n' +
                           numbered(entryWith(someSettings), 1) + numbered(entryWith(someSettings), 8);
  EXPECT_EQ(book.take(text), text.size());
  EXPECT_THAT(
      book.remarks(),
      ElementsAre(HistoryRemark{2, LineProblem::Damaged}, HistoryRemark{3, LineProblem::Damaged},
                  HistoryRemark{4, LineProblem::LaterFormat}, HistoryRemark{5, LineProblem::UnknownKind},
                  HistoryRemark{6, LineProblem::Malformed}, HistoryRemark{7, LineProblem::Repeated}));
  EXPECT_EQ(book.entries().size(), 2U);
  EXPECT_EQ(book.nextNumber(), 9);
}

TEST_F(HistoryBookTest, GivesNoNumberTwiceAlsoIfItCannotReadTheLastLine) {
  addEntry(someSettings);
  book.take("{\"format\":2,\"number\":2}\ndamaged\n");
  EXPECT_EQ(book.nextNumber(), 4);
  book.take("torn");
  EXPECT_EQ(book.nextNumber(), 5);
  const std::string text = numbered(entryWith(someSettings), 9);
  book.take(text.substr(0, text.size() - 1));
  EXPECT_EQ(book.nextNumber(), 10) << "of which only the end is missing";
}

TEST_F(HistoryBookTest, RemarksATornLineUntilItIsComplete) {
  const std::string text = numbered(entryWith(someSettings), 1);
  const std::string_view torn = std::string_view(text).substr(0, 100);
  EXPECT_EQ(book.take(torn), 0U);
  EXPECT_TRUE(book.endsTorn());
  EXPECT_EQ(book.take(torn), 0U);
  EXPECT_THAT(book.remarks(), ElementsAre(HistoryRemark{1, LineProblem::Torn}));
  EXPECT_EQ(book.take(text), text.size());
  EXPECT_THAT(book.remarks(), IsEmpty());
  EXPECT_FALSE(book.endsTorn());
  EXPECT_EQ(book.entries().size(), 1U);
}

/// All lines of a long life, and where each ends in the file.
struct Life {
  explicit Life(std::uint32_t seed, int count) {
    RandomLines random(seed);
    for (int number = 1; number <= count; ++number) {
      lines.push_back(random.line(number));
      text += textOf(lines.back()) + '\n';
    }
  }
  std::vector<HistoryLine> lines;
  std::string text;
};

/// Whether each of the entries and plans in the book is one that was written.
void expectOnlyWhatWasWritten(const HistoryBook &book, const Life &life) {
  const auto wasWritten = [&life](const auto &line) {
    return line.number >= 1 && line.number <= static_cast<LineNumber>(life.lines.size()) &&
           life.lines[static_cast<std::size_t>(line.number) - 1] == HistoryLine(line);
  };
  for (const EntryLine &entry : book.entries()) ASSERT_TRUE(wasWritten(entry)) << entry.number;
  for (const PlanRecord &plan : book.plans()) {
    ASSERT_TRUE(wasWritten(plan.begin)) << plan.begin.number;
    ASSERT_TRUE(!plan.end || wasWritten(*plan.end)) << plan.begin.number;
  }
}

TEST(HistoryBookAtRandom, HoldsWhatWasWrittenHoweverItIsRead) {
  for (std::uint32_t seed = 0; seed < 50; ++seed) {
    SCOPED_TRACE(seed);
    const Life life(seed, 60);
    RandomLines random(seed);
    HistoryBook book;
    // In pieces that end anywhere. What was not taken comes again with the next.
    std::size_t taken = 0;
    std::size_t end = 0;
    while (taken < life.text.size()) {
      end = std::min(life.text.size(), end + static_cast<std::size_t>(random.upTo(900)));
      taken += book.take(std::string_view(life.text).substr(taken, end - taken));
    }
    EXPECT_THAT(book.remarks(), IsEmpty());
    EXPECT_EQ(book.nextNumber(), 61);
    std::size_t entry = 0;
    std::size_t plan = 0;
    for (const HistoryLine &line : life.lines) {
      if (std::holds_alternative<EntryLine>(line)) {
        EXPECT_EQ(HistoryLine(book.entries().at(entry++)), line);
      }
      if (std::holds_alternative<PlanBeginLine>(line)) {
        EXPECT_EQ(HistoryLine(book.plans().at(plan++).begin), line);
      }
    }
    EXPECT_EQ(book.entries().size(), entry);
    EXPECT_EQ(book.plans().size(), plan);
    expectOnlyWhatWasWritten(book, life);
  }
}

TEST(HistoryBookAtRandom, CutAtAnyByteLosesTheLastLineAtMost) {
  for (std::uint32_t seed = 0; seed < 3; ++seed) {
    const Life life(seed, 8);
    const auto lines = static_cast<std::size_t>(std::ranges::count(life.text, '\n'));
    ASSERT_EQ(lines, life.lines.size());
    for (std::size_t length = 0; length <= life.text.size(); ++length) {
      SCOPED_TRACE(length);
      const std::string_view cut = std::string_view(life.text).substr(0, length);
      const auto whole = std::ranges::count(cut, '\n');
      HistoryBook book;
      const std::size_t taken = book.take(cut);
      ASSERT_EQ(taken, cut.rfind('\n') + 1);
      ASSERT_EQ(book.endsTorn(), taken < length);
      ASSERT_EQ(book.remarks().size(), taken < length ? 1U : 0U);
      // The next line is appended on a line of its own.
      const LineNumber next = book.nextNumber();
      ASSERT_GT(next, whole);
      const std::string added = numbered(entryWith(someSettings), next);
      book.take(std::string(cut.substr(taken)) + (book.endsTorn() ? "\n" : "") + added);
      ASSERT_EQ(book.newest()->number, next);
      ASSERT_EQ(book.newest()->settings, someSettings);
      ASSERT_LE(book.remarks().size(), taken < length ? 1U : 0U);
    }
  }
}

TEST(HistoryBookAtRandom, WithAnyByteWrongHoldsNothingThatWasNotWritten) {
  for (std::uint32_t seed = 0; seed < 2; ++seed) {
    const Life life(seed, 3);
    for (std::size_t at = 0; at < life.text.size(); ++at) {
      // Each bit, and the line break and the blank in the place of anything.
      const char was = life.text[at];
      std::vector<char> others{'\n', ' '};
      for (int bit = 0; bit < 8; ++bit) others.push_back(static_cast<char>(was ^ (1 << bit)));
      for (const char other : others) {
        if (other == was) continue;
        std::string text = life.text;
        text[at] = other;
        HistoryBook book;
        book.take(text);
        SCOPED_TRACE(testing::Message() << seed << ' ' << at << ' ' << static_cast<int>(other));
        ASSERT_FALSE(book.remarks().empty());
        ASSERT_NO_FATAL_FAILURE(expectOnlyWhatWasWritten(book, life));
      }
    }
  }
}

}  // namespace
}  // namespace tavril::records
