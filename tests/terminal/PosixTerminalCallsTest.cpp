#include "platform/Log.h"
#include "terminal/PosixTerminalCalls.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/ProcessCounts.h"
#include "tests/support/Pty.h"
#include "tests/support/RecordingLog.h"
#include "tests/support/Rescue.h"
#include "tests/support/WaitFor.h"
#include "tests/terminal/TerminalFaults.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cerrno>
#include <future>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <termios.h>

namespace tavril {
namespace {

using namespace std::chrono_literals;

class PosixTerminalCallsTest : public testing::Test {
 protected:
  PosixTerminalCallsTest() { terminalFaults() = {}; }
  ~PosixTerminalCallsTest() override {
    terminalFaults() = {};
    if (descriptor >= 0) ::close(descriptor);
  }

  std::string path() const { return pty.path().toStdString(); }
  int opened() {
    const CallResult result = calls.open(path());
    EXPECT_FALSE(result.failed()) << result.error;
    return descriptor = static_cast<int>(result.value);
  }
  int exclusive() const {
    int flag = -1;
    ::ioctl(pty.slave(), TIOCGEXCL, &flag);
    return flag;
  }
  bool lockedByUs() const { return ::flock(pty.slave(), LOCK_EX | LOCK_NB) != 0; }

  Pty pty;
  RecordingLog log;
  PosixTerminalCalls calls{linesTo(log)};
  int descriptor = -1;
};

// ------------------------------------------------------------------------------------------------- opening

TEST_F(PosixTerminalCallsTest, OpensForReadingAndWritingNotWaitingAndNotInherited) {
  opened();
  EXPECT_EQ(::fcntl(descriptor, F_GETFL) & O_ACCMODE, O_RDWR);
  EXPECT_NE(::fcntl(descriptor, F_GETFL) & O_NONBLOCK, 0);
  EXPECT_EQ(::fcntl(descriptor, F_GETFD), FD_CLOEXEC);
}

TEST_F(PosixTerminalCallsTest, TheDescriptorIsNoneOfTheStandardStreamsEvenWhenTheyAreClosed) {
  EXPECT_EQ(exitStatusOfChild([&] {
              for (const int stream : {0, 1, 2}) ::close(stream);
              const CallResult result = calls.open(path());
              if (result.value <= 2) return 1;
              if (::fcntl(static_cast<int>(result.value), F_GETFD) != FD_CLOEXEC) return 2;
              for (const int stream : {0, 1, 2}) {
                if (::fcntl(stream, F_GETFD) != -1) return 3;  // the one that was moved away was left open
              }
              return 42;
            }),
            42);
}

TEST_F(PosixTerminalCallsTest, TheDescriptorIsNotTheOneStandardStreamThatIsClosed) {
  for (const int closed : {0, 1, 2}) {
    EXPECT_EQ(exitStatusOfChild([&] {
                ::close(closed);
                const CallResult result = calls.open(path());
                return result.value > 2 && ::fcntl(closed, F_GETFD) == -1 ? 42 : 1;
              }),
              42)
        << closed;
  }
}

TEST_F(PosixTerminalCallsTest, TheTerminalDoesNotBecomeTheControllingOne) {
  EXPECT_EQ(exitStatusOfChild([&] {
              if (::setsid() < 0 || calls.open(path()).failed()) return 1;
              return ::open("/dev/tty", O_RDWR | O_CLOEXEC) < 0 && errno == ENXIO ? 42 : 2;
            }),
            42);
}

TEST_F(PosixTerminalCallsTest, AnOpenThatIsInterruptedIsRepeated) {
  terminalFaults().open = {EINTR, 3};
  EXPECT_GT(opened(), 2);
}

TEST_F(PosixTerminalCallsTest, AnOpenThatFailsGivesItsError) {
  EXPECT_EQ(calls.open("/dev/no-such-terminal").error, ENOENT);
  terminalFaults().open = {EPERM, 1};
  const CallResult refused = calls.open(path());
  EXPECT_TRUE(refused.failed());
  EXPECT_EQ(refused.error, EPERM);
}

TEST_F(PosixTerminalCallsTest, ANewTerminalThatMayNotBeUsedYetIsTriedAgain) {
  terminalFaults().open = {EACCES, 3};
  EXPECT_GT(opened(), 2);
  EXPECT_EQ(terminalFaults().open.times, 0);
}

TEST_F(PosixTerminalCallsTest,
       ATerminalThatMayNotBeUsedIsTriedOnceWhenItIsOldAndForTwoSecondsAtMostWhenItIsNew) {
  terminalFaults().open = {EACCES, 1000};
  EXPECT_EQ(calls.open("/dev/null").error, EACCES);
  EXPECT_EQ(terminalFaults().open.times, 999);
  EXPECT_EQ(calls.open(path()).error, EACCES);
  EXPECT_LT(terminalFaults().open.times, 998);
  EXPECT_GE(terminalFaults().open.times, 998 - 2000 / 50);
  terminalFaults().open = {};
}

TEST_F(PosixTerminalCallsTest, BetweenItsAttemptsTheOpenerPausesAsItWasToldTo) {
  std::vector<std::chrono::milliseconds> pauses;
  PosixTerminalCalls pausing(linesTo(log),
                             [&](std::chrono::milliseconds duration) { pauses.push_back(duration); });
  terminalFaults().open = {EACCES, 3};
  const CallResult result = pausing.open(path());
  ASSERT_FALSE(result.failed());
  ::close(static_cast<int>(result.value));
  EXPECT_EQ(pauses, std::vector(3, PosixTerminalCalls::betweenAttempts));
}

TEST_F(PosixTerminalCallsTest, AMovedDescriptorThatCannotBeHadGivesTheReasonAndLeavesNoneOpen) {
  EXPECT_EQ(exitStatusOfChild([&] {
              ::close(0);
              terminalFaults().fcntl = {EMFILE, 1};
              const CallResult result = calls.open(path());
              if (!result.failed() || result.error != EMFILE) return 1;
              return ::fcntl(0, F_GETFD) == -1 ? 42 : 2;
            }),
            42);
}

TEST_F(PosixTerminalCallsTest, ClearingTheStatusFlagsMakesReadsAndWritesBlock) {
  opened();
  terminalFaults().fcntl = {EINTR, 1};
  EXPECT_FALSE(calls.clearStatusFlags(descriptor).failed());
  EXPECT_EQ(::fcntl(descriptor, F_GETFL) & (O_NONBLOCK | O_APPEND), 0);
  EXPECT_EQ(calls.clearStatusFlags(-1).error, EBADF);
}

TEST_F(PosixTerminalCallsTest, ADescriptorThatCannotBeKeptFromBlockingGivesTheReason) {
  opened();
  terminalFaults().fcntl = {EPERM, 1};
  EXPECT_EQ(calls.stopBlocking(descriptor).error, EPERM);
}

// ------------------------------------------------------------------------------------------------- locking

TEST_F(PosixTerminalCallsTest, LockingKeepsOtherOpenersOut) {
  EXPECT_EQ(exclusive(), 0);
  // Opened before, for then the flag keeps out everybody but the superuser.
  const int second = static_cast<int>(calls.open(path()).value);
  terminalFaults().flock = {EINTR, 2};
  EXPECT_FALSE(calls.lock(opened()).failed());
  EXPECT_EQ(exclusive(), 1);
  EXPECT_TRUE(lockedByUs());
  EXPECT_EQ(calls.lock(second).error, EWOULDBLOCK);
  ::close(second);
}

TEST_F(PosixTerminalCallsTest, ALostRaceForTheLockLeavesNoFlag) {
  ASSERT_EQ(::flock(pty.slave(), LOCK_EX | LOCK_NB), 0);
  EXPECT_EQ(calls.lock(opened()).error, EWOULDBLOCK);
  EXPECT_EQ(exclusive(), 0);
}

TEST_F(PosixTerminalCallsTest, ATerminalThatSomebodyClaimedWithoutALockIsRefusedEvenToTheSuperuser) {
  opened();
  ASSERT_EQ(::ioctl(pty.slave(), TIOCEXCL), 0);
  EXPECT_EQ(calls.lock(descriptor).error, EBUSY);
  EXPECT_EQ(exclusive(), 1) << "the flag is the other program's";
}

TEST_F(PosixTerminalCallsTest, AnUnprivilegedUserIsRefusedByTheFlagAtOpening) {
  ASSERT_EQ(::chmod(path().c_str(), 0666), 0);
  const auto asNobody = [&] {
    if (!becomeNobody()) return 1;
    const CallResult result = calls.open(path());
    return result.failed() ? 100 + result.error : 42;
  };
  EXPECT_EQ(exitStatusOfChild(asNobody), 42);
  ASSERT_FALSE(calls.lock(opened()).failed());
  EXPECT_EQ(exitStatusOfChild(asNobody), 100 + EBUSY);
  ASSERT_FALSE(calls.unlock(descriptor).failed());
  EXPECT_EQ(exitStatusOfChild(asNobody), 42);
}

TEST_F(PosixTerminalCallsTest, AnUnprivilegedUserCanLockAndIsRefusedWhatAnotherHasLocked) {
  ASSERT_EQ(::chmod(path().c_str(), 0666), 0);
  const auto asNobody = [&] {
    if (!becomeNobody()) return 1;
    const CallResult locked = calls.lock(static_cast<int>(calls.open(path()).value));
    return locked.failed() ? 100 + locked.error : 42;
  };
  EXPECT_EQ(exitStatusOfChild(asNobody), 42);
  ASSERT_EQ(::ioctl(pty.slave(), TIOCNXCL), 0);  // the child has left its flag behind, as a crash does
  ASSERT_EQ(::flock(pty.slave(), LOCK_EX | LOCK_NB), 0);
  EXPECT_EQ(exitStatusOfChild(asNobody), 100 + EWOULDBLOCK);
}

TEST_F(PosixTerminalCallsTest, AClaimThatTheKernelRefusesIsAFailure) {
  opened();
  terminalFaults().setExclusive = {EIO, 1};
  EXPECT_EQ(calls.lock(descriptor).error, EIO);
}

TEST_F(PosixTerminalCallsTest, UnlockingClearsTheFlagAndTheLock) {
  ASSERT_FALSE(calls.lock(opened()).failed());
  EXPECT_FALSE(calls.unlock(descriptor).failed());
  EXPECT_EQ(exclusive(), 0);
  EXPECT_FALSE(lockedByUs());
  EXPECT_EQ(calls.unlock(-1).error, EBADF);
}

// ------------------------------------------------------------------------------------------------ settings

TEST_F(PosixTerminalCallsTest, SettingsAreReadAndSet) {
  opened();
  terminalFaults().tcgetattr = {EINTR, 1};
  termios attributes{};
  ASSERT_FALSE(calls.attributes(descriptor, attributes).failed());
  EXPECT_EQ(attributes.c_lflag & ECHO, 0u);
  attributes.c_lflag |= ECHO;
  terminalFaults().tcsetattr = {EINTR, 1};
  EXPECT_FALSE(calls.setAttributes(descriptor, WhenToApply::Now, attributes).failed());
  EXPECT_NE(pty.attributes().c_lflag & ECHO, 0u);
  EXPECT_EQ(calls.attributes(-1, attributes).error, EBADF);
  EXPECT_EQ(calls.setAttributes(-1, WhenToApply::Now, attributes).error, EBADF);
}

TEST_F(PosixTerminalCallsTest, OutputThatDrainsIsWaitedForAndNotDropped) {
  opened();
  termios attributes = pty.attributes();
  attributes.c_lflag |= ECHO;
  EXPECT_FALSE(calls.setAttributes(descriptor, WhenToApply::AfterDrain, attributes).failed());
  EXPECT_EQ(terminalFaults().outputFlushes, 0);
  EXPECT_GT(terminalFaults().drainsSeen, 0);
  EXPECT_NE(pty.attributes().c_lflag & ECHO, 0u);
}

TEST_F(PosixTerminalCallsTest, SettingsThatApplyNowDoNotWaitForTheOutput) {
  opened();
  terminalFaults().queuedOutput = 7;
  EXPECT_FALSE(calls.setAttributes(descriptor, WhenToApply::Now, pty.attributes()).failed());
  EXPECT_EQ(terminalFaults().drainsSeen, 0);
  EXPECT_EQ(terminalFaults().outputFlushes, 0);
}

TEST_F(PosixTerminalCallsTest, OutputThatNeverDrainsIsDroppedInTheEndAndTheSettingsAreMade) {
  opened();
  terminalFaults().queuedOutput = 7;
  termios attributes = pty.attributes();
  attributes.c_lflag |= ECHO;
  const auto begin = std::chrono::steady_clock::now();
  EXPECT_FALSE(calls.setAttributes(descriptor, WhenToApply::AfterDrain, attributes).failed());
  EXPECT_GE(std::chrono::steady_clock::now() - begin, PosixTerminalCalls::longestDrain);
  EXPECT_EQ(terminalFaults().outputFlushes, 1);
  // Waiting sleeps between its looks: one that spins looks many times as often.
  EXPECT_LE(terminalFaults().drainsSeen, 600);
  EXPECT_NE(pty.attributes().c_lflag & ECHO, 0u);
}

TEST_F(PosixTerminalCallsTest, WhatTheChipHasYetToSendIsWaitedForBeforeTheSettingsChange) {
  opened();
  termios attributes = pty.attributes();
  attributes.c_lflag |= ECHO;
  std::atomic<int> drains = 0;
  tcflag_t echoWhileSending = ECHO;
  terminalFaults().atChipDrain = [&] {
    std::promise<void>().get_future().wait_for(50ms);
    echoWhileSending = pty.attributes().c_lflag & ECHO;
    ++drains;
  };
  EXPECT_FALSE(calls.setAttributes(descriptor, WhenToApply::Now, attributes).failed());
  EXPECT_EQ(drains, 0);
  attributes.c_lflag &= ~static_cast<tcflag_t>(ECHO);
  EXPECT_FALSE(calls.setAttributes(descriptor, WhenToApply::AfterDrain, attributes).failed());
  EXPECT_EQ(drains, 1);
  EXPECT_EQ(echoWhileSending, static_cast<tcflag_t>(ECHO)) << "the settings were changed too early";
  EXPECT_EQ(pty.attributes().c_lflag & ECHO, 0u);
}

TEST_F(PosixTerminalCallsTest, AChipThatNeverSendsIsWaitedForOneSecondAndTheSettingsAreMade) {
  opened();
  std::promise<void> ends;
  terminalFaults().atChipDrain = [&] { ends.get_future().wait(); };
  Rescue rescue([&] { ends.set_value(); });
  termios attributes = pty.attributes();
  attributes.c_lflag |= ECHO;
  const auto begin = std::chrono::steady_clock::now();
  EXPECT_FALSE(calls.setAttributes(descriptor, WhenToApply::AfterDrain, attributes).failed());
  EXPECT_GE(std::chrono::steady_clock::now() - begin, PosixTerminalCalls::longestDrain);
  EXPECT_NE(pty.attributes().c_lflag & ECHO, 0u);
  EXPECT_FALSE(rescue.wasNeeded());
  const std::size_t descriptors = process::descriptors();
  ends.set_value();
  EXPECT_TRUE(waitFor([&] { return process::descriptors() == descriptors - 1; })) << "one was left behind";
}

TEST_F(PosixTerminalCallsTest, WithoutADescriptorToWaitForTheChipTheSettingsAreMadeAllTheSame) {
  opened();
  bool hasWaited = false;
  terminalFaults().atChipDrain = [&] { hasWaited = true; };
  terminalFaults().fcntl = {EMFILE, 1};
  termios attributes = pty.attributes();
  attributes.c_lflag |= ECHO;
  EXPECT_FALSE(calls.setAttributes(descriptor, WhenToApply::AfterDrain, attributes).failed());
  EXPECT_FALSE(hasWaited);
  EXPECT_NE(pty.attributes().c_lflag & ECHO, 0u);
}

TEST_F(PosixTerminalCallsTest, ALineThatIsGoneIsNotWaitedFor) {
  opened();
  pty.unplug();
  termios attributes{};
  EXPECT_EQ(calls.setAttributes(descriptor, WhenToApply::AfterDrain, attributes).error, EIO);
  EXPECT_EQ(terminalFaults().drainsSeen, 1);
}

// --------------------------------------------------------------------------------------------------- speed

TEST_F(PosixTerminalCallsTest, EverySpeedOfTheListIsEnteredForBothDirections) {
  constexpr std::array<std::pair<unsigned long, speed_t>, 30> speeds{{
      {50, B50},           {75, B75},           {110, B110},         {134, B134},         {150, B150},
      {200, B200},         {300, B300},         {600, B600},         {1200, B1200},       {1800, B1800},
      {2400, B2400},       {4800, B4800},       {9600, B9600},       {19200, B19200},     {38400, B38400},
      {57600, B57600},     {115200, B115200},   {230400, B230400},   {460800, B460800},   {500000, B500000},
      {576000, B576000},   {921600, B921600},   {1000000, B1000000}, {1152000, B1152000}, {1500000, B1500000},
      {2000000, B2000000}, {2500000, B2500000}, {3000000, B3000000}, {3500000, B3500000}, {4000000, B4000000},
  }};
  for (const auto &[baudRate, constant] : speeds) {
    termios attributes{};
    EXPECT_FALSE(calls.setSpeed(attributes, baudRate).failed()) << baudRate;
    EXPECT_EQ(cfgetospeed(&attributes), constant) << baudRate;
    EXPECT_EQ(cfgetispeed(&attributes), constant) << baudRate;
  }
}

TEST_F(PosixTerminalCallsTest, ASpeedThatTheRecordCannotHoldIsRefusedAndChangesNothing) {
  for (const unsigned long baudRate :
       {0ul, 49ul, 51ul, 9601ul, 123456ul, 250000ul, 4000001ul, (1ul << 32) + 9600ul}) {
    termios attributes{};
    cfsetspeed(&attributes, B19200);
    EXPECT_EQ(calls.setSpeed(attributes, baudRate).error, EINVAL) << baudRate;
    EXPECT_EQ(cfgetospeed(&attributes), static_cast<speed_t>(B19200)) << baudRate;
  }
}

TEST_F(PosixTerminalCallsTest, ANumberThatIsTheCLibrarysNameForAnotherSpeedIsRefused) {
  // In older C libraries B50 to B38400 are 1 to 15 and B57600 to B4000000 are 4097 to 4111.
  for (unsigned long first : {0ul, 4096ul}) {
    for (unsigned long baudRate = first; baudRate < first + 16; ++baudRate) {
      termios attributes{};
      EXPECT_EQ(calls.setSpeed(attributes, baudRate).error, EINVAL) << baudRate;
    }
  }
}

TEST_F(PosixTerminalCallsTest, AnySpeedIsSetThroughTheDriver) {
  opened();
  ASSERT_FALSE(calls.setArbitrarySpeed(descriptor, 123456).failed());
  EXPECT_EQ(kernelSpeeds(pty.slave()), (std::pair<unsigned, unsigned>(123456, 123456)));
  EXPECT_EQ(calls.setArbitrarySpeed(descriptor, 0).error, EINVAL);
  EXPECT_EQ(calls.setArbitrarySpeed(descriptor, 0x80000000ul).error, EINVAL);
  EXPECT_EQ(kernelSpeeds(pty.slave()), (std::pair<unsigned, unsigned>(123456, 123456)));
  EXPECT_EQ(calls.setArbitrarySpeed(-1, 9600).error, EBADF);
}

TEST_F(PosixTerminalCallsTest, SettingsWithSpeedsOutsideTheListArePutBackWhole) {
  opened();
  setKernelSpeeds(pty.slave(), 250000, 31250);
  ASSERT_EQ(kernelSpeeds(pty.slave()), (std::pair<unsigned, unsigned>(250000, 31250)));
  termios before{};
  ASSERT_FALSE(calls.attributes(descriptor, before).failed());

  termios during = before;
  ASSERT_FALSE(calls.setSpeed(during, 115200).failed());
  ASSERT_FALSE(calls.setAttributes(descriptor, WhenToApply::Now, during).failed());
  EXPECT_EQ(kernelSpeeds(pty.slave()), (std::pair<unsigned, unsigned>(115200, 115200)));
  EXPECT_FALSE(calls.setAttributes(descriptor, WhenToApply::AfterDrain, before).failed());
  EXPECT_EQ(kernelSpeeds(pty.slave()), (std::pair<unsigned, unsigned>(250000, 31250)));

  ASSERT_FALSE(calls.setArbitrarySpeed(descriptor, 123456).failed());
  EXPECT_FALSE(calls.setAttributes(descriptor, WhenToApply::AfterDrain, before).failed());
  EXPECT_EQ(kernelSpeeds(pty.slave()), (std::pair<unsigned, unsigned>(250000, 31250)));
}

TEST_F(PosixTerminalCallsTest, OtherSettingsOfALineLeaveItsSpeedsOutsideTheListAlone) {
  opened();
  setKernelSpeeds(pty.slave(), 250000, 31250);
  termios attributes{};
  ASSERT_FALSE(calls.attributes(descriptor, attributes).failed());
  attributes.c_lflag |= ECHO;
  EXPECT_FALSE(calls.setAttributes(descriptor, WhenToApply::Now, attributes).failed());
  EXPECT_NE(pty.attributes().c_lflag & ECHO, 0u);
  EXPECT_FALSE(calls.stopBlocking(descriptor).failed());
  EXPECT_EQ(kernelSpeeds(pty.slave()), (std::pair<unsigned, unsigned>(250000, 31250)));
}

TEST_F(PosixTerminalCallsTest, ADriverThatChoosesAnotherSpeedByMoreThanTwoPercentIsAFailure) {
  opened();
  for (const unsigned chosen : {98000u, 100000u, 102000u}) {
    terminalFaults().speedChosen = chosen;
    EXPECT_FALSE(calls.setArbitrarySpeed(descriptor, 100000).failed()) << chosen;
  }
  for (const unsigned chosen : {0u, 97999u, 102001u, 9600u}) {
    terminalFaults().speedChosen = chosen;
    EXPECT_EQ(calls.setArbitrarySpeed(descriptor, 100000).error, EINVAL) << chosen;
  }
}

// -------------------------------------------------------------------------------------------- flow control

TEST_F(PosixTerminalCallsTest, HardwareFlowControlIsEnteredAndTakenOut) {
  termios attributes{};
  attributes.c_cflag = CS8;
  EXPECT_FALSE(calls.setFlowControl(attributes, {.rtsCts = true}).failed());
  EXPECT_EQ(attributes.c_cflag, CS8 | CRTSCTS);
  EXPECT_FALSE(calls.setFlowControl(attributes, {}).failed());
  EXPECT_EQ(attributes.c_cflag, static_cast<tcflag_t>(CS8));
}

TEST_F(PosixTerminalCallsTest, FlowControlByOtherPinsIsNotSupportedAndTheRestIsEnteredAllTheSame) {
  for (const FlowControl &wanted : {FlowControl{true, true, false}, FlowControl{true, false, true}}) {
    termios attributes{};
    EXPECT_EQ(calls.setFlowControl(attributes, wanted).error, ENOTSUP);
    EXPECT_EQ(attributes.c_cflag, CRTSCTS);
  }
}

// ---------------------------------------------------------------------------------------------------- pins

TEST_F(PosixTerminalCallsTest, ATerminalWithoutPinsShowsNoneSetAndThisIsNotedOnce) {
  opened();
  int pins = 0x1234;
  EXPECT_FALSE(calls.pins(descriptor, pins).failed());
  EXPECT_EQ(pins, 0);
  EXPECT_FALSE(calls.setPins(descriptor, Pin::rts).failed());
  EXPECT_FALSE(calls.pins(descriptor, pins).failed());
  EXPECT_EQ(log.lines(), QStringList{"This terminal has no modem lines; its pins count as not set."});
}

TEST_F(PosixTerminalCallsTest, PinsAreReadAndDriven) {
  opened();
  terminalFaults().pins = TIOCM_CTS | TIOCM_DTR;
  terminalFaults().modemLines = {EINTR, 1};
  int pins = 0;
  EXPECT_FALSE(calls.pins(descriptor, pins).failed());
  EXPECT_EQ(pins, Pin::cts | Pin::dtr);
  terminalFaults().modemLines = {EINTR, 1};
  EXPECT_FALSE(calls.setPins(descriptor, Pin::rts).failed());
  EXPECT_EQ(terminalFaults().pins, TIOCM_RTS);
  EXPECT_TRUE(log.lines().isEmpty());
}

TEST_F(PosixTerminalCallsTest, AHungUpLineIsADeviceThatIsGone) {
  opened();
  pty.unplug();
  int pins = 0;
  EXPECT_EQ(calls.pins(descriptor, pins).error, ENXIO);
  EXPECT_EQ(calls.setPins(descriptor, 0).error, ENXIO);
}

TEST_F(PosixTerminalCallsTest, OnlyTheErrorsOfAMissingDeviceCountAsOne) {
  opened();
  const std::vector<std::pair<int, int>> translations{
      {ENODEV, ENXIO}, {ENXIO, ENXIO}, {EINVAL, EINVAL}, {EPERM, EPERM}, {EPROTO, EPROTO}};
  for (const auto &[given, told] : translations) {
    int pins = 0;
    terminalFaults().modemLines = {given, 1};
    EXPECT_EQ(calls.pins(descriptor, pins).error, told) << given;
    terminalFaults().modemLines = {given, 1};
    EXPECT_EQ(calls.setPins(descriptor, 0).error, told) << given;
  }
  EXPECT_TRUE(log.lines().isEmpty());
}

TEST_F(PosixTerminalCallsTest, AFailedTransferOnALineThatIsNotHungUpIsNoMissingDevice) {
  opened();
  int pins = 0;
  terminalFaults().modemLines = {EIO, 1};
  EXPECT_EQ(calls.pins(descriptor, pins).error, EIO);
  terminalFaults().modemLines = {EIO, 1};
  EXPECT_EQ(calls.setPins(descriptor, 0).error, EIO);
}

// ------------------------------------------------------------------------------------------------- closing

TEST_F(PosixTerminalCallsTest, ClosingFailsOnlyForADescriptorThatIsNone) {
  opened();
  EXPECT_FALSE(calls.close(descriptor).failed());
  EXPECT_EQ(calls.close(descriptor).error, EBADF);
  descriptor = -1;
}

TEST_F(PosixTerminalCallsTest, ACloseThatReportsAnErrorHasClosedAllTheSame) {
  for (const int error : {EINTR, EIO}) {
    opened();
    terminalFaults().close = {error, 1};
    EXPECT_FALSE(calls.close(descriptor).failed()) << error;
    EXPECT_EQ(::fcntl(descriptor, F_GETFD), -1);
    descriptor = -1;
  }
}

}  // namespace
}  // namespace tavril
