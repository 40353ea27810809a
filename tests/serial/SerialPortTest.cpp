#include "tests/support/ManualBackground.h"
#include "tests/support/Ownership.h"
#include "tests/support/SerialBench.h"
#include "tests/support/WaitFor.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <thread>
#include <time.h>

#include <sys/file.h>
#include <sys/ioctl.h>

namespace tavril {
namespace {

using namespace std::chrono_literals;

class SerialPortOnPty : public testing::Test {
 protected:
  SerialPortOnPty() { port->setDelegate(delegate); }
  ~SerialPortOnPty() override {
    bench.terminal.heal(Call::Close);
    port->setDelegate({});
    port->close();
  }

  bool runUntil(const std::function<bool()> &condition) { return bench.mainQueue.runUntil(condition); }
  bool opened() {
    return port->open() && runUntil([&] { return delegate->events.contains("opened"); });
  }

  Pty pty;
  SerialBench<> bench;
  std::shared_ptr<SerialPort> port = bench.port("usbport-test", pty.path());
  std::shared_ptr<RecordingDelegate> delegate = std::make_shared<RecordingDelegate>();
};

// ------------------------------------------------------------------------------------- opening and closing

TEST_F(SerialPortOnPty, OpensAndTellsTheDelegateLater) {
  EXPECT_TRUE(port->open());
  EXPECT_TRUE(port->isOpen());
  EXPECT_TRUE(delegate->events.isEmpty());
  EXPECT_TRUE(runUntil([&] { return !delegate->events.isEmpty(); }));
  EXPECT_EQ(delegate->events, QStringList{"opened"});
  EXPECT_TRUE(port->open()) << "opening an open port changes nothing";
  EXPECT_EQ(bench.terminal.count(Call::Open), 1);
}

TEST_F(SerialPortOnPty, ClosingTellsTheDelegateBeforeItReturns) {
  ASSERT_TRUE(opened());
  EXPECT_TRUE(port->close());
  EXPECT_FALSE(port->isOpen());
  EXPECT_EQ(delegate->events, (QStringList{"opened", "closed"}));
}

TEST_F(SerialPortOnPty, CloseOnAClosedPortReturnsTrueWithoutCallbacks) {
  EXPECT_TRUE(port->close());
  EXPECT_TRUE(delegate->events.isEmpty());
  EXPECT_TRUE(bench.terminal.order().empty());
}

TEST_F(SerialPortOnPty, CanBeOpenedAgainAfterClosing) {
  for (int i = 0; i < 3; ++i) {
    ASSERT_TRUE(port->open());
    pty.write("x");
    ASSERT_TRUE(runUntil([&] { return delegate->received.size() == i + 1; }));
    ASSERT_TRUE(port->close());
  }
  EXPECT_EQ(delegate->received, "xxx");
}

TEST_F(SerialPortOnPty, IsOpenObserversAreNotifiedWhenTheDescriptorChanges) {
  std::vector<bool> seen;
  int descriptorChanges = 0;
  const auto token = port->observe("isOpen", [&](const Change &) { seen.push_back(port->isOpen()); });
  const auto other = port->observe("fileDescriptor", [&](const Change &) { ++descriptorChanges; });
  port->open();
  port->close();
  EXPECT_EQ(seen, (std::vector<bool>{true, false}));
  EXPECT_EQ(descriptorChanges, 2);
}

TEST_F(SerialPortOnPty, TheLineSettingsAreAppliedAndPutBackOnClosing) {
  const termios before = pty.attributes();
  port->setBaudRate(115200);
  ASSERT_TRUE(port->open());
  const termios during = pty.attributes();
  EXPECT_EQ(cfgetispeed(&during), speed_t{B115200});
  EXPECT_EQ(cfgetospeed(&during), speed_t{B115200});
  EXPECT_EQ(during.c_cflag & CSIZE, tcflag_t{CS8});
  EXPECT_EQ(during.c_cc[VTIME], 2);
  port->close();
  const termios after = pty.attributes();
  EXPECT_EQ(after.c_cflag, before.c_cflag);
  EXPECT_EQ(after.c_lflag, before.c_lflag);
  EXPECT_EQ(after.c_cc[VTIME], before.c_cc[VTIME]);
}

TEST_F(SerialPortOnPty, ClosingTakesFlowControlAwayThenDrainsAndPutsTheLineBackAndOnlyThenCloses) {
  termios before = pty.attributes();
  before.c_cflag |= CRTSCTS | CSTOPB;
  ASSERT_EQ(::tcsetattr(pty.slave(), TCSANOW, &before), 0);
  port->setUsesRTSCTSFlowControl(true);
  ASSERT_TRUE(opened());
  ASSERT_NE(pty.attributes().c_cflag & CRTSCTS, tcflag_t{0});
  const std::size_t settingsBefore = bench.terminal.settings().size();
  const std::size_t callsBefore = bench.terminal.order().size();
  ASSERT_TRUE(port->close());

  const auto settings = bench.terminal.settings();
  ASSERT_EQ(settings.size(), settingsBefore + 2);
  const auto &withoutFlowControl = settings[settingsBefore];
  EXPECT_EQ(withoutFlowControl.when, WhenToApply::Now);
  EXPECT_EQ(withoutFlowControl.attributes.c_cflag & (CRTSCTS | CSTOPB), tcflag_t{0});
  const auto &original = settings[settingsBefore + 1];
  EXPECT_EQ(original.when, WhenToApply::AfterDrain);
  EXPECT_EQ(original.attributes.c_cflag, before.c_cflag);
  EXPECT_EQ(pty.attributes().c_cflag, before.c_cflag);

  auto calls = bench.terminal.order();
  calls.erase(calls.begin(), calls.begin() + static_cast<std::ptrdiff_t>(callsBefore));
  std::erase(calls, Call::Read);  // the read loop's
  EXPECT_EQ(calls, (std::vector{Call::StopBlocking, Call::Attributes, Call::SetFlowControl,
                                Call::SetAttributes, Call::SetAttributes, Call::Unlock, Call::Close}));
}

TEST_F(SerialPortOnPty, ASpeedOutsideTheListIsPutBackOnClosing) {
  ASSERT_FALSE(bench.posix.setArbitrarySpeed(pty.slave(), 250000).failed());
  const termios before = pty.attributes();
  port->setBaudRate(115200);
  ASSERT_TRUE(port->open());
  ASSERT_TRUE(port->close());
  EXPECT_EQ(pty.attributes().c_cflag, before.c_cflag);
  termios after{};
  ASSERT_FALSE(bench.posix.attributes(pty.slave(), after).failed());
  EXPECT_EQ(after.c_ospeed, 250000u);
  EXPECT_EQ(after.c_ispeed, 250000u);
}

TEST_F(SerialPortOnPty, SettersOfLineSettingsActAtOnceOnAnOpenPort) {
  ASSERT_TRUE(port->open());
  port->setBaudRate(57600);
  termios now = pty.attributes();
  EXPECT_EQ(cfgetospeed(&now), speed_t{B57600});
  port->setNumberOfStopBits(2);
  EXPECT_NE(pty.attributes().c_cflag & CSTOPB, tcflag_t{0});
  port->setShouldEchoReceivedData(true);
  EXPECT_NE(pty.attributes().c_lflag & ECHO, tcflag_t{0});
}

TEST_F(SerialPortOnPty, EverySetBaudRateCountsAsAChangeButOtherSettersOnlyWhenTheValueDiffers) {
  ASSERT_TRUE(port->open());
  const int before = bench.terminal.count(Call::SetAttributes);
  port->setBaudRate(port->baudRate());
  EXPECT_EQ(bench.terminal.count(Call::SetAttributes), before + 1);
  port->setNumberOfStopBits(port->numberOfStopBits());
  port->setParity(port->parity());
  port->setShouldEchoReceivedData(port->shouldEchoReceivedData());
  port->setUsesRTSCTSFlowControl(false);
  EXPECT_EQ(bench.terminal.count(Call::SetAttributes), before + 1);
}

TEST_F(SerialPortOnPty, SettingAFlowControlWhileOpenClosesAndReopensThePort) {
  ASSERT_TRUE(opened());
  port->setUsesRTSCTSFlowControl(true);
  EXPECT_TRUE(port->isOpen());
  EXPECT_TRUE(runUntil([&] { return delegate->events.size() == 3; }));
  EXPECT_EQ(delegate->events, (QStringList{"opened", "closed", "opened"}));
  EXPECT_NE(pty.attributes().c_cflag & CRTSCTS, tcflag_t{0});
}

TEST_F(SerialPortOnPty, SettingAFlowControlWhileClosedOnlyStoresIt) {
  port->setUsesRTSCTSFlowControl(true);
  EXPECT_TRUE(port->usesRTSCTSFlowControl());
  EXPECT_FALSE(port->isOpen());
  EXPECT_TRUE(delegate->events.isEmpty());
}

TEST_F(SerialPortOnPty, FlowControlThatLinuxDoesNotHaveIsReportedAndKept) {
  port->setUsesDTRDSRFlowControl(true);
  ASSERT_TRUE(port->open());
  EXPECT_EQ(delegate->events, QStringList{"error " + QString::number(ENOTSUP)});
  EXPECT_TRUE(port->usesDTRDSRFlowControl());
  port->close();
  port->setUsesDTRDSRFlowControl(false);
  port->setUsesDCDOutputFlowControl(true);
  delegate->events.clear();
  ASSERT_TRUE(port->open());
  EXPECT_EQ(delegate->events, QStringList{"error " + QString::number(ENOTSUP)});
}

TEST_F(SerialPortOnPty, ASpeedOutsideTheListIsReportedUnlessItIsAllowed) {
  port->setBaudRate(123456);
  ASSERT_TRUE(port->open());
  EXPECT_EQ(delegate->events, QStringList{"error " + QString::number(EINVAL)});
  EXPECT_EQ(bench.terminal.count(Call::SetArbitrarySpeed), 0);
  EXPECT_EQ(pty.attributes().c_cc[VTIME], 2) << "the other settings are applied all the same";

  delegate->events.clear();
  port->setAllowsNonStandardBaudRates(true);
  port->setBaudRate(123456);
  EXPECT_EQ(bench.terminal.count(Call::SetArbitrarySpeed), 1);
  EXPECT_TRUE(delegate->events.isEmpty());
}

TEST_F(SerialPortOnPty, ADescriptorOfZeroIsAFailure) {
  bench.terminal.answer(Call::Open, 0);
  bench.terminal.answer(Call::Close, 0);  // the real 0 is this process's standard input
  EXPECT_FALSE(port->open());
  EXPECT_FALSE(port->isOpen());
  EXPECT_EQ(delegate->events.size(), 1);
  EXPECT_EQ(bench.terminal.closed(), std::vector<int>{0});
}

// -------------------------------------------------------------------------------------------- one opener

TEST_F(SerialPortOnPty, ASecondOpenerInThisProcessIsRefusedEvenAsRoot) {
  ASSERT_TRUE(port->open());
  SerialBench<> otherProgram;
  const auto second = otherProgram.port("usbport-test", pty.path());
  const auto other = std::make_shared<RecordingDelegate>();
  second->setDelegate(other);
  EXPECT_FALSE(second->open());
  ASSERT_EQ(other->errors.size(), 1u);
  EXPECT_TRUE(other->errors[0].code == EWOULDBLOCK || other->errors[0].code == EBUSY)
      << other->errors[0].code;
  EXPECT_TRUE(port->isOpen());
  EXPECT_TRUE(isExclusive(pty)) << "the loser took the owner's flag away";
}

TEST_F(SerialPortOnPty, ATerminalThatSomebodyElseHasClaimedIsRefused) {
  ASSERT_EQ(::ioctl(pty.slave(), TIOCEXCL), 0);
  EXPECT_FALSE(port->open());
  // The superuser's open() passes the claim, so that it is found afterwards; anybody else's is refused at
  // once.
  EXPECT_EQ(delegate->events, QStringList{"error " + QString::number(EBUSY)});
  EXPECT_TRUE(isExclusive(pty)) << "the claim was not ours to end";
}

TEST_F(SerialPortOnPty, ATerminalThatSomebodyElseHasLockedIsRefused) {
  ASSERT_EQ(::flock(pty.slave(), LOCK_EX), 0);
  EXPECT_FALSE(port->open());
  EXPECT_EQ(delegate->events, QStringList{"error " + QString::number(EWOULDBLOCK)});
  EXPECT_FALSE(isExclusive(pty)) << "a lost race left its flag behind";
}

TEST_F(SerialPortOnPty, ClosingGivesTheTerminalFree) {
  ASSERT_TRUE(port->open());
  port->close();
  EXPECT_FALSE(isExclusive(pty));
  EXPECT_TRUE(isUnlocked(pty));
}

// --------------------------------------------------------------------------------- sending and receiving

TEST_F(SerialPortOnPty, BytesGoBothWays) {
  ASSERT_TRUE(port->open());
  EXPECT_TRUE(port->sendData(QByteArray::fromHex("FF0490FE00")));
  EXPECT_EQ(pty.read(5), QByteArray::fromHex("FF0490FE00"));
  pty.write(QByteArray::fromHex("FF059001FE"));
  EXPECT_TRUE(runUntil([&] { return delegate->received.size() == 5; }));
  EXPECT_EQ(delegate->received, QByteArray::fromHex("FF059001FE"));
}

TEST_F(SerialPortOnPty, EveryByteValuePassesUnchanged) {
  ASSERT_TRUE(port->open());
  QByteArray all;
  for (int i = 0; i < 256; ++i) all.append(static_cast<char>(i));
  pty.write(all);
  EXPECT_TRUE(runUntil([&] { return delegate->received.size() == 256; }));
  EXPECT_EQ(delegate->received, all);
  EXPECT_TRUE(port->sendData(all));
  EXPECT_EQ(pty.read(256), all);
}

TEST_F(SerialPortOnPty, OneReadBringsAtMost1024Bytes) {
  ASSERT_TRUE(port->open());
  const QByteArray much(3000, 'x');
  pty.write(much);
  EXPECT_TRUE(runUntil([&] { return delegate->received.size() == much.size(); }));
  for (const QByteArray &delivery : delegate->deliveries) EXPECT_LE(delivery.size(), 1024);
}

TEST_F(SerialPortOnPty, SendDataOnAClosedPortReturnsFalseAndWritesNothing) {
  EXPECT_FALSE(port->sendData("x"));
  EXPECT_FALSE(port->sendData({}));
  EXPECT_EQ(bench.terminal.count(Call::Write), 0);
}

TEST_F(SerialPortOnPty, SendingNothingOnAnOpenPortSucceeds) {
  ASSERT_TRUE(port->open());
  EXPECT_TRUE(port->sendData({}));
  EXPECT_EQ(bench.terminal.count(Call::Write), 0);
}

TEST_F(SerialPortOnPty, ShortWritesAreContinued) {
  bench.terminal.writeAtMost = 7;
  ASSERT_TRUE(port->open());
  const QByteArray frame(50, 'f');
  EXPECT_TRUE(port->sendData(frame));
  EXPECT_EQ(bench.terminal.count(Call::Write), 8);
  EXPECT_EQ(pty.read(50), frame);
}

TEST_F(SerialPortOnPty, ADelegateThatLeavesDataOutGetsNone) {
  const auto deaf =
      std::make_shared<RecordingDelegate>(std::set<SerialPortCallback>{SerialPortCallback::DidReceiveData});
  port->setDelegate(deaf);
  ASSERT_TRUE(port->open());
  pty.write("ignored");
  EXPECT_TRUE(waitFor([&] { return bench.terminal.count(Call::Read) > 0; }));
  port->close();
  bench.mainQueue.runAll();
  EXPECT_TRUE(deaf->received.isEmpty());
}

TEST_F(SerialPortOnPty, ADelegateThatIsGoneIsNotCalled) {
  ASSERT_TRUE(opened());
  pty.write("late");
  EXPECT_TRUE(waitFor([&] { return bench.mainQueue.pending() > 0; }));
  delegate.reset();
  bench.mainQueue.runAll();
  EXPECT_EQ(port->delegate(), nullptr);
}

// -------------------------------------------------------------------------------------------------- pins

TEST_F(SerialPortOnPty, ATerminalWithoutPinsIsNoErrorAndIsNotedOnce) {
  ASSERT_TRUE(opened());
  EXPECT_TRUE(waitFor([&] { return bench.terminal.count(Call::Pins) > 5; }));
  bench.mainQueue.runAll();
  EXPECT_EQ(delegate->events, QStringList{"opened"});
  EXPECT_EQ(bench.log.lines().filter("modem lines").size(), 1);
}

TEST_F(SerialPortOnPty, OpeningDrivesTheWantedOutputPins) {
  bench.terminal.setPinsOfLine(Pin::rts | Pin::dtr | Pin::cts);  // as the kernel raises them
  ASSERT_TRUE(port->open());
  EXPECT_EQ(bench.terminal.pinsOfLine(), Pin::cts);
  EXPECT_FALSE(port->RTS());
  EXPECT_FALSE(port->DTR());
  port->setRTS(true);
  EXPECT_EQ(bench.terminal.pinsOfLine(), Pin::cts | Pin::rts);
  port->setDTR(true);
  EXPECT_EQ(bench.terminal.pinsOfLine(), Pin::cts | Pin::rts | Pin::dtr);
}

TEST_F(SerialPortOnPty, PinsWantedBeforeOpeningStayUp) {
  bench.terminal.setPinsOfLine(Pin::rts | Pin::dtr);
  port->setDTR(true);
  ASSERT_TRUE(port->open());
  EXPECT_EQ(bench.terminal.pinsOfLine(), Pin::dtr);
  EXPECT_TRUE(port->DTR());
}

TEST(SerialPortPins, AreLookedAtEveryTenMillisecondsAsLongAsThePortIsOpen) {
  Pty pty;
  SerialBench<ManualBackground> bench;
  const auto port = bench.port("usbport-test", pty.path());
  ASSERT_TRUE(port->open());
  const auto &repeats = bench.background.repeats();
  ASSERT_EQ(repeats.size(), 1u);
  EXPECT_EQ(repeats[0]->interval, 10ms);
  const int before = bench.terminal.count(Call::Pins);
  bench.background.tick();
  EXPECT_EQ(bench.terminal.count(Call::Pins), before + 1);
  EXPECT_TRUE(port->close());
  EXPECT_TRUE(repeats[0]->stopped);
}

TEST_F(SerialPortOnPty, InputPinsArePolledAndToldOnTheMainThread) {
  bench.terminal.setPinsOfLine(0);
  QStringList changes;
  std::vector<KeyValueObservers::Token> tokens;
  for (const char *key : {"CTS", "DSR", "DCD"}) {
    tokens.push_back(port->observe(key, [&, key](const Change &) {
      EXPECT_TRUE(bench.mainQueue.isMainThread());
      changes.append(key);
    }));
  }
  ASSERT_TRUE(port->open());
  bench.terminal.setPinsOfLine(Pin::cts | Pin::dsr | Pin::dcd);
  EXPECT_TRUE(runUntil([&] { return changes.size() == 3; }));
  EXPECT_EQ(changes, (QStringList{"CTS", "DSR", "DCD"}));
  EXPECT_TRUE(port->CTS() && port->DSR() && port->DCD());
  bench.terminal.setPinsOfLine(Pin::cts);
  EXPECT_TRUE(runUntil([&] { return changes.size() == 5; }));
  EXPECT_TRUE(port->CTS() && !port->DSR() && !port->DCD());
}

// -------------------------------------------------------------------------------------- the plug is pulled

TEST_F(SerialPortOnPty, PullingThePlugTellsErrorThenRemovalThenClosing) {
  ASSERT_TRUE(opened());
  delegate->events.clear();
  pty.unplug();
  EXPECT_TRUE(runUntil([&] { return delegate->events.contains("closed"); }));
  EXPECT_EQ(delegate->events, (QStringList{"error " + QString::number(ENXIO), "removed", "closed"}));
  EXPECT_FALSE(port->isOpen());
  ASSERT_EQ(delegate->errors.size(), 1u);
  EXPECT_EQ(delegate->errors[0].domain, "POSIX");
  EXPECT_EQ(delegate->errors[0].localizedDescription, QString::fromLocal8Bit(strerror(ENXIO)));
  EXPECT_EQ(delegate->errors[0].filePath, pty.path());
}

TEST_F(SerialPortOnPty, ARemovalIsToldOnceAlsoWhenTheMainThreadSeesItToo) {
  ASSERT_TRUE(opened());
  delegate->events.clear();
  pty.unplug();
  // The poller waits for the main thread to take its error; the main thread hears of the removal first.
  EXPECT_TRUE(waitFor([&] { return bench.mainQueue.pending() > 0; }));
  port->cleanupAfterSystemRemoval();
  bench.mainQueue.runAll();
  EXPECT_EQ(delegate->events.count("removed"), 1);
  EXPECT_EQ(delegate->events.count("closed"), 1);
}

TEST_F(SerialPortOnPty, ClosingInTheRemovalCallbackDoesNotDeadlock) {
  ASSERT_TRUE(opened());
  delegate->events.clear();
  delegate->atEvent = [](const QString &event, const SerialPortDelegate::Port &removed) {
    EXPECT_TRUE(event != u"removed" || removed->close());
  };
  pty.unplug();
  EXPECT_TRUE(runUntil([&] { return delegate->events.contains("closed"); }));
  delegate->atEvent = nullptr;
  EXPECT_EQ(delegate->events.count("closed"), 1);
  EXPECT_FALSE(port->isOpen());
}

TEST_F(SerialPortOnPty, ALineThatIsHungUpIsNotSpunOn) {
  // Without the poller's verdict the port stays open on the dead line.
  bench.terminal.setPinsOfLine(0);
  ASSERT_TRUE(opened());
  pty.unplug();
  EXPECT_TRUE(waitFor([&] { return bench.terminal.count(Call::Read) > 0; }));
  const int readsBefore = bench.terminal.count(Call::Read);
  timespec cpuBefore{};
  ::clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &cpuBefore);
  // 60 ticks of the poller are at least 0.6 s, in which a loop that spins reads tens of thousands of times.
  const int ticksBefore = bench.terminal.count(Call::Pins);
  EXPECT_TRUE(waitFor([&] { return bench.terminal.count(Call::Pins) >= ticksBefore + 60; }));
  timespec cpuAfter{};
  ::clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &cpuAfter);
  EXPECT_LE(bench.terminal.count(Call::Read) - readsBefore, 200);
  const double cpu_s = static_cast<double>(cpuAfter.tv_sec - cpuBefore.tv_sec) +
                       static_cast<double>(cpuAfter.tv_nsec - cpuBefore.tv_nsec) * 1e-9;
  EXPECT_LT(cpu_s, 0.5);
}

TEST_F(SerialPortOnPty, CleanupIsDeprecatedAndDoesTheSame) {
  ASSERT_TRUE(opened());
  delegate->events.clear();
  port->cleanup();
  EXPECT_EQ(delegate->events, (QStringList{"removed", "closed"}));
  EXPECT_TRUE(
      bench.log.warnings().contains("WARNING: Cleanup is deprecated and was never intended to be called "
                                    "publicly. You should update your code to "
                                    "avoid calling this method."));
}

// ------------------------------------------------------------------------------------------------ threads

TEST_F(SerialPortOnPty, ThePollerMayWaitForTheMainThreadWhileThatClosesThePort) {
  bench.terminal.setPinsOfLine(0);
  ASSERT_TRUE(opened());
  bench.terminal.setPinsOfLine(Pin::cts);
  EXPECT_TRUE(waitFor([&] { return bench.mainQueue.pending() > 0; })) << "the poller did not come";
  EXPECT_TRUE(port->close());
  bench.mainQueue.runAll();
  EXPECT_TRUE(port->CTS());
}

TEST_F(SerialPortOnPty, ThePollerMayWaitForTheMainThreadWhileThatDropsThePort) {
  bench.terminal.setPinsOfLine(0);
  ASSERT_TRUE(opened());
  bench.terminal.setPinsOfLine(Pin::cts);
  EXPECT_TRUE(waitFor([&] { return bench.mainQueue.pending() > 0; }));
  const std::weak_ptr<SerialPort> weak = port;
  bench.allSerialPortsInfo.clear();
  port = bench.port("ttyS-unused", "/dev/none");
  EXPECT_TRUE(waitFor([&] { return bench.mainQueue.runAll() > 0 || weak.expired(); }));
  EXPECT_TRUE(waitFor([&] { return weak.expired(); }));
}

TEST_F(SerialPortOnPty, APortDroppedWhileOpenClosesItsDescriptorAndGivesTheTerminalFree) {
  ASSERT_TRUE(opened());
  const std::weak_ptr<SerialPort> weak = port;
  bench.allSerialPortsInfo.clear();
  port = bench.port("ttyS-unused", "/dev/none");
  EXPECT_TRUE(waitFor([&] { return weak.expired(); }));
  // The reference is gone before the port has finished going, on whichever thread that is.
  EXPECT_TRUE(waitFor([&] { return bench.terminal.count(Call::Close) == 1; }));
  EXPECT_TRUE(isUnlocked(pty));
  EXPECT_EQ(bench.ports.existingPortWithPath(pty.path()), nullptr);
}

TEST_F(SerialPortOnPty, OpeningAndClosingUnderTrafficLosesNoCallback) {
  std::atomic<bool> stop = false;
  std::thread traffic([&] {
    while (!stop) {
      pollfd writable{pty.master(), POLLOUT, 0};
      if (::poll(&writable, 1, 10) > 0 && (writable.revents & POLLOUT) != 0) {
        [[maybe_unused]] const auto written = ::write(pty.master(), "0123456789", 10);
      }
      std::this_thread::yield();
    }
  });
  for (int i = 0; i < 60; ++i) {
    EXPECT_TRUE(port->open());
    if (i % 3 == 0) bench.mainQueue.runAll();
    EXPECT_TRUE(port->sendData("x"));
    EXPECT_TRUE(port->close());
  }
  stop = true;
  traffic.join();
  bench.mainQueue.runAll();
  EXPECT_EQ(delegate->events.count("opened"), 60);
  EXPECT_EQ(delegate->events.count("closed"), 60);
  EXPECT_EQ(delegate->events.size(), 120) << delegate->events.join(u' ').toStdString();
  EXPECT_EQ(bench.terminal.count(Call::Open), bench.terminal.count(Call::Close));
}

}  // namespace
}  // namespace tavril
