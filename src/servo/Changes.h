#pragma once

#include "servo/Problem.h"

#include <functional>
#include <map>
#include <set>
#include <vector>

namespace tavril::servo {

class Servo;

/// The reply policy with which the servo answers all commands.
inline constexpr int answersEverything = 2;

/// Values of settings by register number; all fifteen, or some of them.
using Settings = std::map<int, int>;

/// A setting that is to be changed, and what has become of it.
struct Change {
  enum class State { NotTried, Changed, NotKept, Refused, Unknown };

  int number = 0;
  int from = 0;
  int to = 0;
  State state = State::NotTried;
  int held = 0;   ///< where it is NotKept: what the servo holds instead
  int error = 0;  ///< where it is Refused: what the bridge reported
};

/// What is to be changed, in the order in which the least can go wrong: limits that become wider come before
/// those that become narrower, then check periods, gains, calibration angle, torque policy, LED policy and
/// servo ID; the reply policy comes last, as the servo may stop answering with it. Pure.
std::vector<Change> inSafeOrder(std::vector<Change> changes);
/// What has to change for a servo that holds the ones to hold the others, in the safe order. `held` has all
/// that `wanted` has. Pure.
std::vector<Change> changesBetween(const Settings &held, const Settings &wanted);

/// What may hurt when settings are written.
struct Danger {
  enum class Kind {
    MayFallSilent,    ///< with this reply policy
    VoltagesCrossed,  ///< the lowest is `value`, above the highest, which is `other`
    AllowsNothing,    ///< the limit `number`
    PassedNow,        ///< the limit `number` at `value` is passed by what it limits, which is `other`
    AnswersFewer,     ///< commands, with the reply policy `value`; among warnings only
    ShaftMayJump,     ///< when `number` becomes `value`, as the shaft is held; among warnings only
  };

  Kind kind = Kind::MayFallSilent;
  int number = 0;
  int value = 0;
  int other = 0;
};

/// The registers whose present values dangersOf() needs.
std::set<int> neededToJudge(const Settings &wanted);
/// `present` has what is known of the other registers; what is not known is not judged. Pure.
std::vector<Danger> dangersOf(const Settings &wanted, const Settings &present);

/// The same for warningsOf().
std::set<int> neededToWarn(const Settings &wanted);
/// The dangers, and what else somebody should know before agreeing to the values. Unless the servo reports
/// that it has shut down, its shaft may be held. Pure.
std::vector<Danger> warningsOf(const Settings &wanted, const Settings &present);

/// Writes one after the other, reads each back and notes what has become of it; values that are refused or
/// not kept do not stop it. At a problem, the change it was at is Unknown and the rest NotTried.
Outcome<Done> carryOut(Servo &servo, std::vector<Change> &changes,
                       const std::function<void(int done)> &progress = nullptr);

}  // namespace tavril::servo
