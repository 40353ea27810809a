#pragma once

#include "platform/linux/AtExit.h"
#include "platform/linux/ThreadBackground.h"
#include "serial/PortRegistry.h"
#include "serial/SerialEnvironment.h"

#include <optional>

namespace tavril {

class DeviceRegistry;
class Log;
class MainQueue;
class NotificationCenter;
class TerminalCalls;

/// What the ports of a program use, and the order in which ports, threads and the rest end. A process has one
/// at a time.
class SerialObjects {
  PortRegistry::PortList &list_;
  PortRegistry ports_;
  std::optional<AtExit> processExit_{std::in_place};

 public:
  /// `list`: where the program lists its ports. It must outlive this object, as all the rest must.
  SerialObjects(MainQueue &mainQueue, TerminalCalls &terminal, DeviceRegistry &devices,
                NotificationCenter &notifications, Log &log, PortRegistry::PortList &list);
  /// closePorts(), letPortsGo(), then waits for the threads.
  ~SerialObjects();
  SerialObjects(const SerialObjects &) = delete;
  SerialObjects &operator=(const SerialObjects &) = delete;

  /// Runs the handlers for the end of the process, which close the ports, while everything is still there.
  void closePorts();
  /// Lets the threads go that wait for the main thread, and drops the ports that a queued job or the list
  /// holds.
  void letPortsGo();

  /// It names the background, which comes after it: the environment must outlast the threads that use it.
  SerialEnvironment environment;
  ThreadBackground background;
};

}  // namespace tavril
