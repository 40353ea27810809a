#pragma once

#include "cli/Options.h"

#include <QString>
#include <QStringList>

#include <memory>
#include <optional>

namespace tavril::cli {

struct Session;

/// Where commands come from, one per line.
class CommandSource {
 public:
  virtual ~CommandSource() = default;
  /// Nothing at the end.
  virtual std::optional<QString> next() = 0;
  /// How messages name the line that came last, such as "setup.txt:3: "; may be empty.
  virtual QString place() const = 0;
};

/// The words of a line, with quotes and backslashes as in a shell, up to a # that begins a word. Throws a
/// Failure for a quote without its end. Pure.
QStringList wordsOf(const QString &line);

/// The command in these words, checked as far as a command line can be. Throws a Failure, also for what makes
/// no sense within a session, such as another port.
Options commandIn(const QStringList &words);

/// The lines of a file, or those of the standard input. Of a file, the commands, the options and the number
/// of arguments of all lines are checked at once; registers, values and other files when a line is carried
/// out.
std::unique_ptr<CommandSource> commandsIn(const QString &path);

/// Carries the commands out one after the other. Ends with the first Failure, or with `keepGoing` goes on and
/// throws the last one's code at the end. Interrupted, it ends in any case, unless the session can resume.
void runCommands(Session &session, CommandSource &source, bool keepGoing);

/// The same for a user at a terminal: failures are told, and it goes on.
void runShell(Session &session, CommandSource &source);

}  // namespace tavril::cli
