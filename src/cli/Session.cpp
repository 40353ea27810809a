#include "cli/Session.h"

#include "cli/Console.h"
#include "cli/ProblemWords.h"
#include "cli/Progress.h"
#include "servo/Servo.h"

#include <chrono>

namespace tavril::cli {

namespace {

template <typename Time>
auto secondsOf(Time time) {
  return std::chrono::duration_cast<std::chrono::seconds>(time).count();
}

}  // namespace

void Session::fail(const servo::Problem &problem) const {
  throw failureFrom(problem, portName);
}

void waitForBridge(Session &session, Options::Time bootWait) {
  const bool isShown = session.console.isTerminal();
  session.expect(session.servo.waitForBridge(bootWait, [&](servo::Time waited) {
    if (!isShown || bootWait <= Progress::shownAfter) return;
    session.console.transient(QStringLiteral("waiting for the bridge: %1 of at most %2 s")
                                  .arg(secondsOf(waited))
                                  .arg(secondsOf(bootWait)));
  }));
  if (isShown) session.console.transient(QString());
}

}  // namespace tavril::cli
