#include "servo/Changes.h"

#include "servo/Servo.h"
#include "wire/Registers.h"

#include <algorithm>
#include <optional>
#include <utility>

namespace tavril::servo {

namespace {

using wire::RegisterNumber;

/// Changes are made in the order of their ranks.
std::pair<int, int> rankOf(const Change &change) {
  const wire::Register &row = *wire::findRegister(change.number);
  if (row.stage != wire::WriteStage::Limit) return {1 + static_cast<int>(row.stage), change.number};
  const bool isWider = row.isLowest ? change.to < change.from : change.to > change.from;
  return {isWider ? 0 : 1, 0};
}

/// The bit of the status error with which a servo reports that it has shut down.
constexpr int hasShutDown = 0x80;

bool mayMoveTheShaft(int number) {
  const wire::WriteStage stage = wire::findRegister(number)->stage;
  return stage == wire::WriteStage::Gain || stage == wire::WriteStage::Calibration;
}

std::optional<int> valueIn(const Settings &settings, int number) {
  const auto found = settings.find(number);
  if (found == settings.end()) return std::nullopt;
  return found->second;
}

}  // namespace

std::vector<Change> inSafeOrder(std::vector<Change> changes) {
  std::ranges::stable_sort(changes, {}, rankOf);
  return changes;
}

std::vector<Change> changesBetween(const Settings &held, const Settings &wanted) {
  std::vector<Change> changes;
  for (const auto &[number, value] : wanted) {
    if (held.at(number) != value) changes.push_back({.number = number, .from = held.at(number), .to = value});
  }
  return inSafeOrder(std::move(changes));
}

std::set<int> neededToJudge(const Settings &wanted) {
  std::set<int> needed;
  for (const auto &[number, value] : wanted) {
    if (const int limited = wire::findRegister(number)->limited) needed.insert(limited);
  }
  if (wanted.contains(RegisterNumber::MinVoltage) || wanted.contains(RegisterNumber::MaxVoltage))
    needed.insert({RegisterNumber::MinVoltage, RegisterNumber::MaxVoltage});
  return needed;
}

std::vector<Danger> dangersOf(const Settings &wanted, const Settings &present) {
  using Kind = Danger::Kind;
  std::vector<Danger> dangers;
  if (valueIn(wanted, RegisterNumber::AckPolicy) == 0) {
    dangers.push_back({.kind = Kind::MayFallSilent, .number = RegisterNumber::AckPolicy});
  }
  Settings after = present;
  for (const auto &[number, value] : wanted) after[number] = value;
  const auto lowest = valueIn(after, RegisterNumber::MinVoltage);
  const auto highest = valueIn(after, RegisterNumber::MaxVoltage);
  const bool changesVoltage =
      wanted.contains(RegisterNumber::MinVoltage) || wanted.contains(RegisterNumber::MaxVoltage);
  if (changesVoltage && lowest && highest && *lowest > *highest) {
    dangers.push_back({Kind::VoltagesCrossed, RegisterNumber::MinVoltage, *lowest, *highest});
  }
  for (const auto &[number, value] : wanted) {
    const wire::Register &limit = *wire::findRegister(number);
    if (limit.limited == 0) continue;
    if (value == 0 && !limit.isLowest) {
      dangers.push_back({.kind = Kind::AllowsNothing, .number = number});
      continue;
    }
    const auto now = valueIn(present, limit.limited);
    if (now && (limit.isLowest ? *now < value : *now > value))
      dangers.push_back({Kind::PassedNow, number, value, *now});
  }
  return dangers;
}

std::set<int> neededToWarn(const Settings &wanted) {
  std::set<int> needed = neededToJudge(wanted);
  for (const auto &[number, value] : wanted) {
    if (mayMoveTheShaft(number)) needed.insert(RegisterNumber::StatusError);
  }
  return needed;
}

std::vector<Danger> warningsOf(const Settings &wanted, const Settings &present) {
  using Kind = Danger::Kind;
  std::vector<Danger> warnings = dangersOf(wanted, present);
  const auto policy = valueIn(wanted, RegisterNumber::AckPolicy);
  if (policy && *policy != 0 && *policy != answersEverything)
    warnings.push_back({.kind = Kind::AnswersFewer, .number = RegisterNumber::AckPolicy, .value = *policy});
  if (valueIn(present, RegisterNumber::StatusError).value_or(0) & hasShutDown) return warnings;
  for (const auto &[number, value] : wanted) {
    if (mayMoveTheShaft(number))
      warnings.push_back({.kind = Kind::ShaftMayJump, .number = number, .value = value});
  }
  return warnings;
}

Outcome<Done> carryOut(Servo &servo, std::vector<Change> &changes,
                       const std::function<void(int done)> &progress) {
  int done = 0;
  for (Change &change : changes) {
    change.state = Change::State::Unknown;
    const Outcome<Servo::Written> written = servo.write(*wire::findRegister(change.number), change.to);
    if (!written) return written.problem();
    if (!written->held) {
      change.state = Change::State::Refused;
      change.error = written->error;
    } else {
      change.held = *written->held;
      change.state = change.held == change.to ? Change::State::Changed : Change::State::NotKept;
    }
    if (progress) progress(++done);
  }
  return Done{};
}

}  // namespace tavril::servo
