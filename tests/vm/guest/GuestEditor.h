#pragma once

#include "app/AppDelegate.h"
#include "editor/windows/EditorWindow.h"
#include "platform/Log.h"
#include "platform/linux/PaintingWait.h"
#include "platform/linux/PosixDeviceNodes.h"
#include "platform/linux/PosixUserFiles.h"
#include "platform/linux/ProcProcesses.h"
#include "platform/linux/QtFilePanels.h"
#include "platform/linux/QtMainQueue.h"
#include "platform/linux/QtModalAlert.h"
#include "platform/linux/QtTimers.h"
#include "platform/linux/StringTables.h"
#include "platform/linux/UdevDeviceRegistry.h"
#include "platform/linux/UdevUsbBus.h"
#include "program/tavril/AppObjects.h"
#include "program/tavril/EditorObjects.h"
#include "protocol/SharedState.h"
#include "terminal/PosixTerminalCalls.h"
#include "tests/support/MemoryFiles.h"
#include "tests/support/MemoryPreferences.h"
#include "tests/support/RecordingLog.h"
#include "tests/support/RecordingUserNotifications.h"
#include "tests/vm/guest/Answerer.h"

#include <chrono>
#include <optional>

namespace tavril::vm {

/// The editor as the program puts it together, on the machine's own udev, terminals, threads, timers and
/// alerts. Only what leaves the process is noted instead: notifications, the log and stored files.
struct GuestEditor {
  explicit GuestEditor(std::chrono::milliseconds startUpWait);

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
  MemoryFiles files;
  MemoryPreferences preferences;
  RecordingUserNotifications userNotifications;
  PosixTerminalCalls terminal{linesTo(log)};
  UdevDeviceRegistry devices;
  UdevUsbBus bus;
  PosixDeviceNodes nodes;
  ProcProcesses processes;
  QtFilePanels panels{mainQueue};
  PosixUserFiles userFiles;
  AppObjects objects;
  SharedState &state = objects.state;
  AppDelegate *const application = objects.application.get();
  std::optional<EditorObjects> editor;
  EditorWindow *window = nullptr;
};

}  // namespace tavril::vm
