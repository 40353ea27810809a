#include "cli/MotionCommands.h"

#include "cli/Console.h"
#include "cli/Failure.h"
#include "cli/RegisterFacts.h"
#include "cli/Servo.h"
#include "cli/Session.h"

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
  const int position = text.toInt(&isNumber);
  if (!isNumber) {
    throw Failure{
        ExitCode::Usage,
        QStringLiteral("\"%1\" is no position: write a number from %2.").arg(text, positionRange.text())};
  }
  if (!positionRange.contains(position)) {
    throw Failure{
        ExitCode::BadValue,
        QStringLiteral("position %1 is out of range (%2).").arg(position).arg(positionRange.text())};
  }
  return position;
}

void printPosition(Session &session) {
  session.console.data(QString::number(session.servo.position()) + u'\n');
}

void moveTo(Session &session, int position, bool wait) {
  session.servo.move(position);
  if (!wait) return;
  RestWatch watch;
  const Line::Time begun = session.line.now();
  while (true) {
    const int reached = session.servo.position();
    const Line::Time now = session.line.now();
    if (session.console.isTerminal() && now - begun > std::chrono::seconds(1)) {
      session.console.transient(QStringLiteral("at %1, going to %2").arg(reached).arg(position));
    }
    if (watch.saw(reached, now)) {
      session.console.data(QString::number(reached) + u'\n');
      if (std::abs(reached - position) <= nearEnough) return;
      throw Failure{ExitCode::Failed,
                    QStringLiteral("the servo came to rest at %1 and not at %2: see with \"read "
                                   "status_error status_detail\" what keeps it.")
                        .arg(reached)
                        .arg(position)};
    }
    if (now - begun > longestMove) {
      throw Failure{
          ExitCode::Failed,
          QStringLiteral(
              "the servo has not come to rest within %1 s; it is at %2: see with \"monitor\" what it does.")
              .arg(longestMove.count() / 1000)
              .arg(reached)};
    }
    session.line.pause(pollInterval);
  }
}

}  // namespace tavril::cli
