#pragma once

#include "posix/Descriptor.h"

#include <QSocketNotifier>

#include <array>
#include <functional>
#include <memory>

#include <signal.h>

namespace tavril {

/// The signals that ask a program to end: SIGINT, SIGTERM and SIGHUP. They reach the main thread through its
/// event loop, so that the program can put its port back before it ends. At most one object lives at a time.
class EndingSignals {
 public:
  static constexpr std::array numbers{SIGINT, SIGTERM, SIGHUP};

  /// Signals that come from now on wait for whoever listens. If the system has no pipe to give, they end the
  /// program as they always do.
  EndingSignals();
  /// From now on they end the program again.
  ~EndingSignals();
  EndingSignals(const EndingSignals &) = delete;
  EndingSignals &operator=(const EndingSignals &) = delete;

  /// Calls `act` with each signal as long as the result lives. Needs the application object.
  [[nodiscard]] std::unique_ptr<QSocketNotifier> listen(std::function<void(int signal)> act) const;

  /// What to exit with, as shells have it.
  static constexpr int exitStatus(int signal) { return 128 + signal; }

 private:
  posix::Descriptor reading_;
  posix::Descriptor writing_;
  std::array<struct sigaction, numbers.size()> before_{};
};

}  // namespace tavril
