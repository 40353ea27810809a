#include "cli/Session.h"

#include "cli/Console.h"
#include "cli/Line.h"
#include "cli/Progress.h"
#include "cli/Servo.h"

#include <QString>

#include <algorithm>

namespace tavril::cli {

namespace {

/// What stood in the line is read and gone before the first command goes out.
constexpr Line::Time settleTime{20};
constexpr Line::Time tick{100};

/// Waits until the moment, and shows how long it has waited.
void waitUntil(Session &session, Line::Time moment, Line::Time begun, Line::Time bootWait) {
  const auto seconds = [](Line::Time time) { return static_cast<int>(time.count() / 1000); };
  while (session.line.now() < moment) {
    const Line::Time now = session.line.now();
    if (session.console.isTerminal() && bootWait > Progress::shownAfter) {
      session.console.transient(QStringLiteral("waiting for the bridge: %1 of at most %2 s")
                                    .arg(seconds(now - begun))
                                    .arg(seconds(bootWait)));
    }
    session.line.pause(std::min(tick, moment - now));
  }
}

}  // namespace

void waitForBridge(Session &session, Options::Time bootWait) {
  session.line.pause(settleTime);
  const Line::Time begun = session.line.now();
  const Line::Time end = begun + bootWait;
  Line::Time due = begun;
  while (due < end && !session.servo.tryToDetect(std::min(askInterval, end - due))) {
    due = std::max(begun + bootLoaderTime, due + askInterval);
    due = std::min(end, std::max(due, session.line.now()));
    waitUntil(session, due, begun, bootWait);
  }
  if (session.console.isTerminal()) session.console.transient(QString());
}

}  // namespace tavril::cli
