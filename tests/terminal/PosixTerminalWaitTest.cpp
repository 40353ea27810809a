#include "terminal/PosixTerminalCalls.h"
#include "tests/support/Pty.h"
#include "tests/support/WaitFor.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cerrno>
#include <fstream>
#include <future>
#include <pthread.h>
#include <string>
#include <thread>

#include <signal.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace tavril {
namespace {

using namespace std::chrono_literals;

/// Whoever waits so long was not woken; longer than the patience of waitFor().
constexpr auto forEver = std::chrono::milliseconds(60s);

std::atomic<int> signalsHandled = 0;

/// A thread that makes one call, and can be interrupted in it by a signal that asks for no restart.
class InterruptibleCall {
 public:
  explicit InterruptibleCall(std::function<CallResult()> call) {
    struct sigaction action {};
    action.sa_handler = [](int) { ++signalsHandled; };
    ::sigaction(SIGUSR1, &action, &previous_);
    thread_ = std::thread([this, call = std::move(call)] {
      thread_id_ = static_cast<long>(::syscall(SYS_gettid));
      result_ = call();
      returned_ = true;
    });
  }
  ~InterruptibleCall() {
    thread_.join();
    ::sigaction(SIGUSR1, &previous_, nullptr);
  }

  /// Waits until the thread sleeps in this system call.
  bool isBlockedIn(long systemCall) {
    return waitFor([&] {
             std::ifstream file("/proc/self/task/" + std::to_string(thread_id_) + "/syscall");
             std::string number;
             return returned_ || (file >> number && number == std::to_string(systemCall));
           }) &&
           !returned_;
  }
  /// Sends a signal and waits until it has been handled.
  bool interrupt() {
    const int before = signalsHandled;
    ::pthread_kill(thread_.native_handle(), SIGUSR1);
    return waitFor([&] { return signalsHandled > before; });
  }
  bool hasReturned() const { return returned_; }
  CallResult result() {
    EXPECT_TRUE(waitFor([&] { return returned_.load(); }));
    return result_;
  }

 private:
  std::thread thread_;
  std::atomic<long> thread_id_ = 0;
  std::atomic<bool> returned_ = false;
  CallResult result_;
  struct sigaction previous_ {};
};

class PosixTerminalWaitTest : public testing::Test {
 protected:
  PosixTerminalWaitTest() { calls.clearStatusFlags(descriptor); }
  ~PosixTerminalWaitTest() override {
    calls.closeWake(wake);
    calls.close(descriptor);
  }
  CallResult wait(std::chrono::milliseconds timeout) { return calls.waitForInput(descriptor, wake, timeout); }
  /// A wait that something has to end.
  CallResult waitUntilEnded() {
    const auto begin = std::chrono::steady_clock::now();
    const CallResult result = wait(forEver);
    EXPECT_LT(std::chrono::steady_clock::now() - begin, forEver) << "nothing ended the wait";
    return result;
  }

  Pty pty;
  PosixTerminalCalls calls;
  const int descriptor = static_cast<int>(calls.open(pty.path().toStdString()).value);
  const int wake = static_cast<int>(calls.openWake().value);
};

// ------------------------------------------------------------------------------------------------- waiting

TEST_F(PosixTerminalWaitTest, WaitsOutTheTimeWhenNothingComes) {
  const auto begin = std::chrono::steady_clock::now();
  const CallResult result = wait(30ms);
  EXPECT_EQ(result.value, 0);
  EXPECT_GE(std::chrono::steady_clock::now() - begin, 30ms);
}

TEST_F(PosixTerminalWaitTest, EndsWithInput) {
  pty.write("x");
  EXPECT_EQ(waitUntilEnded().value, 1);
}

TEST_F(PosixTerminalWaitTest, EndsAtOnceWhenWokenFromAnotherThread) {
  InterruptibleCall waiting([&] { return wait(forEver); });
  EXPECT_TRUE(waiting.isBlockedIn(SYS_ppoll));
  calls.wake(wake);
  EXPECT_EQ(waiting.result().value, 0) << "nothing has come";
}

TEST_F(PosixTerminalWaitTest, AWakeUpThatCameBeforeTheWaitIsNotLostAndKeepsWaking) {
  calls.wake(wake);
  calls.wake(wake);
  EXPECT_EQ(waitUntilEnded().value, 0);
  EXPECT_EQ(waitUntilEnded().value, 0);
  pty.write("x");
  EXPECT_EQ(waitUntilEnded().value, 1) << "input is seen beside the wake-up";
}

TEST_F(PosixTerminalWaitTest, AHungUpLineIsReadyAndReadsAsNothing) {
  pty.unplug();
  EXPECT_EQ(waitUntilEnded().value, 1);
  std::array<std::byte, 8> buffer{};
  const CallResult got = calls.read(descriptor, buffer);
  EXPECT_FALSE(got.failed());
  EXPECT_EQ(got.value, 0);
}

TEST_F(PosixTerminalWaitTest, ADescriptorThatIsNoneIsAnError) {
  const int none = ::dup(descriptor);
  ::close(none);
  EXPECT_EQ(calls.waitForInput(none, wake, forEver).error, EBADF);
}

TEST_F(PosixTerminalWaitTest, WithoutAWakeDescriptorOnlyInputAndTimeEndIt) {
  EXPECT_EQ(calls.waitForInput(descriptor, -1, 1ms).value, 0);
  pty.write("x");
  EXPECT_EQ(calls.waitForInput(descriptor, -1, forEver).value, 1);
}

TEST_F(PosixTerminalWaitTest, ASignalEndsTheWaitWithoutAnError) {
  InterruptibleCall waiting([&] { return wait(forEver); });
  ASSERT_TRUE(waiting.isBlockedIn(SYS_ppoll));
  EXPECT_TRUE(waiting.interrupt());
  const CallResult result = waiting.result();
  EXPECT_EQ(result.value, 0);
  EXPECT_EQ(result.error, 0);
}

TEST_F(PosixTerminalWaitTest, TheWakeDescriptorIsNotInheritedAndWakingItNeverBlocks) {
  EXPECT_EQ(::fcntl(wake, F_GETFD), FD_CLOEXEC);
  EXPECT_NE(::fcntl(wake, F_GETFL) & O_NONBLOCK, 0);
  const std::uint64_t nearlyFull = ~std::uint64_t{0} - 1;
  ASSERT_EQ(::write(wake, &nearlyFull, sizeof nearlyFull), static_cast<ssize_t>(sizeof nearlyFull));
  calls.wake(wake);
  EXPECT_EQ(waitUntilEnded().value, 0);
}

TEST_F(PosixTerminalWaitTest, ClosingAWakeDescriptorGivesItBack) {
  const int other = static_cast<int>(calls.openWake().value);
  calls.closeWake(other);
  EXPECT_EQ(::fcntl(other, F_GETFD), -1);
}

// -------------------------------------------------------------------------------------- reading and writing

TEST_F(PosixTerminalWaitTest, BytesGoBothWays) {
  pty.write("abc");
  std::array<std::byte, 8> buffer{};
  ASSERT_EQ(calls.read(descriptor, buffer).value, 3);
  EXPECT_EQ(buffer[2], std::byte{'c'});
  const std::array bytes{std::byte{'x'}, std::byte{'y'}};
  EXPECT_EQ(calls.write(descriptor, bytes).value, 2);
  EXPECT_EQ(pty.read(2), "xy");
}

TEST_F(PosixTerminalWaitTest, ReadingAndWritingNothingThatIsOpenFails) {
  std::array<std::byte, 8> buffer{};
  EXPECT_EQ(calls.read(-1, buffer).error, EBADF);
  EXPECT_EQ(calls.write(-1, buffer).error, EBADF);
}

TEST_F(PosixTerminalWaitTest, WritingToAHungUpLineFails) {
  pty.unplug();
  const std::array bytes{std::byte{'x'}};
  EXPECT_EQ(calls.write(descriptor, bytes).error, EIO);
}

TEST_F(PosixTerminalWaitTest, AReadThatIsInterruptedIsRepeated) {
  std::array<std::byte, 8> buffer{};
  InterruptibleCall reading([&] { return calls.read(descriptor, buffer); });
  for (int i = 0; i < 3; ++i) {
    EXPECT_TRUE(reading.isBlockedIn(SYS_read));
    EXPECT_TRUE(reading.interrupt());
  }
  EXPECT_TRUE(reading.isBlockedIn(SYS_read));
  pty.write("late");
  EXPECT_EQ(reading.result().value, 4);
}

TEST_F(PosixTerminalWaitTest, AWriteThatIsInterruptedIsRepeated) {
  // The line stands still until its output is started again.
  ASSERT_EQ(::tcflow(pty.slave(), TCOOFF), 0);
  const std::array bytes{std::byte{'x'}, std::byte{'y'}};
  InterruptibleCall writing([&] { return calls.write(descriptor, bytes); });
  for (int i = 0; i < 3; ++i) {
    EXPECT_TRUE(writing.isBlockedIn(SYS_write));
    EXPECT_TRUE(writing.interrupt());
  }
  EXPECT_TRUE(writing.isBlockedIn(SYS_write));
  ASSERT_EQ(::tcflow(pty.slave(), TCOON), 0);
  EXPECT_EQ(writing.result().value, 2);
  EXPECT_EQ(pty.read(2), "xy");
}

TEST_F(PosixTerminalWaitTest, AReadThatSleepsAndLaterOnesEndWhenTheyMayNotBlockAnyMore) {
  std::array<std::byte, 8> buffer{};
  InterruptibleCall reading([&] { return calls.read(descriptor, buffer); });
  EXPECT_TRUE(reading.isBlockedIn(SYS_read));
  EXPECT_FALSE(calls.stopBlocking(descriptor).failed());
  EXPECT_EQ(reading.result().error, EAGAIN);
  EXPECT_EQ(calls.read(descriptor, buffer).error, EAGAIN);
}

TEST_F(PosixTerminalWaitTest, AWriteThatIsHeldUpEndsWhenItMayNotBlockAnyMore) {
  ASSERT_EQ(::tcflow(pty.slave(), TCOOFF), 0);
  const std::array bytes{std::byte{'x'}};
  InterruptibleCall writing([&] { return calls.write(descriptor, bytes); });
  EXPECT_TRUE(writing.isBlockedIn(SYS_write));
  EXPECT_FALSE(calls.stopBlocking(descriptor).failed());
  EXPECT_EQ(writing.result().error, EAGAIN);
}

TEST_F(PosixTerminalWaitTest, WhatIsNotOpenOrHungUpCannotBeKeptFromBlocking) {
  EXPECT_EQ(calls.stopBlocking(-1).error, EBADF);
  pty.unplug();
  EXPECT_EQ(calls.stopBlocking(descriptor).error, EIO);
}

}  // namespace
}  // namespace tavril
