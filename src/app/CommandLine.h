#pragma once

#include "app/Report.h"

#include <QString>
#include <QStringList>

#include <cstddef>
#include <optional>

namespace tavril {

/// What the command line asked for.
struct CommandLine {
  bool demo = false;
  bool connect = false;
  bool report = false;
  ReportFormat format = ReportFormat::Table;
  QStringList ports;  ///< terminals that come first in the port list, in this order
  QString language;   ///< for this run; empty: the user's own
  QString snapshot;   ///< file for a picture of the window; empty: none

  /// Text to print instead of doing anything, with the status to exit with: help, version, or what was wrong.
  struct Answer {
    QString text;
    int status = 0;
  };
  std::optional<Answer> answer;

  /// The first option that only a window of this run's own could follow, such as "--port"; empty when none
  /// is given.
  QString forOwnWindow() const;

  /// Whether it is clear to which port the window connects by itself, if so many are listed.
  bool knowsItsPort(std::size_t listedPorts) const;

  static CommandLine parse(const QStringList &arguments, const QString &version);
};

}  // namespace tavril
