#pragma once

#include "app/AppDelegate.h"
#include "platform/Log.h"
#include "platform/linux/PosixPrivateFiles.h"
#include "platform/linux/QtMainQueue.h"
#include "platform/linux/QtTimers.h"
#include "platform/linux/StreamLog.h"
#include "platform/linux/StringTables.h"
#include "program/tavril/AppObjects.h"
#include "protocol/Function.h"
#include "protocol/SharedState.h"
#include "terminal/PosixTerminalCalls.h"
#include "tests/doctor/FakeMachine.h"
#include "tests/support/AnsweringAlert.h"
#include "tests/support/FakeDevices.h"
#include "tests/support/MemoryPreferences.h"
#include "tests/support/PlainScreen.h"
#include "tests/support/RecordingWait.h"

namespace tavril::bench {

/// The link without a window: real queue, timers, threads and terminal. Waits are left out, for a bridge that
/// needs none.
struct BenchLink {
  /// `emulated`: the terminal calls for a line that is emulated.
  explicit BenchLink(const QString &path, TerminalCalls *emulated = nullptr)
      : objects({log,
                 mainQueue,
                 timers,
                 wait,
                 alert,
                 strings,
                 {},
                 files,
                 preferences,
                 nullptr,
                 emulated ? *emulated : posix,
                 devices,
                 machine.bus,
                 machine.nodes,
                 machine.programs},
                std::chrono::milliseconds(0)) {
    registerPlainScreen(state.ObjectDictionaryArray, elements);
    if (!path.isEmpty()) devices.add(QStringLiteral("usbport-bench"), path);
    application->applicationDidFinishLaunching();
  }

  StreamLog log;
  QtMainQueue mainQueue;
  QtTimers timers{mainQueue};
  RecordingWait wait;
  AnsweringAlert alert;
  StringTables strings{StringTables::standardFolders(), log};
  PosixPrivateFiles files;
  MemoryPreferences preferences;
  PosixTerminalCalls posix{linesTo(log)};
  FakeDevices devices;
  doctor::FakeMachine machine;
  PlainScreen elements;
  AppObjects objects;
  SharedState &state = objects.state;
  AppDelegate *const application = objects.application.get();
};

}  // namespace tavril::bench
