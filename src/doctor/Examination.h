#pragma once

#include "doctor/Heard.h"
#include "doctor/PortChecks.h"
#include "doctor/PortProbe.h"
#include "doctor/Result.h"

#include <QString>

#include <chrono>
#include <functional>
#include <optional>
#include <vector>

namespace tavril {
class DeviceNodes;
class Processes;
class TerminalCalls;
class UsbBus;
}  // namespace tavril

namespace tavril::doctor {

struct ExaminedPort;

/// What the doctor uses to look at the machine.
struct Services {
  const UsbBus &bus;
  const DeviceNodes &nodes;
  const Processes &processes;
  TerminalCalls &terminal;
};

/// A link that this program has open itself, and what came over it.
struct OwnLink {
  QString path;
  Heard heard;
};

struct Request {
  QString path;                              ///< the port; empty: the first on the bus
  std::chrono::milliseconds bootWait{5000};  ///< what the bridge needs after its port was opened
  std::chrono::milliseconds timeout{300};    ///< for each reply
  int retries = 2;
  std::optional<OwnLink> link = {};  ///< where it is to this port, the port is left alone
};

/// Told each check before and after it is made, on the thread that makes it.
struct Listener {
  std::function<void(CheckId)> began = nullptr;
  std::function<void(const Result &)> found = nullptr;
};

/// The checks, one after the other. run() blocks for as long as the bridge needs, so it belongs off the main
/// thread; one examination runs once. cancel() may come from any thread, also before it runs.
class Examination {
 public:
  Examination(const Services &services, Request request);

  /// All results, or those up to the cancellation.
  std::vector<Result> run(const Listener &listener = {});
  void cancel() { probe_.cancel(); }
  bool isCancelled() const { return probe_.isCancelled(); }

 private:
  Result examine(CheckId check, const ExaminedPort &port);
  Result examinePort(CheckId check, const ExaminedPort &port);
  Result examineLink(CheckId check) const;
  void ask();
  bool hasFailed(CheckId check) const;
  bool isOwnLink(const ExaminedPort &port) const;

  const Services services_;
  const Request request_;
  PortProbe probe_;
  std::vector<Result> results_;
  Asked asked_ = Asked::Done;
  Heard heard_;
};

/// Whether nothing has failed.
bool isHealthy(const std::vector<Result> &results);

}  // namespace tavril::doctor
