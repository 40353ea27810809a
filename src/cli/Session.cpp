#include "cli/Session.h"

#include "cli/Console.h"
#include "cli/Line.h"
#include "cli/Progress.h"

#include <algorithm>

namespace tavril::cli {

namespace {

/// Also a bridge that needs no time is given this, as by the editor: what stood in the line is read and gone
/// before the first command goes out.
constexpr Line::Time settleTime{50};
constexpr Line::Time tick{100};

}  // namespace

void waitForBridge(Session &session, Options::Time bootWait) {
  const Line::Time wait = std::max(bootWait, settleTime);
  if (!session.console.isTerminal() || wait <= Progress::shownAfter) {
    session.line.pause(wait);
    return;
  }
  const auto seconds = [](Line::Time time) { return static_cast<int>(time.count() / 1000); };
  for (Line::Time spent{0}; spent < wait; spent += tick) {
    session.console.transient(
        progressBar(seconds(spent), seconds(wait), QStringLiteral("s for the bridge to start")));
    session.line.pause(std::min(tick, wait - spent));
  }
  session.console.transient(QString());
}

}  // namespace tavril::cli
