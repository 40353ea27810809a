// What becomes of the link when single USB transfers go wrong.
#include "serial/SerialPort.h"
#include "serial/SerialPortManager.h"
#include "tests/vm/guest/EmulatedAdapter.h"
#include "tests/vm/guest/KernelBench.h"

#include <QElapsedTimer>
#include <QTest>
#include <QTimer>

#include <cerrno>
#include <cstdio>

namespace tavril::vm {
namespace {

class Transfers : public KernelBench {
 protected:
  void TearDown() override {
    adapter.pullOut();
    KernelBench::TearDown();
  }

  void plugIn() {
    ASSERT_TRUE(adapter.plugIn());
    ASSERT_TRUE(listed({QString::fromUtf16(first)}));
    ASSERT_TRUE(waitFor([this] { return editor->state.allSerialPortsInfo.size() == 1; }));
  }

  EmulatedAdapter adapter;
};

TEST_F(Transfers, ReachTheServoThroughTheEmulatedAdapter) {
  start();
  plugIn();
  editor->connectToServo();
  EXPECT_TRUE(readOut());
  EXPECT_TRUE(waitFor([this] { return editor->application->serialPort()->CTS(); }));
  adapter.pullOut();
  expectRemovalHandled();
}

/// The driver says EIO to both; only one of them is the end of the link.
TEST_F(Transfers, ThatFailWhilePinsArePolledAreNoRemoval) {
  start();
  plugIn();
  editor->connectToServo();
  ASSERT_TRUE(readOut());
  editor->user.seen.clear();
  adapter.failLineStates(3);
  ASSERT_TRUE(waitFor([this] { return adapter.hasFailedAll(); }));
  QTest::qWait(300);
  EXPECT_EQ(removalsTold(), 0);
  ASSERT_TRUE(editor->application->serialPort());
  EXPECT_TRUE(editor->application->serialPort()->isOpen());
  ASSERT_TRUE(editor->application->lastSerialError());
  EXPECT_EQ(editor->application->lastSerialError()->code, EIO);
  editor->clearScreen();
  editor->window->controller().FunctionCMD()->ReadMotorParameter(1);
  EXPECT_TRUE(readOut());
  adapter.pullOut();
  expectRemovalHandled();
}

TEST_F(Transfers, ThatHangDoNotHoldUpTheMainThread) {
  start();
  plugIn();
  editor->connectToServo();
  ASSERT_TRUE(readOut());
  editor->user.seen.clear();
  adapter.holdLineStates();
  ASSERT_TRUE(waitFor([this] { return adapter.isHolding(); }));
  QElapsedTimer sinceTick;
  qint64 longest_ms = 0;
  QTimer ticks;
  QObject::connect(&ticks, &QTimer::timeout, &ticks,
                   [&] { longest_ms = std::max(longest_ms, sinceTick.restart()); });
  sinceTick.start();
  ticks.start(5);
  QElapsedTimer sincePull;
  sincePull.start();
  adapter.pullOut();
  EXPECT_TRUE(listed({}));
  std::printf("gone from the list after %lld ms, longest block of the main thread %lld ms\n",
              static_cast<long long>(sincePull.elapsed()), static_cast<long long>(longest_ms));
  expectRemovalHandled();
  EXPECT_LT(longest_ms, 2000);
}

TEST_F(Transfers, OfAnOpeningMayEachBeTheLast) {
  start();
  plugIn();
  const int before = adapter.transfers();
  editor->application->serialFormat();
  ASSERT_TRUE(editor->application->serialPort()->isOpen());
  const int needed = adapter.transfers() - before;
  ASSERT_GT(needed, 3);
  std::printf("an opening takes %d control transfers\n", needed);
  adapter.pullOut();
  expectRemovalHandled();
  for (int last = 1; last <= needed; ++last) {
    SCOPED_TRACE(last);
    plugIn();
    adapter.pullOutAtTransfer(last);
    editor->application->serialFormat();
    ASSERT_TRUE(listed({}));
    ASSERT_TRUE(waitFor([this] { return editor->state.allSerialPortsInfo.empty(); }));
    const auto port = editor->application->serialPort();
    EXPECT_TRUE(waitFor([&] { return !port || !port->isOpen(); }));
  }
  plugIn();
  editor->clearScreen();
  editor->connectToServo();
  EXPECT_TRUE(readOut());
}

}  // namespace
}  // namespace tavril::vm
