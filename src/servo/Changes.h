#pragma once

#include "servo/Problem.h"

#include <functional>
#include <map>
#include <set>
#include <vector>

namespace tavril::servo {

class Servo;

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

/// What may hurt when settings are written.
struct Danger {
  enum class Kind {
    MayFallSilent,    ///< with this reply policy
    VoltagesCrossed,  ///< the lowest is `value`, above the highest, which is `other`
    AllowsNothing,    ///< the limit `number`
    PassedNow,        ///< the limit `number` at `value` is passed by what it limits, which is `other`
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

/// Writes one after the other, reads each back and notes what has become of it; values that are refused or
/// not kept do not stop it. At a problem, the change it was at is Unknown and the rest NotTried.
Outcome<Done> carryOut(Servo &servo, std::vector<Change> &changes,
                       const std::function<void(int done)> &progress = nullptr);

}  // namespace tavril::servo
