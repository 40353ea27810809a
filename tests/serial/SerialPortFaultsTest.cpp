#include "tests/support/SerialBench.h"
#include "tests/support/WaitFor.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <future>

namespace tavril {
namespace {

using namespace std::chrono_literals;

QString errorEvent(int error) {
  return QStringLiteral("error ") + QString::number(error);
}

class SerialPortFaults : public testing::TestWithParam<int> {
 protected:
  SerialPortFaults() { port->setDelegate(delegate); }
  ~SerialPortFaults() override {
    for (int call = 0; call <= static_cast<int>(Call::OpenWake); ++call) {
      bench.terminal.heal(static_cast<Call>(call));
    }
    port->setDelegate({});
    if (!closeIsBlocked) port->close();
  }

  bool opened() {
    return port->open() && bench.mainQueue.runUntil([&] { return delegate->events.contains("opened"); });
  }
  bool heardOf(int error) {
    return bench.mainQueue.runUntil([&] { return delegate->events.contains(errorEvent(error)); });
  }
  /// Nothing of a failed or finished opening is left: the port works.
  void expectThePortWorks() {
    bench.mainQueue.runAll();
    delegate->events.clear();
    delegate->received.clear();
    EXPECT_TRUE(opened());
    EXPECT_TRUE(port->sendData("ping"));
    EXPECT_TRUE(pty.read(4).endsWith("ping"));
    pty.write("pong");
    EXPECT_TRUE(bench.mainQueue.runUntil([&] { return delegate->received == "pong"; }));
    EXPECT_TRUE(port->close());
    EXPECT_EQ(delegate->events, (QStringList{"opened", "closed"}));
  }

  Pty pty;
  SerialBench<> bench;
  std::shared_ptr<SerialPort> port = bench.port("usbport-test", pty.path());
  std::shared_ptr<RecordingDelegate> delegate = std::make_shared<RecordingDelegate>();
  bool closeIsBlocked = false;
};

// What the calls of this layer may answer on this kernel.
INSTANTIATE_TEST_SUITE_P(Errno, SerialPortFaults,
                         testing::Values(EPERM, ENOENT, EIO, ENXIO, EBADF, EAGAIN, ENOMEM, EACCES, EFAULT,
                                         EBUSY, ENODEV, EINVAL, ENFILE, EMFILE, ENOTTY, EFBIG, ENOSPC, EPIPE,
                                         EPROTO, EOVERFLOW, ENOBUFS, ETIMEDOUT));

TEST_P(SerialPortFaults, AFailingOpenIsToldAndLeavesThePortClosed) {
  bench.terminal.fail(Call::Open, GetParam());
  EXPECT_FALSE(port->open());
  EXPECT_FALSE(port->isOpen());
  EXPECT_EQ(delegate->events, QStringList{errorEvent(GetParam())});
  EXPECT_EQ(bench.terminal.count(Call::Close), 0);
  bench.terminal.heal(Call::Open);
  expectThePortWorks();
}

TEST_P(SerialPortFaults, AFailingLockIsToldAndLeavesThePortClosedWithoutADescriptor) {
  bench.terminal.fail(Call::Lock, GetParam());
  EXPECT_FALSE(port->open());
  EXPECT_FALSE(port->isOpen());
  EXPECT_EQ(delegate->events, QStringList{errorEvent(GetParam())});
  EXPECT_EQ(bench.terminal.count(Call::Close), 1);
  EXPECT_EQ(bench.terminal.count(Call::Unlock), 0) << "what was not locked is not ours to unlock";
  bench.terminal.heal(Call::Lock);
  expectThePortWorks();
}

TEST_P(SerialPortFaults, FailingStatusFlagsAreLoggedAndThePortOpens) {
  bench.terminal.fail(Call::ClearStatusFlags, GetParam(), 1);
  EXPECT_TRUE(port->open());
  EXPECT_EQ(bench.log.warnings().filter("blocking").size(), 1);
  EXPECT_TRUE(delegate->events.isEmpty());
  port->close();
  expectThePortWorks();
}

TEST_P(SerialPortFaults, LineSettingsThatCannotBeReadAreToldAndThePortStaysOpen) {
  bench.terminal.fail(Call::Attributes, GetParam());
  EXPECT_TRUE(port->open());
  EXPECT_EQ(delegate->events, QStringList{errorEvent(GetParam())});
  EXPECT_EQ(bench.terminal.count(Call::SetAttributes), 0) << "settings that were never read were written";
  EXPECT_TRUE(port->close());
  EXPECT_EQ(bench.terminal.count(Call::SetAttributes), 0);
  bench.terminal.heal(Call::Attributes);
  expectThePortWorks();
}

TEST_P(SerialPortFaults, LineSettingsThatCannotBeSetAreToldAndThePortStaysOpen) {
  bench.terminal.fail(Call::SetAttributes, GetParam());
  EXPECT_TRUE(port->open());
  EXPECT_EQ(delegate->events, QStringList{errorEvent(GetParam())});
  port->setBaudRate(9600);
  EXPECT_EQ(delegate->events.count(errorEvent(GetParam())), 2);
  EXPECT_TRUE(port->close());
  bench.terminal.heal(Call::SetAttributes);
  bench.mainQueue.runAll();
  expectThePortWorks();
}

TEST_P(SerialPortFaults, AnArbitrarySpeedThatFailsIsTold) {
  ASSERT_TRUE(opened());
  port->setAllowsNonStandardBaudRates(true);
  bench.terminal.fail(Call::SetArbitrarySpeed, GetParam());
  port->setBaudRate(123456);
  EXPECT_EQ(delegate->events, (QStringList{"opened", errorEvent(GetParam())}));
  EXPECT_TRUE(port->isOpen());
  EXPECT_EQ(port->baudRate(), 123456u);
}

TEST_P(SerialPortFaults, PinsThatCannotBeReadAtOpeningAreToldAndOpeningGoesOn) {
  bench.terminal.fail(Call::Pins, GetParam(), 1);
  EXPECT_TRUE(port->open());
  EXPECT_EQ(delegate->events, QStringList{errorEvent(GetParam())});
  EXPECT_TRUE(bench.mainQueue.runUntil([&] { return delegate->events.contains("opened"); }));
  EXPECT_TRUE(port->isOpen());
}

TEST_P(SerialPortFaults, PinsThatCannotBeDrivenAreTold) {
  bench.terminal.setPinsOfLine(0);
  ASSERT_TRUE(opened());
  bench.terminal.fail(Call::SetPins, GetParam());
  port->setRTS(true);
  EXPECT_EQ(delegate->events, (QStringList{"opened", errorEvent(GetParam())}));
  EXPECT_TRUE(port->RTS()) << "the wish is kept";
}

TEST_P(SerialPortFaults, AFailingPollOfThePinsIsToldAndOnlyAMissingDeviceCloses) {
  ASSERT_TRUE(opened());
  bench.terminal.fail(Call::Pins, GetParam());
  ASSERT_TRUE(heardOf(GetParam()));
  if (GetParam() == ENXIO) {
    EXPECT_TRUE(bench.mainQueue.runUntil([&] { return delegate->events.contains("closed"); }));
    EXPECT_EQ(delegate->events, (QStringList{"opened", errorEvent(ENXIO), "removed", "closed"}));
  } else {
    EXPECT_TRUE(port->isOpen());
    EXPECT_FALSE(delegate->events.contains("removed"));
  }
  bench.terminal.heal(Call::Pins);
  port->close();
  expectThePortWorks();
}

TEST_P(SerialPortFaults, AFailingWaitForInputIsToldWithoutSpinning) {
  bench.terminal.setPinsOfLine(0);
  ASSERT_TRUE(opened());
  bench.terminal.fail(Call::Wait, GetParam());
  ASSERT_TRUE(heardOf(GetParam()));
  const int before = bench.terminal.count(Call::Wait);
  const int ticks = bench.terminal.count(Call::Pins);
  EXPECT_TRUE(waitFor([&] { return bench.terminal.count(Call::Pins) >= ticks + 20; }));
  EXPECT_LE(bench.terminal.count(Call::Wait) - before, 50);
  EXPECT_TRUE(port->isOpen());
  bench.terminal.heal(Call::Wait);
  pty.write("after");
  EXPECT_TRUE(bench.mainQueue.runUntil([&] { return delegate->received == "after"; }));
}

TEST_P(SerialPortFaults, AFailingReadIsIgnoredAndThePortReadsOn) {
  ASSERT_TRUE(opened());
  bench.terminal.fail(Call::Read, GetParam(), 2);
  pty.write("kept");
  EXPECT_TRUE(bench.mainQueue.runUntil([&] { return delegate->received == "kept"; }));
  EXPECT_EQ(delegate->events, QStringList{"opened"});
}

TEST_P(SerialPortFaults, AFailingWriteIsToldAndSendingFails) {
  ASSERT_TRUE(opened());
  bench.terminal.fail(Call::Write, GetParam(), 1);
  EXPECT_FALSE(port->sendData("lost"));
  EXPECT_EQ(delegate->events, (QStringList{"opened", errorEvent(GetParam())}));
  EXPECT_TRUE(port->isOpen());
  EXPECT_TRUE(port->sendData("sent"));
  EXPECT_EQ(pty.read(4), "sent");
}

TEST_P(SerialPortFaults, AFailingUnlockDoesNotKeepThePortFromClosing) {
  ASSERT_TRUE(opened());
  bench.terminal.fail(Call::Unlock, GetParam());
  EXPECT_TRUE(port->close());
  EXPECT_EQ(delegate->events, (QStringList{"opened", "closed"}));
}

TEST_P(SerialPortFaults, ALineThatCannotBeKeptFromBlockingClosesAllTheSame) {
  ASSERT_TRUE(opened());
  bench.terminal.fail(Call::StopBlocking, GetParam());
  EXPECT_TRUE(port->close());
  EXPECT_EQ(delegate->events, (QStringList{"opened", "closed"}));
}

TEST_P(SerialPortFaults, WithoutAWakeDescriptorThePortWorksAndClosesAllTheSame) {
  bench.terminal.fail(Call::OpenWake, GetParam());
  expectThePortWorks();
}

TEST_P(SerialPortFaults, AFailingCloseIsToldAndLeavesThePortOpen) {
  ASSERT_TRUE(opened());
  bench.terminal.fail(Call::Close, GetParam());
  EXPECT_FALSE(port->close());
  EXPECT_TRUE(port->isOpen());
  EXPECT_EQ(delegate->events, (QStringList{"opened", errorEvent(GetParam())}));
  closeIsBlocked = true;  // by design; see the next test
}

TEST(SerialPortCloseDeathTest, AfterAFailedCloseALaterCloseWaitsForGood) {
  testing::FLAGS_gtest_death_test_style = "threadsafe";
  // A process of its own, because the thread that calls close() again never comes back.
  EXPECT_EXIT(
      {
        Pty pty;
        SerialBench<> bench;
        const auto port = bench.port("usbport-test", pty.path());
        port->open();
        bench.terminal.fail(Call::Close, EIO, 1);
        const bool first = port->close();
        auto second = std::async(std::launch::async, [&] { return port->close(); });
        const bool blocked = second.wait_for(500ms) == std::future_status::timeout;
        ::_exit(!first && blocked && port->isOpen() ? 42 : 1);
      },
      testing::ExitedWithCode(42), "");
}

TEST(SerialPortWithoutCallbacks, ErrorsAreNotBuiltForADelegateThatLeavesThemOut) {
  Pty pty;
  SerialBench<> bench;
  const auto port = bench.port("usbport-test", pty.path());
  const auto deaf = std::make_shared<RecordingDelegate>(std::set<SerialPortCallback>{
      SerialPortCallback::DidEncounterError, SerialPortCallback::WasOpened, SerialPortCallback::WasClosed});
  port->setDelegate(deaf);
  bench.terminal.fail(Call::Open, ENOENT, 1);
  EXPECT_FALSE(port->open());
  EXPECT_TRUE(port->open());
  EXPECT_TRUE(port->close());
  bench.mainQueue.runAll();
  EXPECT_TRUE(deaf->events.isEmpty());
}

TEST(SerialPortWithoutCallbacks, APortWithoutADelegateOpensFailsAndClosesQuietly) {
  Pty pty;
  SerialBench<> bench;
  const auto port = bench.port("usbport-test", pty.path());
  bench.terminal.fail(Call::Open, ENOENT, 1);
  EXPECT_FALSE(port->open());
  EXPECT_TRUE(port->open());
  pty.unplug();
  EXPECT_TRUE(waitFor([&] {
    bench.mainQueue.runAll();
    return !port->isOpen();
  }));
}

}  // namespace
}  // namespace tavril
