#include "platform/Log.h"
#include "platform/linux/QtMainQueue.h"
#include "platform/linux/QtTimers.h"
#include "platform/linux/StringTables.h"
#include "program/tavril/AppObjects.h"
#include "serial/SerialPort.h"
#include "terminal/PosixTerminalCalls.h"
#include "tests/doctor/FakeMachine.h"
#include "tests/support/AnsweringAlert.h"
#include "tests/support/FakeDevices.h"
#include "tests/support/FaultyTerminalCalls.h"
#include "tests/support/MemoryFiles.h"
#include "tests/support/MemoryPreferences.h"
#include "tests/support/Pty.h"
#include "tests/support/RecordingLog.h"
#include "tests/support/RecordingWait.h"
#include "tests/support/WaitFor.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <memory>
#include <optional>
#include <thread>

namespace tavril {
namespace {

using namespace std::chrono_literals;

class AppObjectsTest : public testing::Test {
 protected:
  AppObjectsTest() {
    devices.add(QStringLiteral("usbport-test"), pty.path());
    objects.emplace(AppServices{log,
                                mainQueue,
                                timers,
                                wait,
                                alert,
                                strings,
                                {QStringLiteral("de")},
                                files,
                                preferences,
                                nullptr,
                                terminal,
                                devices,
                                machine.bus,
                                machine.nodes,
                                machine.programs},
                    1234ms);
    objects->application->applicationDidFinishLaunching();
  }

  Pty pty;
  RecordingLog log;
  QtMainQueue mainQueue;
  QtTimers timers{mainQueue};
  RecordingWait wait;
  AnsweringAlert alert;
  StringTables strings{{}, log};
  MemoryFiles files;
  MemoryPreferences preferences;
  PosixTerminalCalls posix{linesTo(log)};
  FaultyTerminalCalls terminal{posix};
  FakeDevices devices;
  doctor::FakeMachine machine;
  std::optional<AppObjects> objects;
};

TEST_F(AppObjectsTest, TheLinkGivesTheBridgeItsTime) {
  objects->application->serialFormat();
  ASSERT_TRUE(waitFor([this] { return wait.waits.size() == 2; }));
  EXPECT_EQ(wait.waits[1], 1234ms);
}

TEST_F(AppObjectsTest, ThatEndCloseThePortAndPutItsSettingsBackAndTellNobody) {
  const termios before = pty.attributes();
  bool applicationWasThere = false;
  terminal.atCall = [&, &application = objects->application](Call call) {
    if (call == Call::Close) applicationWasThere = application != nullptr;
  };
  objects->application->serialFormat();
  ASSERT_TRUE(waitFor([this] { return wait.waits.size() == 2; }));
  ASSERT_NE(pty.attributes().c_cflag, before.c_cflag);
  const std::weak_ptr<SerialPort> port = objects->application->serialPort();
  objects.reset();
  EXPECT_TRUE(port.expired());
  EXPECT_EQ(terminal.closed().size(), 1U);
  EXPECT_TRUE(applicationWasThere);
  EXPECT_EQ(pty.attributes().c_cflag, before.c_cflag);
  EXPECT_TRUE(alert.contents.empty());
}

TEST_F(AppObjectsTest, ThatEndLetAThreadGoThatWaitsForTheMainThread) {
  std::atomic<bool> isWaiting = false;
  std::atomic<bool> hasRun = false;
  std::atomic<bool> wasAnswered = true;
  objects->serial.background.run([&] {
    isWaiting = true;
    wasAnswered = mainQueue.sync([&] { hasRun = true; });
  });
  while (!isWaiting) std::this_thread::yield();
  objects.reset();
  EXPECT_FALSE(wasAnswered);
  EXPECT_FALSE(hasRun);
}

}  // namespace
}  // namespace tavril
