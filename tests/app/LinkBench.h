#pragma once

#include "app/AppDelegate.h"
#include "platform/Desktop.h"
#include "platform/linux/PosixPrivateFiles.h"
#include "protocol/Function.h"
#include "protocol/SharedState.h"
#include "store/AlertErrorPresenter.h"
#include "tests/support/AnsweringAlert.h"
#include "tests/support/KeyTable.h"
#include "tests/support/ManualTimers.h"
#include "tests/support/PlainScreen.h"
#include "tests/support/RecordingUserNotifications.h"
#include "tests/support/RecordingWait.h"
#include "tests/support/SerialBench.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace tavril {

/// The application delegate on real terminals, with everything else faked. Devices have to be added before
/// launch(), which is the application's start.
class LinkBench : public testing::Test {
 protected:
  ~LinkBench() override {
    if (application && application->serialPort()) application->serialPort()->setDelegate({});
    for (const auto &port : state.allSerialPortsInfo) port->close();
    application.reset();
    state.SelectSerial.reset();
    state.allSerialPortsInfo.clear();
    bench.mainQueue.shutDown();  // what is queued may hold a port
  }

  void launch() {
    registerPlainScreen(state.ObjectDictionaryArray, elements);
    application = AppDelegate::make(state, desktop, bench.environment, store);
    application->applicationDidFinishLaunching(menu);
  }

  /// Opens the first port and takes the detection command off the wire.
  void connect(const Pty &pty) {
    application->serialFormat();
    ASSERT_TRUE(bench.mainQueue.runUntil([&] { return wait.waits.size() == 2; }));
    ASSERT_EQ(pty.read(50).first(4), QByteArray::fromHex("FF0490FE"));
    ASSERT_EQ(bench.mainQueue.runAll(), 0u);
  }

  void deliver(const char *bytes) {
    application->didReceiveData(application->serialPort(), QByteArray::fromHex(bytes));
  }
  QString textOf(const char *key) { return elements.at(QString::fromLatin1(key)).text(); }
  QStringList portNames() const {
    QStringList names;
    for (const auto &port : state.allSerialPortsInfo) names.append(port->name());
    return names;
  }

  SharedState state;
  SerialBench<> bench{&state.allSerialPortsInfo};
  PlainScreen elements;
  ManualTimers timers;
  RecordingWait wait;
  AnsweringAlert alert;
  KeyTable strings;
  RecordingUserNotifications userNotifications;
  Desktop desktop{bench.mainQueue,    timers,   wait, alert, strings, bench.notifications,
                  &userNotifications, bench.log};
  QTemporaryDir applicationSupport;
  PosixPrivateFiles files;
  AlertErrorPresenter errors{alert};
  StoreController store{
      files, desktop, errors, {applicationSupport.path(), QStringLiteral(":/model/Tavril.xml")}};
  MenuOutlets menu;
  std::shared_ptr<AppDelegate> application;
};

}  // namespace tavril
