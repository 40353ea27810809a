#pragma once

#include <QString>

namespace tavril::cli {

/// What the program exits with. A signal that ends it gives 128 and the number of the signal.
enum class ExitCode : int {
  Done = 0,
  Failed = 1,
  Usage = 2,
  NoPort = 3,   ///< none there, several to choose from, not to be opened, or gone
  NoServo = 4,  ///< none, or several
  BadValue = 5,
  Interrupted = 130,
};

/// Thrown within this room when a command cannot go on; nothing of it leaves the room. The text says what was
/// wrong and what to do.
struct Failure {
  ExitCode code = ExitCode::Failed;
  QString text;
};

/// The bridge has not answered, or not in a way that can be trusted; the next try may go better.
struct NoAnswer : Failure {};

}  // namespace tavril::cli
