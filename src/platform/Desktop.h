#pragma once

namespace tavril {

class BlockingWait;
class Log;
class MainQueue;
class ModalAlert;
class NotificationCenter;
class StringTable;
class Timers;
class UserNotificationCenter;

/// The platform's services, which `main` makes and passes on together.
struct Desktop {
  MainQueue &mainQueue;
  Timers &timers;
  BlockingWait &blockingWait;
  ModalAlert &alert;
  const StringTable &strings;
  NotificationCenter &notifications;
  UserNotificationCenter *userNotifications;  ///< nothing on a platform that has no such thing
  Log &log;
};

}  // namespace tavril
