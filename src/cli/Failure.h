#pragma once

#include <QString>

namespace tavril::cli {

/// What the program exits with. A signal that ends it gives 128 and the number of the signal.
enum class ExitCode : int {
  Done = 0,
  Different = 1,  ///< the answer is no
  Usage = 2,
  NoPort = 3,   ///< none there, several to choose from, not to be opened, or gone
  NoServo = 4,  ///< none, or several
  BadValue = 5,
  Failed = 6,  ///< in any other way
  Interrupted = 130,
  ClosedPipe = 141,  ///< the reader of the output has gone
};

/// Thrown within this room when a command cannot go on; nothing of it leaves the room. The text says what was
/// wrong and what to do; an empty one is not shown.
struct Failure {
  ExitCode code = ExitCode::Failed;
  QString text;
};

/// "1 byte", "2 bytes".
inline QString counted(qsizetype count, const char *one, const char *several) {
  return QStringLiteral("%1 %2").arg(count).arg(QString::fromLatin1(count == 1 ? one : several));
}

}  // namespace tavril::cli
