#pragma once

#include <QString>

namespace tavril::cli {

/// Where the program's words go. To be used by one thread at a time.
class Console {
 public:
  virtual ~Console() = default;

  /// Data, for the standard output. Throws a Failure when it cannot be written.
  virtual void data(const QString &text) = 0;
  /// A line for the user, without its end, for the standard error output. Cannot fail: there is nobody to
  /// tell.
  virtual void status(const QString &line) = 0;
  /// The same for a line that a user who wants to hear of problems only can do without.
  virtual void note(const QString &line) = 0;
  /// Puts a line in the place of the one shown before, or with an empty one takes it away. Only for a
  /// terminal.
  virtual void transient(const QString &line) = 0;
  /// Whether a user looks on at a terminal.
  virtual bool isTerminal() const = 0;
};

}  // namespace tavril::cli
