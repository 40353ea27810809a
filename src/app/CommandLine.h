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

  /// The first option that needs a window of this run, such as "--port"; empty if there is none.
  QString forOwnWindow() const;

  /// Whether the window connects by itself, when so many ports are listed.
  bool knowsItsPort(std::size_t listedPorts) const;

  static CommandLine parse(const QStringList &arguments, const QString &version);
};

}  // namespace tavril
