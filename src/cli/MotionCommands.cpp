#include "cli/MotionCommands.h"

#include "cli/Console.h"
#include "cli/Failure.h"
#include "cli/Files.h"
#include "cli/ProblemWords.h"
#include "cli/RegisterFacts.h"
#include "cli/Session.h"
#include "platform/JsonText.h"
#include "servo/Servo.h"
#include "wire/Range.h"

#include <QRegularExpression>
#include <QRegularExpressionMatch>

#include <chrono>
#include <cmath>
#include <cstdlib>
#include <optional>

namespace tavril::cli {

namespace {

/// Counts, 1.5 degrees: a servo under load does not come nearer than its gains make it.
constexpr int nearEnough = 5;

}  // namespace

int positionFrom(const QString &text) {
  bool isNumber = false;
  double position = text.toInt(&isNumber);
  if (!isNumber) {
    static const QRegularExpression degrees(QStringLiteral("^(-?[0-9]+(?:\\.[0-9]+)?)(?:deg|°)$"));
    const QRegularExpressionMatch match = degrees.match(text);
    if (!match.hasMatch()) {
      throw Failure{
          ExitCode::Usage,
          QStringLiteral("\"%1\" is not a position: write a number from %2, or degrees such as 90deg.")
              .arg(shown(text), textOf(wire::positionRange))};
    }
    position = std::round(match.captured(1).toDouble() * wire::positionsPerDegree);
  }
  if (position < wire::positionRange.minimum || position > wire::positionRange.maximum) {
    throw Failure{ExitCode::BadValue, QStringLiteral("position %1 is out of range (%2, or 0deg to %3deg).")
                                          .arg(shown(text), textOf(wire::positionRange))
                                          .arg(wire::wholeDegrees.maximum)};
  }
  return static_cast<int>(position);
}

namespace {

void print(Session &session, int position, bool json) {
  session.console.data(json ? QStringLiteral("{\"port\": %1, \"position\": %2, \"degrees\": %3}\n")
                                  .arg(jsonText(session.portName), QString::number(position),
                                       QString::number(position / wire::positionsPerDegree, 'f', 1))
                            : QString::number(position) + u'\n');
}

/// What to say where it is not known whether the servo has come to rest.
Failure stillMoving(const Session &session, const servo::Problem &problem, int position,
                    std::optional<int> seen) {
  Failure failure = failureFrom(problem, session.portName);
  if (problem.kind == servo::Problem::Kind::StillMoving) return failure;
  const bool isInterrupted = problem.kind == servo::Problem::Kind::Cancelled;
  const QString last = seen ? QStringLiteral(" It was at %1.").arg(*seen) : QString();
  const QString goesOn = isInterrupted ? QStringLiteral("interrupted; the servo goes on to %1.%2")
                                       : QStringLiteral("\nThe servo may still be moving to %1.%2");
  failure.text = (isInterrupted ? QString() : failure.text) + goesOn.arg(QString::number(position), last) +
                 QStringLiteral(" \"tavrilctl stop\" stops it.");
  return failure;
}

}  // namespace

void printPosition(Session &session, bool json) {
  print(session, session.expect(session.servo.position()), json);
}

void moveTo(Session &session, int position, bool wait, bool json) {
  session.expect(session.servo.move(position));
  if (!wait) return;
  std::optional<int> seen;
  const servo::Outcome<int> reached = session.servo.waitForRest([&](int at, servo::Time waited) {
    seen = at;
    if (session.console.isTerminal() && waited > std::chrono::seconds(1))
      session.console.transient(QStringLiteral("at %1, going to %2").arg(at).arg(position));
  });
  if (!reached) throw stillMoving(session, reached.problem(), position, seen);
  print(session, *reached, json);
  if (std::abs(*reached - position) <= nearEnough) return;
  throw Failure{ExitCode::Failed,
                QStringLiteral("the servo came to rest at %1 and not at %2. \"tavrilctl read "
                               "status_error status_detail\" may say why.")
                    .arg(*reached)
                    .arg(position)};
}

void stopMoving(Session &session, bool json) {
  const int position = session.expect(session.servo.position());
  session.expect(session.servo.move(position));
  print(session, position, json);
  session.console.note(QStringLiteral(
      "The goal is now the position just read. A moving servo overruns it a little and returns."));
}

}  // namespace tavril::cli
