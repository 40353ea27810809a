#pragma once

#include "servo/Changes.h"
#include "servo/Problem.h"

#include <map>
#include <optional>
#include <set>
#include <vector>

namespace tavril::servo {

// What a plan decides. All of it is pure.

/// How a plan ended; docs/plan.md describes each.
enum class PlanEnding {
  NotBegun,                ///< nothing was written
  Done,                    ///< all was read back
  DonePolicyNotConfirmed,  ///< all but the reply policy, with which the servo does not answer reads
  Cancelled,               ///< and rolled back
  RolledBack,
  RolledBackInPart,
  Unknown,  ///< the servo does not answer any more
};

/// Why a plan was not begun, or was not done.
enum class PlanReason {
  None,
  Problem,          ///< `problem` of the report
  ReadsUnanswered,  ///< but detection is answered; the servo may have a reply policy that a blind write mends
  InvalidValue,     ///< `numbers` are no settings, or their values are out of range
  NothingToChange,
  NotKept,    ///< the servo holds other values in `numbers` than were written
  Refused,    ///< the servo refused `numbers`, with `error`
  Different,  ///< `numbers` do not hold what was reviewed
  NoJournal,  ///< there is none, or it could not keep that the plan begins
  Cancelled,
};

/// What has become of a plan.
struct PlanReport {
  PlanEnding ending = PlanEnding::NotBegun;
  PlanReason reason = PlanReason::None;
  std::vector<int> numbers = {};
  int error = 0;
  std::optional<Problem> problem = {};
  /// What the servo holds, as far as it is known. Nothing if the plan was not begun.
  Settings holds = {};
  /// All other registers, each with the values that it may hold. It may hold yet another one if the servo has
  /// not kept what was written.
  std::map<int, std::set<int>> doubtful = {};
  bool isKept = false;  ///< in the journal, begin and end
};

/// From where the values come that somebody wants a servo to hold.
enum class Source {
  SameServo,
  OtherServo,
  NoName,  ///< a file that does not say of which servo
};
/// Those of the settings that are not to be written unless somebody says so: what makes this servo this one.
std::set<int> leftOutAtFirst(const Settings &held, const Settings &wanted, Source source);

/// Those that are no settings, or out of range.
std::vector<int> invalidIn(const Settings &wanted);
/// Those whose values are not the same.
std::vector<int> differencesBetween(const Settings &one, const Settings &other);

/// What it means that a register was read where `expected` was to be found. A first reading that differs may
/// be the late answer to an earlier question.
enum class ReadBack { Kept, ReadAgain, NotKept };
ReadBack meaningOf(int expected, int reading, bool isSecond);

/// What follows an attempt to write a value, by what the register holds after it.
enum class NextStep { GoOn, WriteAgain, RollBack };
/// `isRefused`: the servo refused the value as out of range.
NextStep nextStep(int wanted, int held, bool isRefused, int attemptsLeft);

/// In which order the settings are read back: those that were written last come last. So a servo that loses
/// its power while it is read, and its last write with it, is found out.
std::vector<int> readBackOrder(const std::vector<Change> &written);

/// What has to be written for a servo to hold `before` again, in the order opposite to that of writing:
/// whatever is not known to be so. `after` is what was to become of it.
std::vector<Change> rollbackOf(const Settings &before, const Settings &after, const Settings &known);
PlanEnding endingOfRollback(const Settings &before, const Settings &holds, PlanReason reason);

/// With the policy 0, the servo need not answer reads.
bool mayLeaveReadsUnanswered(const Settings &settings);
/// Whether this is how a servo that does not answer looks from here: the bridge is silent or reports an
/// error.
bool isUnanswered(const Problem &problem);

}  // namespace tavril::servo
