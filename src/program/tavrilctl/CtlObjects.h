#pragma once

#include "cli/Ports.h"
#include "platform/Log.h"
#include "platform/NotificationCenter.h"
#include "platform/linux/PosixDeviceNodes.h"
#include "platform/linux/ProcProcesses.h"
#include "platform/linux/ProgramLog.h"
#include "platform/linux/QtMainQueue.h"
#include "platform/linux/StringTables.h"
#include "platform/linux/UdevDeviceRegistry.h"
#include "platform/linux/UdevUsbBus.h"
#include "program/SerialObjects.h"
#include "serial/PortRegistry.h"
#include "simulator/VirtualServo.h"
#include "terminal/PosixTerminalCalls.h"

#include <QString>

#include <memory>
#include <vector>

namespace tavril {
class SerialPort;
}

namespace tavril::cli {

struct Options;

/// The objects of the command line tool, on the machine that it really runs on. What cannot be done throws a
/// Failure.
class CtlObjects {
 public:
  std::vector<PortInfo> listedPorts() { return listPorts(devices, processes); }
  /// The path of the port that the options name, or of a virtual servo, which is started. The registry knows
  /// it afterwards.
  QString portToUse(const Options &options);
  /// The path of the port to examine; empty for the first on the bus.
  QString portToExamine(const Options &options);
  std::shared_ptr<SerialPort> portAt(const QString &path);

  ProgramLog log{"tavrilctl"};
  QtMainQueue mainQueue;
  NotificationCenter notifications;
  StringTables strings{StringTables::standardFolders(), log};
  PosixTerminalCalls terminal{linesTo(log)};
  UdevDeviceRegistry devices;
  UdevUsbBus bus;
  PosixDeviceNodes nodes;
  ProcProcesses processes;
  PortRegistry::PortList portList;
  simulator::VirtualServo virtualServo{{.pace = true}};
  SerialObjects serial{mainQueue, terminal, devices, notifications, log, portList};

 private:
  /// Returns its path.
  QString startVirtualServo();
};

}  // namespace tavril::cli
