#pragma once

#include <QString>
#include <QStringList>

#include <chrono>
#include <optional>

namespace tavril::cli {

enum class Verb {
  Ports,
  Doctor,
  Detect,
  Read,
  Write,
  Dump,
  Restore,
  Diff,
  Position,
  Move,
  Release,
  Reboot,
  Reset,
  Monitor,
  Send,
};

/// What the command line asked for.
struct Options {
  using Time = std::chrono::milliseconds;

  Verb verb = Verb::Ports;
  QStringList operands;  ///< registers, assignments, files, a position, bytes: as they were typed

  QString port;  ///< name or path; empty: the only one
  bool demo = false;
  bool verbose = false;
  Time timeout{300};
  int retries = 2;
  Time bootWait{5000};

  bool json = false;
  bool dryRun = false;
  bool force = false;
  bool wait = false;
  bool yes = false;
  Time interval{1000};
  QString csv;               ///< empty: none
  std::optional<int> count;  ///< nothing: without end
};

}  // namespace tavril::cli
