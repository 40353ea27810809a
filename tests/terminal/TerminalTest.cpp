#include "terminal/PosixTerminalCalls.h"
#include "terminal/Terminal.h"
#include "tests/support/FaultyTerminalCalls.h"
#include "tests/support/Ownership.h"
#include "tests/support/PassedCalls.h"
#include "tests/support/Pty.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <cstddef>
#include <functional>
#include <future>
#include <span>
#include <string>
#include <vector>

namespace tavril {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;

std::span<const std::byte> bytesOf(const std::string &text) {
  return std::as_bytes(std::span(text));
}

/// Notes for how long is waited at a time.
class NotedWaits final : public PassedCalls {
 public:
  using PassedCalls::PassedCalls;
  CallResult waitForInput(int descriptor, int wake, std::chrono::microseconds timeout) override {
    timeouts.push_back(timeout);
    return PassedCalls::waitForInput(descriptor, wake, timeout);
  }

  std::vector<std::chrono::microseconds> timeouts;

 private:
  CallResult pass(Call, const std::function<CallResult()> &make) override { return make(); }
};

class TerminalTest : public testing::Test {
 protected:
  std::string path() const { return pty.path().toStdString(); }
  void open(unsigned long baudRate = 115200) {
    const auto failure = terminal.open(path(), baudRate);
    ASSERT_FALSE(failure) << failure->text();
  }
  Terminal::Input readUntil(Terminal::Clock::time_point deadline) { return terminal.read(buffer, deadline); }
  Terminal::Input readFor(std::chrono::microseconds time) { return readUntil(Terminal::Clock::now() + time); }
  std::string heard(const Terminal::Input &input) const {
    return {reinterpret_cast<const char *>(buffer.data()), input.count};
  }
  bool isAsBefore() const { return sameAttributes(pty.attributes(), before) && isFree(); }
  bool isFree() const { return isUnlocked(pty) && !isExclusive(pty); }

  Pty pty;
  const termios before = oddAttributes(pty);
  PosixTerminalCalls posix;
  FaultyTerminalCalls calls{posix};
  Terminal terminal{calls};
  std::array<std::byte, 64> buffer{};
};

// ------------------------------------------------------------------------------------- opening and closing

TEST_F(TerminalTest, OpensARawLineAtTheSpeedThatNobodyElseMayOpen) {
  open();
  EXPECT_TRUE(terminal.isOpen());
  const termios line = pty.attributes();
  EXPECT_EQ(cfgetospeed(&line), speed_t{B115200});
  EXPECT_EQ(cfgetispeed(&line), speed_t{B115200});
  EXPECT_EQ(line.c_cflag & CSIZE, tcflag_t{CS8});
  EXPECT_EQ(line.c_cflag & (PARENB | CSTOPB | CRTSCTS), tcflag_t{0});
  EXPECT_EQ(line.c_lflag & (ICANON | ECHO), tcflag_t{0});
  EXPECT_FALSE(isUnlocked(pty));
  EXPECT_TRUE(isExclusive(pty));
}

TEST_F(TerminalTest, ClosingPutsBackWhatWasThereAndLetsOthersIn) {
  open();
  EXPECT_FALSE(terminal.close());
  EXPECT_FALSE(terminal.isOpen());
  EXPECT_TRUE(isAsBefore());
  EXPECT_FALSE(terminal.close()) << "closing twice is no failure";
}

TEST_F(TerminalTest, ItsEndClosesIt) {
  {
    Terminal other(posix);
    EXPECT_FALSE(other.open(path(), 9600));
    EXPECT_FALSE(isFree());
  }
  EXPECT_TRUE(isAsBefore());
}

TEST_F(TerminalTest, OpensAndClosesWithTheseCallsInThisOrder) {
  open();
  terminal.close();
  EXPECT_THAT(calls.order(),
              ElementsAre(Call::Open, Call::Lock, Call::ClearStatusFlags, Call::OpenWake, Call::Attributes,
                          Call::Attributes, Call::SetFlowControl, Call::SetSpeed, Call::SetAttributes,
                          Call::SetLowLatency, Call::StopBlocking, Call::Attributes, Call::SetFlowControl,
                          Call::SetAttributes, Call::SetAttributes, Call::Unlock, Call::Close));
}

TEST_F(TerminalTest, TakesLowLatencyAndGivesItBack) {
  calls.setLowLatencyOfLine(false);
  open();
  EXPECT_EQ(calls.lowLatencyOfLine(), true);
  terminal.close();
  EXPECT_EQ(calls.lowLatencyOfLine(), false);
}

TEST_F(TerminalTest, TakesAnySpeedButNone) {
  open(250000);
  const auto failure = terminal.open(path(), 0);
  ASSERT_TRUE(failure);
  EXPECT_EQ(failure->number, EINVAL);
  EXPECT_EQ(failure->tried, "set up " + path());
  EXPECT_FALSE(terminal.isOpen());
  EXPECT_TRUE(isAsBefore());
}

TEST_F(TerminalTest, SaysWhatWasTriedAndWhyItFailed) {
  const auto failure = terminal.open("/no/such/terminal", 9600);
  ASSERT_TRUE(failure);
  EXPECT_EQ(failure->number, ENOENT);
  EXPECT_EQ(failure->text(), "open /no/such/terminal: No such file or directory");
  EXPECT_FALSE(failure->isGone());
}

TEST_F(TerminalTest, ATerminalThatAnotherHasIsRefusedAndLeftAlone) {
  Terminal other(posix);
  ASSERT_FALSE(other.open(path(), 9600));
  const auto failure = terminal.open(path(), 115200);
  ASSERT_TRUE(failure);
  EXPECT_THAT(failure->number, testing::AnyOf(EBUSY, EWOULDBLOCK));
  EXPECT_FALSE(terminal.isOpen());
  const termios line = pty.attributes();
  EXPECT_EQ(cfgetospeed(&line), speed_t{B9600});
  EXPECT_FALSE(isFree());
}

TEST_F(TerminalTest, IfItCannotBeSetUpItIsAsBefore) {
  // The first reading is that of what is to be put back.
  calls.atCall = [this, readings = 0](Call call) mutable {
    if (call == Call::Attributes && ++readings == 2) calls.fail(Call::Attributes, EIO, 1);
  };
  const auto failure = terminal.open(path(), 115200);
  ASSERT_TRUE(failure);
  EXPECT_EQ(failure->number, EIO);
  EXPECT_TRUE(isAsBefore());
}

// ---------------------------------------------------------------------------------------- reading and
// writing

TEST_F(TerminalTest, WritesMoreThanTheKernelTakesAtOnce) {
  open();
  const std::string all(20'000, 'x');
  auto received = std::async(std::launch::async, [&] { return pty.read(20'000); });
  EXPECT_FALSE(terminal.write(bytesOf(all)));
  EXPECT_EQ(received.get().toStdString(), all);
}

TEST_F(TerminalTest, ReadsWhatIsThereAndStampsIt) {
  open();
  const auto begin = Terminal::Clock::now();
  pty.write("\xFF\x06\x91");
  const Terminal::Input input = readFor(20s);
  EXPECT_FALSE(input.failure);
  EXPECT_EQ(heard(input), "\xFF\x06\x91");
  EXPECT_GE(input.came, begin);
  EXPECT_LE(input.came, Terminal::Clock::now());
}

TEST_F(TerminalTest, ReadsNoMoreThanFits) {
  open();
  pty.write("abcd");
  const Terminal::Input input = terminal.read(std::span(buffer).first(3), Terminal::Clock::now() + 20s);
  EXPECT_EQ(heard(input), "abc");
  EXPECT_EQ(heard(readFor(20s)), "d");
}

TEST_F(TerminalTest, WaitsUntilTheDeadlineAndNotForTheNextMillisecond) {
  NotedWaits noted{posix};
  Terminal patient{noted};
  ASSERT_FALSE(patient.open(path(), 115200));
  const auto begin = Terminal::Clock::now();
  const Terminal::Input input = patient.read(buffer, begin + 900us);
  EXPECT_FALSE(input.failure);
  EXPECT_EQ(input.count, 0u);
  EXPECT_GE(Terminal::Clock::now() - begin, 900us);
  ASSERT_FALSE(noted.timeouts.empty());
  EXPECT_LE(noted.timeouts.front(), 900us);
}

TEST_F(TerminalTest, ReadsWhatIsThereEvenIfTheDeadlineHasPassed) {
  open();
  pty.write("x");
  EXPECT_EQ(heard(readUntil(Terminal::Clock::now() - 1s)), "x");
  EXPECT_EQ(readUntil(Terminal::Clock::now() - 1s).count, 0u);
}

TEST_F(TerminalTest, WaitsOnIfAnotherProgramHasTakenTheBytes) {
  open();
  calls.fail(Call::Read, EAGAIN, 1);
  pty.write("x");
  EXPECT_EQ(heard(readFor(20s)), "x");
}

TEST_F(TerminalTest, AFailedWaitAndAFailedReadAreTold) {
  open();
  calls.fail(Call::Wait, ENOMEM, 1);
  auto input = readFor(20s);
  ASSERT_TRUE(input.failure);
  EXPECT_EQ(input.failure->tried, "wait for " + path());
  EXPECT_EQ(input.failure->number, ENOMEM);
  calls.fail(Call::Read, EIO, 1);
  pty.write("x");
  input = readFor(20s);
  ASSERT_TRUE(input.failure);
  EXPECT_EQ(input.failure->tried, "read from " + path());
  EXPECT_TRUE(input.failure->isGone());
}

TEST_F(TerminalTest, AClosedTerminalNeitherReadsNorWrites) {
  const Terminal::Input input = readFor(20s);
  ASSERT_TRUE(input.failure);
  EXPECT_EQ(input.failure->number, EBADF);
  const auto failure = terminal.write(bytesOf("x"));
  ASSERT_TRUE(failure);
  EXPECT_EQ(failure->number, EBADF);
  EXPECT_TRUE(calls.order().empty());
}

// ------------------------------------------------------------------------------------------------ the unplug

TEST_F(TerminalTest, AfterUnpluggingEachReadAndWriteSaysThatTheDeviceIsGone) {
  open();
  pty.unplug();
  const auto begin = Terminal::Clock::now();
  for (int i = 0; i < 3; ++i) {
    const Terminal::Input input = readFor(20s);
    ASSERT_TRUE(input.failure);
    EXPECT_EQ(input.failure->number, ENXIO);
    EXPECT_TRUE(input.failure->isGone());
  }
  EXPECT_LT(Terminal::Clock::now() - begin, 20s) << "a line that is hung up is not waited for";
  const auto failure = terminal.write(bytesOf("x"));
  ASSERT_TRUE(failure);
  EXPECT_EQ(failure->number, EIO);
  EXPECT_TRUE(failure->isGone());
  EXPECT_FALSE(terminal.close());
}

TEST_F(TerminalTest, UnpluggingEndsAReadThatWaits) {
  open();
  calls.atCall = [this](Call call) {
    if (call == Call::Wait) pty.unplug();
  };
  const Terminal::Input input = readFor(20s);
  ASSERT_TRUE(input.failure);
  EXPECT_TRUE(input.failure->isGone());
}

// --------------------------------------------------------------------------------------------------
// cancelling

TEST_F(TerminalTest, CancellingEndsAReadThatWaitsAndAllThatFollow) {
  open();
  std::future<void> other;
  calls.atCall = [&](Call call) {
    if (call == Call::Wait && !other.valid()) {
      other = std::async(std::launch::async, [this] { terminal.cancel(); });
    }
  };
  const auto begin = Terminal::Clock::now();
  const Terminal::Input input = readFor(20s);
  EXPECT_EQ(input.count, 0u);
  EXPECT_FALSE(input.failure);
  other.get();
  pty.write("x");
  EXPECT_EQ(readFor(20s).count, 0u);
  EXPECT_LT(Terminal::Clock::now() - begin, 20s);
}

TEST_F(TerminalTest, CancellingEndsAWriteThatBlocksAndAllThatFollow) {
  open();
  std::future<void> other;
  calls.atCall = [&](Call call) {
    if (call == Call::Write && !other.valid()) {
      other = std::async(std::launch::async, [this] { terminal.cancel(); });
    }
  };
  const std::string tooMuch(1 << 20, 'x');  // nobody reads it
  auto failure = terminal.write(bytesOf(tooMuch));
  ASSERT_TRUE(failure);
  EXPECT_EQ(failure->number, ECANCELED);
  other.get();
  failure = terminal.write(bytesOf("x"));
  ASSERT_TRUE(failure);
  EXPECT_EQ(failure->number, ECANCELED);
  (void)pty.readPending();  // or else closing would wait for it
}

TEST_F(TerminalTest, OpenedAnewItIsNotCancelled) {
  open();
  terminal.cancel();
  open();
  pty.write("x");
  EXPECT_EQ(heard(readFor(20s)), "x");
  EXPECT_FALSE(terminal.write(bytesOf("y")));
  EXPECT_EQ(pty.read(1), "y");
}

TEST_F(TerminalTest, CancellingWhatIsNotOpenDoesNothing) {
  terminal.cancel();
  EXPECT_TRUE(calls.order().empty());
}

}  // namespace
}  // namespace tavril
