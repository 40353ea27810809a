#pragma once

#include "cli/SettingsFile.h"

#include <QString>
#include <QStringList>

#include <functional>
#include <optional>
#include <set>
#include <vector>

namespace tavril::cli {

class Servo;

/// A setting that is to be changed, and what has become of it.
struct Change {
  enum class State { NotTried, Changed, NotKept, Refused, Unknown };

  int number = 0;
  int from = 0;
  int to = 0;
  State state = State::NotTried;
  int held = 0;          ///< where it is NotKept: what the servo holds instead
  QString refusal = {};  ///< where it is Refused: the error that the bridge reported

  /// "kp: 440 -> 500"
  QString text() const;
  /// "kp: not changed, it is 440 (the servo refused 500: value out of range (error 3))"
  QString outcome() const;
};

/// What is to be changed, in the order in which the least can go wrong: limits that become wider come before
/// those that become narrower, then check periods, gains, calibration angle, torque policy, LED policy and
/// servo ID; the reply policy comes last, as the servo may stop answering with it. Pure.
std::vector<Change> inSafeOrder(std::vector<Change> changes);

/// The registers whose present values dangersOf() needs.
std::set<int> neededToJudge(const Settings &wanted);
/// What may hurt when these settings are written, a sentence each. `present` has what is known of the other
/// registers; what is not known is not judged. Pure.
QStringList dangersOf(const Settings &wanted, const Settings &present);

/// Writes one after the other, reads each back and notes what has become of it; values that are refused or
/// not kept do not stop it. Lets the Failure pass that ends it before all is done; the change it was at is
/// Unknown then.
void carryOut(Servo &servo, std::vector<Change> &changes, const std::function<void(int done)> &progress);

/// Runs what makes these changes and prints them, so that a Failure that ends it also says of each change
/// what has become of it.
void reportingEach(const std::vector<Change> &changes, const std::function<void()> &act);
/// Throws a Failure when not all of the changes were made.
void expectAllChanged(const std::vector<Change> &changes);

}  // namespace tavril::cli
