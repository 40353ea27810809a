#include "cli/Progress.h"

#include "cli/Console.h"

#include <algorithm>
#include <utility>

namespace tavril::cli {

namespace {

constexpr int barWidth = 20;

}  // namespace

QString progressBar(int done, int total, const QString &what) {
  const int share = total > 0 ? std::clamp(done * barWidth / total, 0, barWidth) : 0;
  return u'[' + QString(share, u'#') + QString(barWidth - share, u'-') +
         QStringLiteral("] %1/%2 ").arg(done).arg(total) + what;
}

Progress::Progress(Console &console, const servo::Line &line, QString what, int total)
    : console_(console), line_(line), what_(std::move(what)), total_(total), begun_(line.now()) {}

Progress::~Progress() {
  if (console_.isTerminal()) console_.transient(QString());
}

void Progress::done(int count) {
  if (!console_.isTerminal()) return;
  const servo::Time spent = line_.now() - begun_;
  // Also when it is plain already that it will take that long.
  const bool isSlow = spent > shownAfter || (count > 0 && spent * total_ / count > shownAfter);
  if (isSlow) console_.transient(progressBar(count, total_, what_));
}

}  // namespace tavril::cli
