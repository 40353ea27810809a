#pragma once

#include <QStringList>

namespace tavril {

class BlockingWait;
class DeviceNodes;
class DeviceRegistry;
class Log;
class MainQueue;
class ModalAlert;
class Preferences;
class PrivateFiles;
class Processes;
class StringTables;
class TerminalCalls;
class Timers;
class UsbBus;
class UserNotificationCenter;

/// What the program needs from the machine and the user. A test replaces what it likes.
struct AppServices {
  Log &log;
  MainQueue &mainQueue;
  Timers &timers;
  BlockingWait &blockingWait;
  ModalAlert &alert;
  StringTables &strings;
  QStringList systemLanguages;  ///< what the user reads, the preferred first
  PrivateFiles &files;
  Preferences &preferences;
  UserNotificationCenter *userNotifications;  ///< may be nothing
  TerminalCalls &terminal;
  DeviceRegistry &devices;
  const UsbBus &bus;
  const DeviceNodes &nodes;
  const Processes &processes;
};

}  // namespace tavril
