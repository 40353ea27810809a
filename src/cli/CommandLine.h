#pragma once

#include "cli/CommandBook.h"
#include "cli/Options.h"

#include <QString>
#include <QStringList>

#include <chrono>
#include <optional>
#include <span>

namespace tavril::cli {

/// What came of reading the command line: options, or a text to print instead of doing anything.
struct CommandLine {
  struct Answer {
    QString text;
    int status = 0;  ///< what to exit with; the text is for the standard error output unless it is 0
  };

  Options options;
  std::optional<Answer> answer;
  /// The common options that were given, as "--port".
  QStringList common;

  /// `arguments` without the program's name. `defaults`: the values with which the virtual servo starts, for
  /// the list of registers.
  static CommandLine parse(const QStringList &arguments, const QString &version,
                           std::span<const int> defaults = {});
  static CommandBook book(const QString &version);
};

/// A time such as "250", "250ms" or "2.5s"; a number alone is in `unit`. Nothing for any other text.
std::optional<std::chrono::milliseconds> durationOf(const QString &text, std::chrono::milliseconds unit);

}  // namespace tavril::cli
