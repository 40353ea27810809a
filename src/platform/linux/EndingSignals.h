#pragma once

#include "posix/Descriptor.h"

#include <QSocketNotifier>

#include <array>
#include <csignal>
#include <functional>
#include <memory>
#include <thread>

namespace tavril {

/// The signals that ask a program to end: SIGINT, SIGTERM and SIGHUP. It is told of them, so that it can put
/// its port back before it ends. A hang-up that is ignored, as nohup wants it, stays ignored. At most one
/// object lives at a time.
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

  /// Calls `act` with each signal as long as the result lives, in the event loop of the main thread. Needs
  /// the application object.
  [[nodiscard]] std::unique_ptr<QSocketNotifier> listen(std::function<void(int signal)> act) const;

  /// The same on a thread of its own, so that a main thread that waits or hangs does not matter. There must
  /// be one listener only.
  [[nodiscard]] std::jthread watch(std::function<void(int signal)> act) const;

  /// What to exit with, as shells have it.
  static constexpr int exitStatus(int signal) { return 128 + signal; }

 private:
  posix::Descriptor reading_;
  posix::Descriptor writing_;
  std::array<struct sigaction, numbers.size()> before_{};
};

}  // namespace tavril
