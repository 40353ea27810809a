#include "posix/LineFile.h"
#include "records/HistoryJournal.h"
#include "servo/MemoryLine.h"
#include "servo/Servo.h"
#include "servo/SettingsPlan.h"
#include "tests/records/HistoryBench.h"
#include "tests/support/FileSizeLimit.h"

#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <span>
#include <string>
#include <thread>
#include <utility>
#include <variant>
#include <vector>

#include <sys/resource.h>

namespace tavril::records {
namespace {

using posix::FileError;
using servo::PlanEnding;
using servo::PlanReason;
using servo::PlanReport;
using servo::Problem;
using servo::Settings;
using testing::IsEmpty;

Settings settingsOf(const RawSettings &raw) {
  Settings settings;
  for (std::size_t i = 0; i < raw.size(); ++i) settings[static_cast<int>(i) + 1] = raw.at(i);
  return settings;
}

const Settings before = settingsOf(someSettings);

class HistoryJournalTest : public testing::Test {
 protected:
  std::string pathOf(const char *name) const {
    return QFile::encodeName(folder_.filePath(QString::fromLatin1(name))).toStdString();
  }
  static std::chrono::sys_seconds clock() { return someTime; }
  const HistoryBook &book() {
    EXPECT_FALSE(history.refresh().happened());
    return history.book();
  }
  static PlanReport ended(PlanEnding ending, Settings holds = {}) {
    return {.ending = ending, .holds = std::move(holds)};
  }

  QTemporaryDir folder_;
  HistoryFile history{pathOf("history.jsonl")};
  HistoryJournal journal{history, "ttyUSB0", "tavril 0.9", clock};
};

TEST_F(HistoryJournalTest, KeepsBeginAndEndAndTheStatesAround) {
  const RawSettings after = settingsWith(9, 500);
  ASSERT_TRUE(journal.begin(before, settingsOf(after)));
  ASSERT_EQ(book().plans().size(), 1U);
  EXPECT_EQ(book().plans()[0].begin,
            (PlanBeginLine{2, someTime, "ttyUSB0", "tavril 0.9", someSettings, after}));
  EXPECT_EQ(book().openPlans().size(), 1U);

  ASSERT_TRUE(journal.end(ended(PlanEnding::Done, settingsOf(after))));
  EXPECT_THAT(book().openPlans(), IsEmpty());
  EXPECT_EQ(book().plans()[0].end, (PlanEndLine{3, someTime, 2, PlanOutcome::Done, ""}));
  ASSERT_EQ(book().entries().size(), 2U);
  EXPECT_EQ(book().entries()[0].why, Reason::BeforePlan);
  EXPECT_EQ(book().entries()[0].settings, someSettings);
  EXPECT_EQ(book().entries()[1].why, Reason::AfterPlan);
  EXPECT_EQ(book().entries()[1].settings, after);
}

TEST_F(HistoryJournalTest, KeepsNoStateThatIsTheNewestAlready) {
  ASSERT_FALSE(history.append(entryWith(someSettings)).error.happened());
  ASSERT_TRUE(journal.begin(before, settingsOf(settingsWith(9, 500))));
  ASSERT_TRUE(journal.end(ended(PlanEnding::RolledBack, before)));
  EXPECT_EQ(book().entries().size(), 1U);
}

TEST_F(HistoryJournalTest, KeepsEveryEndingAndNoStateThatIsNotKnown) {
  const std::map<PlanEnding, PlanOutcome> outcomes{
      {PlanEnding::NotBegun, PlanOutcome::NotBegun},
      {PlanEnding::Done, PlanOutcome::Done},
      {PlanEnding::DonePolicyNotConfirmed, PlanOutcome::DonePolicyNotConfirmed},
      {PlanEnding::Cancelled, PlanOutcome::Cancelled},
      {PlanEnding::RolledBack, PlanOutcome::RolledBack},
      {PlanEnding::RolledBackInPart, PlanOutcome::RolledBackInPart},
      {PlanEnding::Unknown, PlanOutcome::Unknown},
  };
  for (const auto &[ending, outcome] : outcomes) {
    ASSERT_TRUE(journal.begin(before, before));
    ASSERT_TRUE(journal.end(ended(ending)));
    EXPECT_EQ(book().plans().back().end->outcome, outcome);
  }
  EXPECT_EQ(book().entries().size(), 1U);
}

TEST_F(HistoryJournalTest, SaysThatItCannotBegin) {
  QFile file(folder_.filePath(QStringLiteral("taken")));
  ASSERT_TRUE(file.open(QIODevice::WriteOnly));
  HistoryFile nowhere(pathOf("taken/history.jsonl"));
  HistoryJournal failing(nowhere, "", "", clock);
  EXPECT_FALSE(failing.begin(before, before));
  EXPECT_TRUE(failing.error().happened());
}

TEST_F(HistoryJournalTest, SaysWhyItCannotKeepTheEnd) {
  ASSERT_TRUE(journal.begin(before, settingsOf(settingsWith(9, 500))));
  const auto size = QFileInfo(folder_.filePath(QStringLiteral("history.jsonl"))).size();
  const FileSizeLimit full(static_cast<rlim_t>(size));
  EXPECT_FALSE(journal.end(ended(PlanEnding::RolledBack, before)));
  EXPECT_EQ(journal.error(), (FileError{FileError::Step::Write, EFBIG, pathOf("history.jsonl")}));
}

TEST_F(HistoryJournalTest, HasMorePatienceThanOthersWhoAppend) {
  ASSERT_TRUE(journal.begin(before, before));
  auto locked = std::make_unique<posix::LineFile>(pathOf("history.jsonl"));
  ASSERT_FALSE(locked->openToAppend(std::chrono::seconds(1)).happened());
  bool isKept = false;
  std::thread ending([&] { isKept = journal.end(ended(PlanEnding::Done)); });
  std::this_thread::sleep_for(std::chrono::milliseconds(2500));
  locked.reset();
  ending.join();
  EXPECT_TRUE(isKept);
}

TEST_F(HistoryJournalTest, TellsInDetailWhatTheServoMayHold) {
  PlanReport report{.ending = PlanEnding::Unknown,
                    .reason = PlanReason::Problem,
                    .problem = Problem{.kind = Problem::Kind::NoAnswer},
                    .doubtful = {{9, {440, 500}}, {15, {-3, 0}}}};
  EXPECT_EQ(detailOf(report, before), "no answer; kp may be 440 or 500; calibration_angle may be -3 or 0");
  report = {.ending = PlanEnding::RolledBackInPart,
            .reason = PlanReason::NotKept,
            .numbers = {9, 10},
            .holds = settingsOf(settingsWith(9, 77))};
  EXPECT_EQ(detailOf(report, before), "not kept: kp, ki; kp is 77");
  report = {.ending = PlanEnding::NotBegun,
            .reason = PlanReason::Problem,
            .problem = Problem{.kind = Problem::Kind::NotOneServo, .count = servo::Count::Several}};
  EXPECT_EQ(detailOf(report, before), "several servos");
  EXPECT_EQ(detailOf(ended(PlanEnding::Done, before), before), "");
}

TEST_F(HistoryJournalTest, IsTheJournalOfAPlan) {
  std::map<int, int> registers = settingsOf(settingsWith(15, 3));
  for (int number = 16; number <= 20; ++number) registers[number] = 0;
  servo::MemoryLine line([&](std::span<const std::uint8_t> sent) -> std::vector<servo::MemoryLine::Piece> {
    const std::uint8_t number = sent[3];
    if (sent[2] == 0x90) return {{servo::Time(1), {0xFF, 0x05, 0x90, 0x01, 0xFE}}};
    if (sent[2] == 0x92) {
      EXPECT_EQ(book().openPlans().size(), 1U) << "it is kept before the first write";
      registers[number] = sent[4] * 256 + sent[5];
      return {{servo::Time(1), {0xFF, 0x05, 0x92, number, 0xFE}}};
    }
    const int value = registers.at(number);
    return {{servo::Time(1),
             {0xFF, 0x07, 0x91, number, static_cast<std::uint8_t>(value / 256),
              static_cast<std::uint8_t>(value % 256), 0xFE}}};
  });
  servo::Servo servo(line);
  servo::SettingsPlan plan(servo, &journal);
  const auto proposed = plan.propose({{9, 500}});
  ASSERT_TRUE(std::holds_alternative<servo::Proposal>(proposed));
  const PlanReport report = plan.carryOut(std::get<servo::Proposal>(proposed));
  EXPECT_EQ(report.ending, PlanEnding::Done);
  EXPECT_TRUE(report.isKept);
  ASSERT_EQ(book().plans().size(), 1U);
  EXPECT_EQ(book().plans()[0].end->outcome, PlanOutcome::Done);
  EXPECT_EQ(settingsOf(book().newest()->settings).at(9), 500);
}

}  // namespace
}  // namespace tavril::records
