#pragma once

#include "cli/Options.h"

namespace tavril {
class StringTable;
}

namespace tavril::cli {

class Console;
class Line;
class Servo;

/// What a command works with once the port is open. Owns nothing.
struct Session {
  Servo &servo;
  Line &line;
  Console &console;
  const StringTable &strings;
};

/// Gives the bridge the time that it needs after its port was opened, with a bar where that is long.
void waitForBridge(Session &session, Options::Time bootWait);

}  // namespace tavril::cli
