#pragma once

#include "app/AppDelegate.h"
#include "app/StoreController.h"
#include "editor/windows/EditorWindow.h"
#include "platform/AlertErrorPresenter.h"
#include "platform/Desktop.h"
#include "platform/NotificationCenter.h"
#include "platform/ProcessExit.h"
#include "platform/linux/PaintWidgets.h"
#include "platform/linux/PaintingWait.h"
#include "platform/linux/PosixDeviceNodes.h"
#include "platform/linux/PosixTerminalCalls.h"
#include "platform/linux/ProcProcesses.h"
#include "platform/linux/QtMainQueue.h"
#include "platform/linux/QtModalAlert.h"
#include "platform/linux/QtTimers.h"
#include "platform/linux/StringTables.h"
#include "platform/linux/ThreadBackground.h"
#include "platform/linux/UdevDeviceRegistry.h"
#include "protocol/SharedState.h"
#include "serial/PortRegistry.h"
#include "serial/SerialEnvironment.h"
#include "tests/support/MemoryFiles.h"
#include "tests/support/RecordingLog.h"
#include "tests/support/RecordingUserNotifications.h"
#include "tests/vm/guest/Answerer.h"

#include <chrono>
#include <memory>

namespace tavril::vm {

/// Exit handlers that nobody runs: the process goes on with the next test.
class NoExit final : public ProcessExit {
 public:
  int registerHandler(std::function<void()>) override { return 0; }
};

/// The whole editor as the program puts it together, on the machine's own udev, terminals, threads, timers
/// and alerts. Only what leaves the process is noted instead: notifications, the log and stored files.
struct House {
  explicit House(std::chrono::milliseconds startUpWait);
  ~House();

  /// The names of the ports that are there, as the manager lists them.
  QStringList portNames() const;
  /// Confirms the port dialog as a user does, which opens the first USB port; returns when the dialog is
  /// gone.
  void connectToServo();
  /// Every register's value is on the screen.
  bool everythingRead() const;
  QString textOf(const char *name) const;
  QWidget *find(const char *name) const;
  /// Types into a field and leaves it with Return.
  void enter(const char *name, const char *text);
  /// Clears what has been read, so that the next read-out can be told from this one.
  void clearScreen();

  RecordingLog log;
  Answerer user;
  QtMainQueue mainQueue;
  QtTimers timers{mainQueue};
  PaintingWait wait{paintPendingWidgets};
  QtModalAlert alert{mainQueue};
  StringTables strings{StringTables::standardFolders(), log};
  NotificationCenter notifications;
  RecordingUserNotifications userNotifications;
  Desktop desktop{mainQueue, timers, wait, alert, strings, notifications, &userNotifications, log};
  MemoryFiles files;
  AlertErrorPresenter errors{alert};
  StoreController store{files, desktop, errors};
  PosixTerminalCalls terminal{log};
  UdevDeviceRegistry devices;
  PosixDeviceNodes nodes;
  ProcProcesses processes;
  SharedState state;
  PortRegistry ports{state.allSerialPortsInfo};
  NoExit processExit;
  SerialEnvironment serial{mainQueue, background, terminal, devices, notifications, processExit, log, ports};
  ThreadBackground background;
  std::shared_ptr<AppDelegate> application;
  std::unique_ptr<EditorWindow> window;
};

}  // namespace tavril::vm
