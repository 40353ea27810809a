#include "servo/PlanRules.h"

#include "wire/Registers.h"

#include <algorithm>
#include <utility>

namespace tavril::servo {

using wire::RegisterNumber;

std::set<int> leftOutAtFirst(const Settings &held, const Settings &wanted, Source source) {
  const auto id = wanted.find(RegisterNumber::ServoId);
  const bool hasOtherId = id != wanted.end() && id->second != held.at(RegisterNumber::ServoId);
  const bool isOther = source == Source::OtherServo || (source == Source::NoName && hasOtherId);
  std::set<int> left;
  if (!isOther) return left;
  for (const int number : {RegisterNumber::ServoId, RegisterNumber::CalibrationAngle}) {
    if (wanted.contains(number)) left.insert(number);
  }
  return left;
}

std::vector<int> invalidIn(const Settings &wanted) {
  std::vector<int> invalid;
  for (const auto &[number, value] : wanted) {
    const wire::Register *row = wire::findRegister(number);
    if (!row || !row->isSetting() || !row->range.contains(value)) invalid.push_back(number);
  }
  return invalid;
}

std::vector<int> differencesBetween(const Settings &one, const Settings &other) {
  std::vector<int> differences;
  for (const auto &[number, value] : one) {
    const auto found = other.find(number);
    if (found == other.end() || found->second != value) differences.push_back(number);
  }
  return differences;
}

ReadBack meaningOf(int expected, int reading, bool isSecond) {
  if (reading == expected) return ReadBack::Kept;
  return isSecond ? ReadBack::NotKept : ReadBack::ReadAgain;
}

NextStep nextStep(int wanted, int held, bool isRefused, int attemptsLeft) {
  if (held == wanted) return NextStep::GoOn;
  return isRefused || attemptsLeft == 0 ? NextStep::RollBack : NextStep::WriteAgain;
}

std::vector<int> readBackOrder(const std::vector<Change> &written) {
  std::vector<int> order;
  for (const wire::Register &row : wire::settingRegisters) {
    if (std::ranges::find(written, row.number, &Change::number) == written.end()) order.push_back(row.number);
  }
  for (const Change &change : written) order.push_back(change.number);
  return order;
}

std::vector<Change> rollbackOf(const Settings &before, const Settings &after, const Settings &known) {
  std::vector<Change> written;
  for (const auto &[number, value] : before) {
    const auto found = known.find(number);
    if (found != known.end() && found->second == value) continue;
    written.push_back({.number = number, .from = value, .to = after.at(number)});
  }
  std::vector<Change> back = inSafeOrder(std::move(written));
  std::ranges::reverse(back);
  for (Change &change : back) std::swap(change.from, change.to);
  return back;
}

PlanEnding endingOfRollback(const Settings &before, const Settings &holds, PlanReason reason) {
  if (holds != before) return PlanEnding::RolledBackInPart;
  return reason == PlanReason::Cancelled ? PlanEnding::Cancelled : PlanEnding::RolledBack;
}

bool mayLeaveReadsUnanswered(const Settings &settings) {
  return settings.at(RegisterNumber::AckPolicy) == 0;
}

bool isUnanswered(const Problem &problem) {
  return problem.isNoAnswer() || problem.kind == Problem::Kind::ErrorReport;
}

}  // namespace tavril::servo
