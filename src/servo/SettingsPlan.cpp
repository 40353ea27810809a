#include "servo/SettingsPlan.h"

#include "servo/Journal.h"
#include "servo/Servo.h"
#include "wire/Frames.h"
#include "wire/Registers.h"

#include <cstddef>
#include <map>
#include <optional>
#include <set>
#include <utility>

namespace tavril::servo {

namespace {

using wire::RegisterNumber;
using Stage = PlanProgress::Stage;

/// How often a value is written at most that is neither acknowledged nor held.
constexpr int mostAttempts = 3;

PlanReport notBegun(PlanReason reason, std::vector<int> numbers = {}) {
  return {.reason = reason, .numbers = std::move(numbers)};
}

PlanReport notBegun(const Problem &problem) {
  const bool isCancelled = problem.kind == Problem::Kind::Cancelled;
  return {.reason = isCancelled ? PlanReason::Cancelled : PlanReason::Problem, .problem = problem};
}

Outcome<Done> expectOneNow(Servo &servo) {
  servo.forgetDetection();
  return servo.expectOne();
}

const wire::Register &rowOf(int number) {
  return *wire::findRegister(number);
}

Settings targetsOf(const std::vector<Change> &changes) {
  Settings targets;
  for (const Change &change : changes) targets[change.number] = change.to;
  return targets;
}

/// The error that the bridge reported instead of an acknowledgement, or 0 if there was no reply.
int errorIn(const Outcome<wire::Reply> &reply) {
  return reply ? reply->error() : reply.problem().error;
}

bool isAcknowledgement(const Outcome<wire::Reply> &reply) {
  return reply && reply->code() != wire::CommandCode::ErrorMessage;
}

/// The part of a plan that writes.
class Run {
 public:
  Run(Servo &servo, const Settings &before, const std::vector<Change> &changes,
      const std::atomic<bool> &cancelled, const SettingsPlan::Progress &progress)
      : servo_(servo), cancelled_(cancelled), progress_(progress), before_(before), changes_(changes) {
    for (const Change &change : changes) after_[change.number] = change.to;
  }

  PlanReport run();

 private:
  std::optional<PlanReport> obstacle();
  PlanReport write();
  PlanReport judge();
  PlanReport afterSilence(const Problem &problem);
  PlanReport rollBack(PlanReason reason, std::vector<int> numbers = {});
  std::optional<Problem> restore();
  PlanReport unknown(const Problem &problem) const;

  std::optional<PlanReport> make(const Change &change, const std::vector<Change> &written);
  std::optional<Problem> attempt(const Change &change);
  NextStep stepAfter(const Change &change, int attemptsLeft) const;
  std::optional<Problem> readBack(Stage stage, const Settings &expected, const std::vector<Change> &written);
  Outcome<int> read(int number, int expected);
  Outcome<int> readAgain(int number);
  void noteSeen(int number, int value);

  /// What the servo is to hold before the reply policy is written.
  Settings allButReplyPolicy() const {
    Settings settings = after_;
    settings[RegisterNumber::AckPolicy] = before_.at(RegisterNumber::AckPolicy);
    return settings;
  }
  void tell(Stage stage, std::size_t done, std::size_t all) const {
    if (progress_) progress_({stage, static_cast<int>(done), static_cast<int>(all)});
  }

  Servo &servo_;
  const std::atomic<bool> &cancelled_;
  const SettingsPlan::Progress &progress_;
  const Settings before_;
  const std::vector<Change> changes_;
  Settings after_ = before_;
  Settings known_ = {};                         ///< as last read, of registers not written since
  std::map<int, std::set<int>> possible_ = {};  ///< of each register that may not hold what it held before
  std::optional<int> written_ = {};             ///< the register that was written last
  bool isReadAnswered_ = false;                 ///< since then
  int refusal_ = 0;                             ///< the error with which the last value was refused
};

PlanReport Run::run() {
  if (auto report = obstacle()) return *std::move(report);
  return write();
}

/// Why nothing must be written: the servo is not the one that was reviewed.
std::optional<PlanReport> Run::obstacle() {
  if (const Outcome<Done> one = expectOneNow(servo_); !one) return notBegun(one.problem());
  if (const auto problem = readBack(Stage::Checking, before_, {})) return notBegun(*problem);
  if (known_ != before_) return notBegun(PlanReason::Different, differencesBetween(before_, known_));
  return std::nullopt;
}

PlanReport Run::write() {
  std::vector<Change> written;
  for (const Change &change : changes_) {
    tell(Stage::Writing, written.size(), changes_.size());
    if (auto report = make(change, written)) return *std::move(report);
    written.push_back(change);
  }
  if (const auto problem = readBack(Stage::ReadingBack, after_, written)) return afterSilence(*problem);
  return judge();
}

/// Writes until it is acknowledged or held. The report tells why the plan ends here.
std::optional<PlanReport> Run::make(const Change &change, const std::vector<Change> &written) {
  for (int left = mostAttempts - 1;; --left) {
    if (change.number == RegisterNumber::AckPolicy && !written.empty()) {
      // Afterwards the servo may not answer any more. This goes for each attempt: if one was lost because the
      // servo had no power, it may have forgotten what was written before.
      const Settings expected = allButReplyPolicy();
      if (const auto problem = readBack(Stage::ReadingBack, expected, written)) return unknown(*problem);
      if (known_ != expected) return rollBack(PlanReason::NotKept, differencesBetween(expected, known_));
    }
    if (cancelled_) return written_ ? rollBack(PlanReason::Cancelled) : notBegun(PlanReason::Cancelled);
    if (const auto problem = attempt(change)) return afterSilence(*problem);
    switch (stepAfter(change, left)) {
      case NextStep::GoOn:
        return std::nullopt;
      case NextStep::RollBack:
        return rollBack(refusal_ != 0 ? PlanReason::Refused : PlanReason::NotKept, {change.number});
      case NextStep::WriteAgain:
        break;
    }
  }
}

/// After all was read back.
PlanReport Run::judge() {
  if (known_ != after_) return rollBack(PlanReason::NotKept, differencesBetween(after_, known_));
  if (cancelled_) return rollBack(PlanReason::Cancelled);
  return {.ending = PlanEnding::Done, .holds = known_};
}

/// Either the servo obeys its new reply policy, or the link is lost.
PlanReport Run::afterSilence(const Problem &problem) {
  if (written_ != RegisterNumber::AckPolicy || !mayLeaveReadsUnanswered(after_) || !isUnanswered(problem))
    return unknown(problem);
  if (const Outcome<Done> one = expectOneNow(servo_); !one) return unknown(one.problem());
  // A servo that had lost its power answers again, with the old policy.
  const auto again = readBack(Stage::ReadingBack, after_, changes_);
  if (!again) return judge();
  if (!isUnanswered(*again) || isReadAnswered_) return unknown(*again);
  Settings holds = after_;
  holds.erase(RegisterNumber::AckPolicy);
  return {.ending = PlanEnding::DonePolicyNotConfirmed,
          .problem = *again,
          .holds = holds,
          .doubtful = {{RegisterNumber::AckPolicy, {before_.at(RegisterNumber::AckPolicy), 0}}}};
}

PlanReport Run::rollBack(PlanReason reason, std::vector<int> numbers) {
  const int refusal = reason == PlanReason::Refused ? refusal_ : 0;
  if (const auto problem = restore()) return unknown(*problem);
  // What a write has pulled along is perhaps only known now.
  if (known_ != before_) {
    if (const auto problem = restore()) return unknown(*problem);
  }
  return {.ending = endingOfRollback(before_, known_, reason),
          .reason = reason,
          .numbers = std::move(numbers),
          .error = refusal,
          .holds = known_};
}

/// Writes what is not known to be as before, and reads everything.
std::optional<Problem> Run::restore() {
  const std::vector<Change> back = rollbackOf(before_, after_, known_);
  std::size_t done = 0;
  for (const Change &change : back) {
    tell(Stage::RollingBack, done++, back.size());
    for (int left = mostAttempts - 1;; --left) {
      if (const auto problem = attempt(change)) return problem;
      if (stepAfter(change, left) != NextStep::WriteAgain) break;
    }
  }
  return readBack(Stage::ReadingBack, before_, back);
}

PlanReport Run::unknown(const Problem &problem) const {
  PlanReport report{.ending = PlanEnding::Unknown,
                    .reason = PlanReason::Problem,
                    .problem = problem,
                    .holds = before_,
                    .doubtful = possible_};
  for (auto &[number, values] : report.doubtful) {
    values.insert(before_.at(number));
    report.holds.erase(number);
  }
  return report;
}

/// Writes one time. Where that is not acknowledged, `known_` has what the servo holds then. The problem is
/// that it does not answer.
std::optional<Problem> Run::attempt(const Change &change) {
  isReadAnswered_ = false;
  written_ = change.number;
  known_.erase(change.number);
  possible_[change.number].insert(change.to);
  refusal_ = 0;
  const Outcome<wire::Reply> reply = servo_.writeOnce(rowOf(change.number), change.to);
  if (isAcknowledgement(reply)) return std::nullopt;
  if (!reply && !isUnanswered(reply.problem())) return reply.problem();
  if (errorIn(reply) == BridgeError::OutOfRange) refusal_ = BridgeError::OutOfRange;
  const Outcome<int> held = read(change.number, change.to);
  return held ? std::nullopt : std::optional(held.problem());
}

NextStep Run::stepAfter(const Change &change, int attemptsLeft) const {
  const auto held = known_.find(change.number);
  if (held == known_.end()) return NextStep::GoOn;
  return nextStep(change.to, held->second, refusal_ != 0, attemptsLeft);
}

std::optional<Problem> Run::readBack(Stage stage, const Settings &expected,
                                     const std::vector<Change> &written) {
  const std::vector<int> order = readBackOrder(written);
  for (std::size_t done = 0; done < order.size(); ++done) {
    tell(stage, done, order.size());
    const Outcome<int> held = read(order[done], expected.at(order[done]));
    if (!held) return held.problem();
  }
  return std::nullopt;
}

/// A value that is not the expected one is read again.
Outcome<int> Run::read(int number, int expected) {
  const Outcome<int> first = servo_.read(rowOf(number));
  if (!first) return first;
  isReadAnswered_ = true;
  const bool isFirstEnough = meaningOf(expected, *first, false) == ReadBack::Kept;
  const Outcome<int> held = isFirstEnough ? first : readAgain(number);
  noteSeen(number, held ? *held : *first);
  if (held) known_[number] = *held;
  return held;
}

/// Once another question is answered, no copy of an earlier answer is left on the way.
Outcome<int> Run::readAgain(int number) {
  const wire::Register &other = wire::settingRegisters[static_cast<std::size_t>(number % wire::settingCount)];
  const Outcome<int> between = servo_.read(other);
  if (!between) return between;
  noteSeen(other.number, *between);
  return servo_.read(rowOf(number));
}

/// Before the first write all registers are found to be as before, so what was seen until then counts no
/// more.
void Run::noteSeen(int number, int value) {
  if (written_ && value != before_.at(number)) possible_[number].insert(value);
}

}  // namespace

SettingsPlan::SettingsPlan(Servo &servo, Journal *journal, Progress progress)
    : servo_(servo), journal_(journal), progress_(std::move(progress)) {}

std::variant<Proposal, PlanReport> SettingsPlan::propose(const Settings &wanted) {
  if (auto invalid = invalidIn(wanted); !invalid.empty())
    return notBegun(PlanReason::InvalidValue, std::move(invalid));
  if (const Outcome<Done> one = expectOneNow(servo_); !one) return notBegun(one.problem());
  Proposal proposal;
  Settings &held = proposal.held;
  for (const wire::Register &row : wire::settingRegisters) {
    if (cancelled_) return notBegun(PlanReason::Cancelled);
    if (progress_) progress_({Stage::Reading, static_cast<int>(held.size()), wire::settingCount});
    const Outcome<int> value = servo_.read(row);
    if (!value) {
      PlanReport report = notBegun(value.problem());
      if (held.empty() && isUnanswered(value.problem()) && expectOneNow(servo_))
        report.reason = PlanReason::ReadsUnanswered;
      return report;
    }
    held[row.number] = *value;
  }
  proposal.changes = changesBetween(held, wanted);
  if (proposal.changes.empty()) return notBegun(PlanReason::NothingToChange);
  const Settings targets = targetsOf(proposal.changes);
  Settings present = held;
  for (const int number : neededToWarn(targets)) {
    if (present.contains(number)) continue;
    const Outcome<int> value = servo_.read(rowOf(number));
    if (!value) return notBegun(value.problem());
    present[number] = *value;
  }
  proposal.warnings = warningsOf(targets, present);
  return proposal;
}

Outcome<Done> SettingsPlan::writeReplyPolicyBlind() {
  // Once this is answered, no answer to an earlier such write is left on the way, for which the next would
  // wait.
  if (const Outcome<Done> one = expectOneNow(servo_); !one) return one;
  const Outcome<wire::Reply> reply = servo_.writeOnce(rowOf(RegisterNumber::AckPolicy), answersEverything);
  if (!reply && !isUnanswered(reply.problem())) return reply.problem();
  return Done{};
}

PlanReport SettingsPlan::carryOut(const Proposal &agreed, WithoutJournal withoutJournal) {
  const Settings targets = targetsOf(agreed.changes);
  if (auto invalid = invalidIn(targets); !invalid.empty())
    return notBegun(PlanReason::InvalidValue, std::move(invalid));
  const std::vector<Change> changes = changesBetween(agreed.held, targets);
  if (changes.empty()) return notBegun(PlanReason::NothingToChange);
  if (cancelled_) return notBegun(PlanReason::Cancelled);
  Settings after = agreed.held;
  for (const Change &change : changes) after[change.number] = change.to;
  const bool isBegun = journal_ && journal_->begin(agreed.held, after);
  if (!isBegun && withoutJournal == WithoutJournal::WriteNothing) return notBegun(PlanReason::NoJournal);
  PlanReport report = Run(servo_, agreed.held, changes, cancelled_, progress_).run();
  report.isKept = isBegun && journal_->end(report);
  return report;
}

}  // namespace tavril::servo
