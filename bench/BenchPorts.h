#pragma once

#include "platform/Log.h"
#include "platform/NotificationCenter.h"
#include "platform/linux/QtMainQueue.h"
#include "platform/linux/StreamLog.h"
#include "program/SerialObjects.h"
#include "serial/PortRegistry.h"
#include "serial/SerialPort.h"
#include "terminal/PosixTerminalCalls.h"
#include "tests/support/FakeDevices.h"

#include <memory>

namespace tavril::bench {

/// What ports use in the program, but for the devices, which are named.
struct BenchPorts {
  std::shared_ptr<SerialPort> port(const QString &name, const QString &path) {
    const RegistryHandle device = devices.handleOf(name, path);
    auto made = SerialPort::initWithDevice(serial.environment, device);
    devices.release(device);
    return made;
  }

  StreamLog log;
  QtMainQueue mainQueue;
  PosixTerminalCalls terminal{linesTo(log)};
  FakeDevices devices;
  NotificationCenter notifications;
  PortRegistry::PortList allSerialPortsInfo;
  SerialObjects serial{mainQueue, terminal, devices, notifications, log, allSerialPortsInfo};
};

}  // namespace tavril::bench
