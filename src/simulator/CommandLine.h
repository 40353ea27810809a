#pragma once

#include "simulator/Options.h"

#include <QString>
#include <QStringList>

namespace tavril::simulator {

/// What the program tavril-servo was asked to do.
struct CommandLine {
  enum class Action { Serve, ShowText, Refuse };

  Action action = Action::Serve;
  /// What to show: the help, the version, or what is wrong with the arguments.
  QString text;
  /// Unlike `Options` itself, the program keeps the pace of the wire by default.
  Options options;
  /// The following are empty if they were not given.
  QString link;
  QString logFile;
  QString from;
  QString state;

  /// `list` begins with the program's name.
  static CommandLine parse(const QStringList &list);
};

}  // namespace tavril::simulator
