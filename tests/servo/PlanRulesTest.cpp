#include "servo/PlanRules.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <vector>

namespace tavril::servo {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

const Settings before{{1, 1},   {2, 2},  {3, 0},    {4, 1},    {5, 70},   {6, 60},   {7, 140}, {8, 400},
                      {9, 440}, {10, 0}, {11, 120}, {12, 100}, {13, 100}, {14, 100}, {15, -3}};

Settings with(Settings settings, const Settings &others) {
  for (const auto &[number, value] : others) settings[number] = value;
  return settings;
}

std::vector<int> numbersOf(const std::vector<Change> &changes) {
  std::vector<int> numbers;
  for (const Change &change : changes) numbers.push_back(change.number);
  return numbers;
}

std::vector<Danger::Kind> kindsOf(const std::vector<Danger> &dangers) {
  std::vector<Danger::Kind> kinds;
  for (const Danger &danger : dangers) kinds.push_back(danger.kind);
  return kinds;
}

TEST(PlanRules, LeaveOutIdAndCalibrationOfAnotherServo) {
  const Settings wanted{{1, 7}, {9, 500}, {15, 2}};
  EXPECT_THAT(leftOutAtFirst(before, wanted, Source::OtherServo), ElementsAre(1, 15));
  EXPECT_THAT(leftOutAtFirst(before, wanted, Source::SameServo), IsEmpty());
  EXPECT_THAT(leftOutAtFirst(before, {{9, 500}}, Source::OtherServo), IsEmpty());
}

TEST(PlanRules, LeaveThemOutOfAFileWithoutANameIfItsIdIsAnother) {
  EXPECT_THAT(leftOutAtFirst(before, {{1, 7}, {15, 2}}, Source::NoName), ElementsAre(1, 15));
  EXPECT_THAT(leftOutAtFirst(before, {{1, 1}, {15, 2}}, Source::NoName), IsEmpty());
  EXPECT_THAT(leftOutAtFirst(before, {{15, 2}}, Source::NoName), IsEmpty());
}

TEST(PlanRules, TakeNoValueOutOfRangeAndNothingThatIsNoSetting) {
  EXPECT_THAT(invalidIn(before), IsEmpty());
  EXPECT_THAT(invalidIn({{0, 0}, {1, 254}, {2, 3}, {3, -1}, {9, 32766}, {15, -21}, {16, 0}, {21, 0}}),
              ElementsAre(0, 1, 2, 3, 15, 16, 21));
}

TEST(PlanRules, ReadADifferenceAgainBeforeItCounts) {
  EXPECT_EQ(meaningOf(5, 5, false), ReadBack::Kept);
  EXPECT_EQ(meaningOf(5, 6, false), ReadBack::ReadAgain);
  EXPECT_EQ(meaningOf(5, 5, true), ReadBack::Kept);
  EXPECT_EQ(meaningOf(5, 6, true), ReadBack::NotKept);
}

TEST(PlanRules, WriteAgainWhatMayHaveBeenLostButNotWhatWasRefused) {
  EXPECT_EQ(nextStep(5, 5, false, 2), NextStep::GoOn);
  EXPECT_EQ(nextStep(5, 5, true, 0), NextStep::GoOn) << "whatever was reported, the servo holds it";
  EXPECT_EQ(nextStep(5, 6, false, 1), NextStep::WriteAgain);
  EXPECT_EQ(nextStep(5, 6, false, 0), NextStep::RollBack);
  EXPECT_EQ(nextStep(5, 6, true, 2), NextStep::RollBack);
}

TEST(PlanRules, ReadBackLastWhatWasWrittenLast) {
  EXPECT_THAT(readBackOrder({{.number = 9}, {.number = 3}, {.number = 2}}),
              ElementsAre(1, 4, 5, 6, 7, 8, 10, 11, 12, 13, 14, 15, 9, 3, 2));
}

TEST(PlanRules, RollBackInTheOppositeOrderWhatIsNotKnownToBeAsBefore) {
  const Settings after = with(before, {{2, 1}, {5, 75}, {7, 130}, {9, 500}, {15, 0}});
  Settings known = with(before, {{5, 75}, {7, 130}, {12, 7}});
  known.erase(2);
  known.erase(9);
  const std::vector<Change> back = rollbackOf(before, after, known);
  EXPECT_THAT(numbersOf(back), ElementsAre(2, 9, 12, 7, 5)) << "12 changed by itself, 15 was not written";
  EXPECT_EQ(back.front().to, 2);
  EXPECT_EQ(back.back().to, 70);
  EXPECT_THAT(rollbackOf(before, after, before), IsEmpty());
}

TEST(PlanRules, EndARollbackByWhatTheServoHolds) {
  EXPECT_EQ(endingOfRollback(before, before, PlanReason::Cancelled), PlanEnding::Cancelled);
  EXPECT_EQ(endingOfRollback(before, before, PlanReason::NotKept), PlanEnding::RolledBack);
  EXPECT_EQ(endingOfRollback(before, with(before, {{9, 1}}), PlanReason::Cancelled),
            PlanEnding::RolledBackInPart);
}

TEST(PlanRules, ExpectSilenceOfThePolicyThatAnswersStatusCommandsOnly) {
  EXPECT_TRUE(mayLeaveReadsUnanswered(with(before, {{2, 0}})));
  EXPECT_FALSE(mayLeaveReadsUnanswered(with(before, {{2, 1}})));
  EXPECT_FALSE(mayLeaveReadsUnanswered(before));
}

TEST(PlanRules, TakeAnErrorReportForAServoThatDoesNotAnswer) {
  EXPECT_TRUE(isUnanswered({.kind = Problem::Kind::NoAnswer}));
  EXPECT_TRUE(isUnanswered({.kind = Problem::Kind::ErrorReport, .error = 1}));
  EXPECT_FALSE(isUnanswered({.kind = Problem::Kind::Gone}));
  EXPECT_FALSE(isUnanswered({.kind = Problem::Kind::Cancelled}));
}

TEST(Warnings, AreTheDangersAndFewerAnswers) {
  using Kind = Danger::Kind;
  EXPECT_THAT(kindsOf(warningsOf({{2, 0}}, before)), ElementsAre(Kind::MayFallSilent));
  EXPECT_THAT(kindsOf(warningsOf({{2, 1}}, before)), ElementsAre(Kind::AnswersFewer));
  EXPECT_THAT(warningsOf({{2, 2}}, before), IsEmpty());
  EXPECT_THAT(kindsOf(warningsOf({{6, 141}}, before)), ElementsAre(Kind::VoltagesCrossed));
}

TEST(Warnings, TellOfAShaftThatMayJumpUnlessTheServoHasShutDown) {
  using Kind = Danger::Kind;
  const Settings wanted{{5, 60}, {9, 500}, {15, 0}};
  EXPECT_THAT(kindsOf(warningsOf(wanted, before)), ElementsAre(Kind::ShaftMayJump, Kind::ShaftMayJump));
  EXPECT_THAT(warningsOf(wanted, with(before, {{16, 0x80}})), IsEmpty());
  EXPECT_EQ(warningsOf(wanted, with(before, {{16, 0x7F}})).size(), 2U);
  EXPECT_THAT(neededToWarn(wanted), ElementsAre(16, 19));
  EXPECT_THAT(neededToWarn({{4, 0}}), IsEmpty());
}

TEST(Changes, AreWhatDiffersInTheSafeOrder) {
  EXPECT_THAT(numbersOf(changesBetween(before, {{2, 1}, {3, 0}, {5, 60}, {8, 500}, {9, 1}})),
              ElementsAre(8, 5, 9, 2));
}

}  // namespace
}  // namespace tavril::servo
