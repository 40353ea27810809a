#pragma once

#include "platform/Log.h"
#include "platform/NotificationCenter.h"
#include "platform/ProcessExit.h"
#include "platform/linux/ThreadBackground.h"
#include "serial/PortRegistry.h"
#include "serial/SerialEnvironment.h"
#include "serial/SerialPort.h"
#include "terminal/PosixTerminalCalls.h"
#include "tests/support/FakeDevices.h"
#include "tests/support/FaultyTerminalCalls.h"
#include "tests/support/ManualMainQueue.h"
#include "tests/support/Pty.h"
#include "tests/support/RecordingDelegate.h"
#include "tests/support/RecordingLog.h"

#include <functional>
#include <memory>
#include <utility>
#include <vector>

namespace tavril {

/// Keeps the exit handlers for the test to run.
class RecordingExit final : public ProcessExit {
 public:
  int registerHandler(std::function<void()> handler) override {
    if (error == 0) handlers.push_back(std::move(handler));
    return error;
  }
  /// As at the end of the process: the last one first.
  void runAll() {
    while (!handlers.empty()) {
      const auto handler = std::move(handlers.back());
      handlers.pop_back();
      handler();
    }
  }
  std::vector<std::function<void()>> handlers;
  int error = 0;
};

/// All that a port stands on: real terminal calls that can be made to fail, fake devices, a main queue that
/// the test runs, and background work of the given kind.
template <typename BackgroundKind = ThreadBackground>
struct SerialBench {
  /// `list`: where ports are listed; the bench's own list by default.
  explicit SerialBench(PortRegistry::PortList *list = nullptr)
      : listed(list ? *list : allSerialPortsInfo), ports(listed) {}
  ~SerialBench() {
    // Threads may still wait for the main queue, which nobody is going to run any more; and ports may be held
    // by its jobs, or by the list. They need what they stand on until they are gone.
    mainQueue.shutDown();
    listed.clear();
  }

  RecordingLog log;
  PosixTerminalCalls posix{linesTo(log)};
  FaultyTerminalCalls terminal{posix};
  FakeDevices devices;
  NotificationCenter notifications;
  RecordingExit processExit;
  PortRegistry::PortList allSerialPortsInfo;
  PortRegistry::PortList &listed;
  PortRegistry ports;
  ManualMainQueue mainQueue;
  // Names the background, which comes after it: a port may be held by a thread until that has ended.
  SerialEnvironment environment{mainQueue,     background,  terminal, devices,
                                notifications, processExit, log,      ports};
  BackgroundKind background;

  std::shared_ptr<SerialPort> port(const QString &name, const QString &path) {
    const RegistryHandle device = devices.handleOf(name, path);
    auto made = SerialPort::initWithDevice(environment, device);
    devices.release(device);
    return made;
  }
};

}  // namespace tavril
