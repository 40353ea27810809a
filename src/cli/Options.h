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
  SetId,
  Dump,
  Restore,
  Diff,
  Position,
  Move,
  Stop,
  Release,
  Reboot,
  Reset,
  Monitor,
  Send,
  Run,
  Shell,
};

/// Whether the command makes sense within a session, in which the port is open already.
constexpr bool isForSessions(Verb verb) {
  return verb != Verb::Ports && verb != Verb::Doctor && verb != Verb::Run && verb != Verb::Shell;
}

/// What the command line asked for.
struct Options {
  using Time = std::chrono::milliseconds;

  Verb verb = Verb::Ports;
  QStringList operands;  ///< registers, assignments, files, a position, bytes: as they were typed

  QString port;  ///< name or path; empty: the only one
  bool demo = false;
  bool verbose = false;
  bool quiet = false;
  Time timeout{300};
  int retries = 2;
  Time bootWait{5000};

  bool json = false;
  bool dryRun = false;
  bool force = false;
  bool wait = false;
  bool yes = false;
  bool names = false;
  bool keepGoing = false;
  QStringList except;  ///< keys of settings
  Time interval{1000};
  QString csv;               ///< empty: none; "-": the standard output
  std::optional<int> count;  ///< nothing: without end
};

}  // namespace tavril::cli
