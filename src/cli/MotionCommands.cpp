#include "cli/MotionCommands.h"

#include "cli/Console.h"
#include "cli/Failure.h"
#include "cli/Files.h"
#include "cli/RegisterFacts.h"
#include "cli/Servo.h"
#include "cli/Session.h"
#include "platform/JsonText.h"
#include "wire/Range.h"

#include <QRegularExpression>
#include <QRegularExpressionMatch>

#include <chrono>
#include <cmath>
#include <cstdlib>

namespace tavril::cli {

namespace {

constexpr Line::Time pollInterval{50};
constexpr Line::Time longestMove = std::chrono::seconds(30);
/// Counts, 1.5 degrees: a servo under load does not come nearer than its gains make it.
constexpr int nearEnough = 5;

}  // namespace

bool RestWatch::saw(int position, Line::Time at) {
  if (!position_ || std::abs(position - *position_) > 1) {
    position_ = position;
    since_ = at;
  }
  return at - since_ >= restTime;
}

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
                                  .arg(jsonText(session.line.name()), QString::number(position),
                                       QString::number(position / wire::positionsPerDegree, 'f', 1))
                            : QString::number(position) + u'\n');
}

/// The wait was long enough.
struct StillMoving : Failure {};

/// Where it came to rest.
int restOf(Session &session, int position, std::optional<int> &seen) {
  RestWatch watch;
  const Line::Time begun = session.line.now();
  while (true) {
    const int reached = session.servo.position();
    seen = reached;
    const Line::Time now = session.line.now();
    if (session.console.isTerminal() && now - begun > std::chrono::seconds(1)) {
      session.console.transient(QStringLiteral("at %1, going to %2").arg(reached).arg(position));
    }
    if (watch.saw(reached, now)) return reached;
    if (now - begun > longestMove) {
      throw StillMoving{
          ExitCode::Failed,
          QStringLiteral("the servo was still moving after %1 s; it is at %2. \"tavrilctl monitor\" "
                         "shows what it does, \"tavrilctl stop\" stops it.")
              .arg(longestMove.count() / 1000)
              .arg(reached)};
    }
    session.line.pause(pollInterval);
  }
}

}  // namespace

void printPosition(Session &session, bool json) {
  print(session, session.servo.position(), json);
}

void moveTo(Session &session, int position, bool wait, bool json) {
  session.servo.move(position);
  if (!wait) return;
  std::optional<int> seen;
  int reached = 0;
  try {
    reached = restOf(session, position, seen);
  } catch (const StillMoving &) {
    throw;
  } catch (const Failure &failure) {
    const QString last = seen ? QStringLiteral(" It was at %1.").arg(*seen) : QString();
    const QString text = failure.code == ExitCode::Interrupted
                             ? QStringLiteral("interrupted; the servo goes on to %1.%2")
                             : QStringLiteral("The servo may still be moving to %1.%2");
    const QString cause = failure.code == ExitCode::Interrupted ? QString() : failure.text + u'\n';
    throw Failure{failure.code, cause + text.arg(QString::number(position), last) +
                                    QStringLiteral(" \"tavrilctl stop\" stops it.")};
  }
  print(session, reached, json);
  if (std::abs(reached - position) <= nearEnough) return;
  throw Failure{ExitCode::Failed,
                QStringLiteral("the servo came to rest at %1 and not at %2. \"tavrilctl read "
                               "status_error status_detail\" may say why.")
                    .arg(reached)
                    .arg(position)};
}

void stopMoving(Session &session, bool json) {
  const int position = session.servo.position();
  session.servo.move(position);
  print(session, position, json);
  session.console.note(QStringLiteral(
      "The goal is now the position just read. A moving servo overruns it a little and returns."));
}

}  // namespace tavril::cli
