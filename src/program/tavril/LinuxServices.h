#pragma once

#include "platform/ModalAlert.h"
#include "platform/linux/DesktopNotifications.h"
#include "platform/linux/PaintingWait.h"
#include "platform/linux/PosixDeviceNodes.h"
#include "platform/linux/PosixPrivateFiles.h"
#include "platform/linux/ProcProcesses.h"
#include "platform/linux/ProgramLog.h"
#include "platform/linux/QtMainQueue.h"
#include "platform/linux/QtTimers.h"
#include "platform/linux/SettingsFile.h"
#include "platform/linux/StringTables.h"
#include "platform/linux/UdevDeviceRegistry.h"
#include "platform/linux/UdevUsbBus.h"
#include "program/tavril/AppServices.h"
#include "terminal/PosixTerminalCalls.h"

#include <memory>

namespace tavril {

/// The machine that the program really runs on.
class LinuxServices {
 public:
  /// `interactive`: there is somebody who answers alerts.
  explicit LinuxServices(bool interactive);

  AppServices services();

  ProgramLog log{"tavril"};
  QtMainQueue mainQueue;
  QtTimers timers{mainQueue};
  PaintingWait blockingWait;
  std::unique_ptr<ModalAlert> alert;
  StringTables strings{StringTables::standardFolders(), log};
  PosixPrivateFiles files;
  SettingsFile preferences{SettingsFile::standardPath(), files, log};
  DesktopNotifications userNotifications;
  PosixTerminalCalls terminal;
  UdevDeviceRegistry devices;
  UdevUsbBus bus;
  PosixDeviceNodes nodes;
  ProcProcesses processes;
};

}  // namespace tavril
