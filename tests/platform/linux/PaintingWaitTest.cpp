#include "platform/linux/PaintingWait.h"

#include <gtest/gtest.h>

#include <signal.h>
#include <sys/time.h>

namespace tavril {
namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

volatile sig_atomic_t signalsCaught = 0;

TEST(PaintingWait, PaintsOnceBeforeItBlocks) {
  int paints = 0;
  Clock::time_point paintedAt;
  PaintingWait wait([&] {
    ++paints;
    paintedAt = Clock::now();
  });
  wait.wait(20ms);
  EXPECT_EQ(paints, 1);
  EXPECT_GE(Clock::now() - paintedAt, 20ms);
}

TEST(PaintingWait, BlocksWithoutAnythingToPaint) {
  PaintingWait wait({});
  const Clock::time_point begin = Clock::now();
  wait.wait(1005ms);
  EXPECT_GE(Clock::now() - begin, 1005ms);
}

TEST(PaintingWait, OnlyPaintsForZeroOrLess) {
  int paints = 0;
  PaintingWait wait([&paints] { ++paints; });
  wait.wait(0ms);
  wait.wait(-1h);
  EXPECT_EQ(paints, 2);
}

TEST(PaintingWait, IsNotCutShortBySignals) {
  struct sigaction action {};
  action.sa_handler = [](int) { signalsCaught = signalsCaught + 1; };
  struct sigaction before {};
  ASSERT_EQ(::sigaction(SIGALRM, &action, &before), 0);
  const itimerval everyTwoMilliseconds{{0, 2000}, {0, 2000}};
  const itimerval never{};
  ASSERT_EQ(::setitimer(ITIMER_REAL, &everyTwoMilliseconds, nullptr), 0);

  PaintingWait wait({});
  const Clock::time_point begin = Clock::now();
  wait.wait(50ms);
  EXPECT_GE(Clock::now() - begin, 50ms);

  ::setitimer(ITIMER_REAL, &never, nullptr);
  ::sigaction(SIGALRM, &before, nullptr);
  EXPECT_GT(signalsCaught, 0);
}

}  // namespace
}  // namespace tavril
