#pragma once

#include "cli/Options.h"
#include "servo/Problem.h"

#include <QString>

#include <functional>

namespace tavril {
class StringTable;
}

namespace tavril::servo {
class Line;
class Servo;
}  // namespace tavril::servo

namespace tavril::cli {

class Console;

/// What a command works with once the port is open. Owns nothing but its name.
struct Session {
  servo::Servo &servo;
  servo::Line &line;
  QString portName;
  Console &console;
  const StringTable &strings;
  /// Whether commands may go on after one that the user has interrupted, as in the shell; forgets the
  /// interruption. Empty: they may not.
  std::function<bool()> resume = nullptr;

  /// What came of asking the servo; throws a Failure where that is a problem.
  template <typename Value>
  Value expect(const servo::Outcome<Value> &outcome) const {
    if (!outcome) fail(outcome.problem());
    return *outcome;
  }
  [[noreturn]] void fail(const servo::Problem &problem) const;
};

/// Waits for the bridge, and shows how long it has waited.
void waitForBridge(Session &session, Options::Time bootWait);

}  // namespace tavril::cli
