#pragma once

#include "platform/NotificationCenter.h"
#include "platform/linux/PosixTerminalCalls.h"
#include "platform/linux/QtMainQueue.h"
#include "platform/linux/StreamLog.h"
#include "platform/linux/ThreadBackground.h"
#include "serial/PortRegistry.h"
#include "serial/SerialEnvironment.h"
#include "serial/SerialPort.h"
#include "tests/support/FakeDevices.h"
#include "tests/support/RecordingExit.h"

#include <memory>

namespace tavril::bench {

/// What ports stand on in the program, but for the devices, which are named. `terminal`: for lines that are
/// emulated.
struct PortHouse {
  explicit PortHouse(TerminalCalls *emulated = nullptr) : terminal(emulated ? *emulated : posix) {}
  ~PortHouse() {
    for (const auto &port : allSerialPortsInfo) port->close();
    mainQueue.shutDown();
    allSerialPortsInfo.clear();
  }

  std::shared_ptr<SerialPort> port(const QString &name, const QString &path) {
    const RegistryHandle device = devices.handleOf(name, path);
    auto made = SerialPort::initWithDevice(serial, device);
    devices.release(device);
    return made;
  }

  StreamLog log;
  QtMainQueue mainQueue;
  PosixTerminalCalls posix{log};
  TerminalCalls &terminal;
  FakeDevices devices;
  NotificationCenter notifications;
  RecordingExit processExit;
  PortRegistry::PortList allSerialPortsInfo;
  PortRegistry ports{allSerialPortsInfo};
  SerialEnvironment serial{mainQueue, background, terminal, devices, notifications, processExit, log, ports};
  ThreadBackground background;
};

}  // namespace tavril::bench
