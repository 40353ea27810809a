#pragma once

#include <QString>
#include <QStringList>

namespace tavril::cli {

struct CommandBook;

/// Scripts that complete commands, options, registers, ports and files in the shell of that name.
QString bashCompletion(const CommandBook &book);
QString zshCompletion(const CommandBook &book);
QString fishCompletion(const CommandBook &book);

/// What may stand where the user is typing in our own shell.
struct Candidates {
  QStringList words;
  bool files = false;   ///< the names of files instead
  bool isOpen = false;  ///< something else follows directly behind the word
};
/// For the words before, and the beginning of the one that is being typed.
Candidates candidatesFor(const CommandBook &book, const QStringList &before, const QString &beginning);

}  // namespace tavril::cli
