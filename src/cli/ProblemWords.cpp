#include "cli/ProblemWords.h"

#include "cli/FrameWords.h"

#include <chrono>

namespace tavril::cli {

using servo::BridgeError;
using servo::Problem;

namespace {

QString noAnswerInWords(const Problem &problem, const QString &portName) {
  const QString asked =
      QStringLiteral("to \"%1\" within %2 ms, sent %3")
          .arg(commandInWords(problem.command))
          .arg(std::chrono::duration_cast<std::chrono::milliseconds>(problem.timeout).count())
          .arg(problem.tries == 1 ? QStringLiteral("once") : QStringLiteral("%1 times").arg(problem.tries));
  if (problem.strayBytes == 0) {
    return QStringLiteral(
               "no answer from %1 %2. Check that it is the servo's adapter, that the bridge "
               "has power and that the cables are plugged in. If the bridge is slow, "
               "increase --timeout, --retries or --boot-wait. \"tavrilctl doctor\" looks "
               "for the cause.")
        .arg(portName, asked);
  }
  return QStringLiteral(
             "no answer from %1 %2. %3 came, none a valid reply. --verbose shows what came, and "
             "\"tavrilctl doctor\" looks for the cause.")
      .arg(portName, asked, counted(static_cast<qsizetype>(problem.strayBytes), "byte", "bytes"));
}

}  // namespace

ExitCode exitCodeOf(int error) {
  switch (error) {
    case BridgeError::LostServo:
      return ExitCode::NoServo;
    case BridgeError::OutOfRange:
      return ExitCode::BadValue;
    default:
      return ExitCode::Failed;
  }
}

Failure failureFrom(const Problem &problem, const QString &portName) {
  switch (problem.kind) {
    case Problem::Kind::NoAnswer:
      return {ExitCode::Failed, noAnswerInWords(problem, portName)};
    case Problem::Kind::Unsteady:
      return {ExitCode::Failed,
              QStringLiteral("%1 answered \"%2\" differently each of %3 times. The line is too noisy: check "
                             "the cable and its plugs.")
                  .arg(portName, commandInWords(problem.command))
                  .arg(problem.tries)};
    case Problem::Kind::TooManyUnanswered:
      return {
          ExitCode::Failed,
          QStringLiteral("%1 left so many commands without an answer that late replies cannot be told from "
                         "new ones. Check the cable and its plugs, or increase --timeout.")
              .arg(portName)};
    case Problem::Kind::ErrorReport: {
      const QString advice = problem.error == BridgeError::LostServo
                                 ? QStringLiteral(" Check the servo's cable and power, then retry.")
                                 : QString();
      return {exitCodeOf(problem.error),
              QStringLiteral("the bridge on %1 answered \"%2\" with: %3.%4")
                  .arg(portName, commandInWords(problem.command), errorInWords(problem.error), advice)};
    }
    case Problem::Kind::NotOneServo: {
      const QString text = problem.count == servo::Count::None
                               ? QStringLiteral(
                                     "no servo answered behind the bridge on %1: check the servo's cable "
                                     "and power, then retry.")
                               : QStringLiteral(
                                     "more than one servo answered on %1: connect just one servo to the "
                                     "bridge and retry.");
      return {ExitCode::NoServo, text.arg(portName)};
    }
    case Problem::Kind::StillMoving:
      return {ExitCode::Failed,
              QStringLiteral("the servo was still moving after %1 s; it is at %2. \"tavrilctl monitor\" "
                             "shows what it does, \"tavrilctl stop\" stops it.")
                  .arg(std::chrono::duration_cast<std::chrono::seconds>(problem.timeout).count())
                  .arg(problem.position)};
    case Problem::Kind::Cancelled:
      return {ExitCode::Interrupted, QStringLiteral("interrupted.")};
    case Problem::Kind::Gone:
      return {ExitCode::NoPort,
              QStringLiteral("the port %1 was removed while it was in use. Check the cable, plug the "
                             "adapter in again and retry.")
                  .arg(portName)};
    case Problem::Kind::NotTaken:
      break;
  }
  return {ExitCode::Failed,
          QStringLiteral("%1 does not send: unplug the adapter, plug it in again and retry.").arg(portName)};
}

}  // namespace tavril::cli
