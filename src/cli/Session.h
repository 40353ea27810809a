#pragma once

#include "cli/Options.h"

#include <functional>

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
  /// Whether commands may go on after one that the user has interrupted, as in the shell; forgets the
  /// interruption. Empty: they may not.
  std::function<bool()> resume = nullptr;
};

/// Returns when the bridge answers, or after `bootWait` at the latest. It is asked at once. Where it does not
/// answer, opening the port may have restarted it, and a boot loader may listen: it is left in peace until
/// bootLoaderTime, and then asked every askInterval. With no `bootWait` it is not asked at all.
void waitForBridge(Session &session, Options::Time bootWait);
inline constexpr Options::Time bootLoaderTime{2000};
inline constexpr Options::Time askInterval{500};

}  // namespace tavril::cli
