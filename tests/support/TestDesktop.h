#pragma once

#include "platform/Desktop.h"
#include "platform/NotificationCenter.h"
#include "tests/support/AnsweringAlert.h"
#include "tests/support/KeyTable.h"
#include "tests/support/ManualMainQueue.h"
#include "tests/support/ManualTimers.h"
#include "tests/support/RecordingLog.h"
#include "tests/support/RecordingUserNotifications.h"
#include "tests/support/RecordingWait.h"

namespace tavril {

/// A desktop of fakes: nothing waits, nothing is shown, and everything can be looked at.
struct TestDesktop {
  ManualMainQueue mainQueue;
  ManualTimers timers;
  RecordingWait wait;
  AnsweringAlert alert;
  KeyTable strings;
  NotificationCenter notifications;
  RecordingUserNotifications userNotifications;
  RecordingLog log;
  Desktop desktop{mainQueue, timers, wait, alert, strings, notifications, &userNotifications, log};
};

}  // namespace tavril
