#include "cli/StreamConsole.h"

#include "cli/Failure.h"
#include "cli/Files.h"
#include "platform/Error.h"

#include <QByteArray>
#include <QStringList>

#include <cerrno>

namespace tavril::cli {

void StreamConsole::data(const QString &text) {
  transient(QString());
  const QByteArray bytes = text.toUtf8();
  const auto size = static_cast<std::size_t>(bytes.size());
  if (std::fwrite(bytes.constData(), 1, size, out_) == size && std::fflush(out_) == 0) return;
  // Who has read enough, as "head" does, wants to hear nothing of it.
  if (errno == EPIPE) throw Failure{ExitCode::ClosedPipe, {}};
  throw Failure{ExitCode::Failed,
                QStringLiteral("the output could not be written: %1.").arg(systemErrorText(errno))};
}

void StreamConsole::status(const QString &line) {
  transient(QString());
  // Whatever a message quotes, it must not steer the terminal.
  for (const QString &part : line.split(u'\n')) std::fputs((shown(part) + u'\n').toUtf8().constData(), err_);
  std::fflush(err_);
}

void StreamConsole::note(const QString &line) {
  if (!isQuiet_) status(line);
}

void StreamConsole::transient(const QString &line) {
  if (!isTerminal() || (line.isEmpty() && !transientShown_)) return;
  // Back to the line's beginning, the text, and nothing of what stood there before.
  std::fputs((u'\r' + line + QStringLiteral("\033[K")).toUtf8().constData(), err_);
  std::fflush(err_);
  transientShown_ = !line.isEmpty();
}

}  // namespace tavril::cli
