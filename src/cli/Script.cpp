#include "cli/Script.h"

#include "cli/CommandLine.h"
#include "cli/Console.h"
#include "cli/Failure.h"
#include "cli/Files.h"
#include "cli/Plan.h"
#include "cli/Session.h"
#include "servo/Servo.h"

#include <QByteArray>
#include <QChar>

#include <cstdio>
#include <functional>
#include <utility>

namespace tavril::cli {

namespace {

constexpr qint64 largestScript = 1 << 20;

[[noreturn]] void refuse(const QString &text) {
  throw Failure{ExitCode::Usage, text};
}

/// Puts the place in front of the text of a Failure.
void placed(const QString &place, const std::function<void()> &act) {
  try {
    act();
  } catch (const Failure &failure) {
    if (failure.text.isEmpty()) throw;
    throw Failure{failure.code, place + failure.text};
  }
}

/// Some editors put a byte order mark in front of the first line.
QString firstLine(const QByteArray &line) {
  return textOf(line.startsWith(byteOrderMark) ? line.sliced(byteOrderMark.size()) : line);
}

class FileLines final : public CommandSource {
 public:
  explicit FileLines(const QString &path) : path_(path) {
    for (const QByteArray &line : readFile(path, largestScript).split('\n')) {
      lines_.append(lines_.isEmpty() ? firstLine(line) : textOf(line));
    }
    while (const auto line = next()) {
      placed(place(), [&] {
        if (const QStringList words = wordsOf(*line); !words.isEmpty()) commandIn(words);
      });
    }
    at_ = 0;
  }

  std::optional<QString> next() override {
    if (at_ == lines_.size()) return std::nullopt;
    return lines_[at_++];
  }
  QString place() const override { return QStringLiteral("%1:%2: ").arg(shown(path_)).arg(at_); }

 private:
  const QString path_;
  QStringList lines_;
  qsizetype at_ = 0;
};

/// Line by line, as they come: another program may want to see what a command gave before it writes the next.
class InputLines final : public CommandSource {
 public:
  std::optional<QString> next() override {
    QByteArray line;
    for (int c = std::getchar(); c != EOF && c != '\n'; c = std::getchar()) {
      line += static_cast<char>(c);
      if (line.size() > largestScript) refuse(QStringLiteral("a line of the standard input is too long."));
    }
    if (std::ferror(stdin) != 0) {
      throw Failure{ExitCode::Failed, QStringLiteral("the standard input could not be read.")};
    }
    if (line.isEmpty() && std::feof(stdin) != 0) return std::nullopt;
    ++number_;
    return number_ == 1 ? firstLine(line) : textOf(line);
  }
  QString place() const override { return QStringLiteral("line %1: ").arg(number_); }

 private:
  int number_ = 0;
};

QString helpLine(const QString &name, const QString &description) {
  return QStringLiteral("  %1 %2\n").arg(name, -9).arg(description);
}

/// What a line such as "read --help" asks for.
std::optional<QString> helpIn(const QStringList &words) {
  if (!words.contains(QStringLiteral("--help")) && !words.contains(QStringLiteral("-h"))) return std::nullopt;
  const CommandLine line = CommandLine::parse(words, {});
  if (!line.answer || line.answer->status != 0) return std::nullopt;
  return line.answer->text;
}

void carryOutLine(Session &session, const QString &line) {
  const QStringList words = wordsOf(line);
  if (words.isEmpty()) return;
  const Options options = commandIn(words);
  const Plan plan = planFor(options, session.console);
  if (plan.work) plan.work(session);
}

}  // namespace

QStringList wordsOf(const QString &line) {
  QStringList words;
  QString word;
  bool isInWord = false;
  QChar quote;
  for (qsizetype at = 0; at < line.size(); ++at) {
    const QChar c = line[at];
    if (!quote.isNull()) {
      if (c == quote) {
        quote = QChar();
      } else if (c == u'\\' && quote == u'"' && at + 1 < line.size()) {
        word += line[++at];
      } else {
        word += c;
      }
    } else if (c == u' ' || c == u'\t' || c == u'\r') {
      if (std::exchange(isInWord, false)) words.append(std::exchange(word, {}));
    } else if (c == u'#' && !isInWord) {
      break;
    } else {
      isInWord = true;
      if (c == u'\'' || c == u'"') {
        quote = c;
      } else if (c == u'\\' && at + 1 < line.size()) {
        word += line[++at];
      } else {
        word += c;
      }
    }
  }
  if (!quote.isNull()) refuse(QStringLiteral("a quotation mark is not closed."));
  if (isInWord) words.append(word);
  return words;
}

Options commandIn(const QStringList &words) {
  CommandLine line = CommandLine::parse(words, {});
  if (line.answer && line.answer->status != 0) refuse(line.answer->text);
  if (line.answer) refuse(QStringLiteral("help is not a command of a session: ask \"tavrilctl --help\"."));
  if (!line.common.isEmpty()) {
    refuse(
        QStringLiteral("%1 applies to the whole session: give it to tavrilctl itself.").arg(line.common[0]));
  }
  if (!isForSessions(line.options.verb)) {
    refuse(QStringLiteral("%1 cannot be used within a session.").arg(shown(words.front())));
  }
  const bool reads = line.options.verb == Verb::Restore || line.options.verb == Verb::Diff;
  if (reads && line.options.operands.contains(QStringLiteral("-"))) {
    refuse(QStringLiteral("%1 cannot read the standard input within a session: name a file.")
               .arg(words.front()));
  }
  return line.options;
}

std::unique_ptr<CommandSource> commandsIn(const QString &path) {
  if (path == u"-") return std::make_unique<InputLines>();
  return std::make_unique<FileLines>(path);
}

void runCommands(Session &session, CommandSource &source, bool keepGoing) {
  std::optional<Failure> last;
  while (const auto line = source.next()) {
    session.servo.forgetDetection();  // the line may have come long after the port was opened
    try {
      placed(source.place(), [&] { carryOutLine(session, *line); });
    } catch (const Failure &failure) {
      const bool mayGoOn = failure.code != ExitCode::Interrupted && failure.code != ExitCode::NoPort &&
                           failure.code != ExitCode::ClosedPipe;
      if (!keepGoing || !mayGoOn) throw;
      session.console.status(QStringLiteral("tavrilctl: ") + failure.text);
      last = Failure{failure.code, QStringLiteral("not all commands succeeded.")};
    }
  }
  if (last) throw Failure{*last};
}

void runShell(Session &session, CommandSource &source) {
  while (const auto line = source.next()) {
    session.servo.forgetDetection();
    if (session.resume) session.resume();
    const QString typed = line->trimmed();
    if (typed == u"exit" || typed == u"quit") return;
    if (typed == u"help") {
      for (const CommandEntry &command : CommandLine::book({}).commands) {
        if (isForSessions(command.which)) session.console.data(helpLine(command.name, command.description));
      }
      session.console.data(helpLine(QStringLiteral("exit"), QStringLiteral("Leave the shell.")));
      continue;
    }
    try {
      if (const auto help = helpIn(wordsOf(*line))) {
        session.console.data(*help);
        continue;
      }
      carryOutLine(session, *line);
    } catch (const Failure &failure) {
      if (failure.code == ExitCode::NoPort || failure.code == ExitCode::ClosedPipe) throw;
      if (failure.code == ExitCode::Interrupted && !(session.resume && session.resume())) throw;
      session.console.status(failure.text);
    }
  }
}

}  // namespace tavril::cli
