#pragma once

#include "cli/Script.h"

#include <QString>

#include <cstdint>
#include <optional>
#include <string>

namespace tavril::cli {

struct CommandBook;

/// Commands that a user types at a terminal, with history and completion. next() is for one thread, the rest
/// for any. There can be one at a time, because the library behind it has one line.
class ReadlineCommands final : public CommandSource {
 public:
  /// The history is kept in this file; empty: in none.
  ReadlineCommands(const CommandBook &book, const QString &historyFile);
  ~ReadlineCommands() override;
  ReadlineCommands(const ReadlineCommands &) = delete;
  ReadlineCommands &operator=(const ReadlineCommands &) = delete;

  std::optional<QString> next() override;
  QString place() const override { return {}; }

  /// Drops what is being typed, as Ctrl-C does.
  void dropLine();
  /// Ends the commands.
  void end();

 private:
  void wake(std::uint64_t how) const;

  const std::string historyFile_;
  int wake_ = -1;
};

}  // namespace tavril::cli
