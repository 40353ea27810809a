#include "platform/linux/ThreadQueue.h"

#include <gtest/gtest.h>

namespace tavril {
namespace {

using namespace std::chrono_literals;
using Clock = QueueTimer::Clock;

class QueueTimers : public testing::Test {
 protected:
  QueueTimer timer(QueueTimer::Duration interval, QueueTimer::Duration leeway = 0ns) {
    return {start, interval, leeway, [this] { ++ticks; }, [this] { ++cancellations; }};
  }
  const Clock::time_point start = Clock::now();
  int ticks = 0;
  int cancellations = 0;
};

TEST_F(QueueTimers, ComesDueOneIntervalAfterItsStartAndThenEveryInterval) {
  QueueTimer made = timer(10ms);
  EXPECT_EQ(made.due(), start + 10ms);
  EXPECT_FALSE(made.comesDue(start + 10ms - 1ns));
  EXPECT_TRUE(made.comesDue(start + 10ms));
  made.run();
  EXPECT_EQ(made.due(), start + 20ms);
  EXPECT_TRUE(made.comesDue(start + 21ms));
  made.run();
  EXPECT_EQ(made.due(), start + 30ms) << "being late does not shift the beat";
  EXPECT_EQ(ticks, 2);
}

TEST_F(QueueTimers, WhatCameDueSeveralTimesCountsOnce) {
  QueueTimer made = timer(10ms);
  EXPECT_TRUE(made.comesDue(start + 57ms));
  EXPECT_EQ(made.due(), start + 60ms);
  EXPECT_FALSE(made.comesDue(start + 63ms)) << "the tick before has not run yet";
  made.run();
  EXPECT_EQ(ticks, 1);
  EXPECT_TRUE(made.comesDue(start + 70ms));
}

TEST_F(QueueTimers, ATickThatWaitsWhenItsTimerIsCancelledDoesNotRun) {
  QueueTimer made = timer(10ms);
  EXPECT_TRUE(made.comesDue(start + 10ms));
  made.cancel();
  made.run();
  EXPECT_EQ(ticks, 0);
  EXPECT_TRUE(made.isCancelled());
  EXPECT_FALSE(made.comesDue(start + 1h));
}

TEST_F(QueueTimers, ItsQueueIsToldOnceThatItIsCancelled) {
  QueueTimer made = timer(10ms);
  made.cancel();
  made.cancel();
  EXPECT_EQ(cancellations, 1);
}

TEST_F(QueueTimers, IntervalsAreKeptWithinWhatCanBeCounted) {
  EXPECT_EQ(timer(0ns).due(), start + 1ns);
  EXPECT_EQ(timer(-5s).due(), start + 1ns);
  EXPECT_EQ(timer(QueueTimer::Duration::max()).due(), start + std::chrono::years(100));
  EXPECT_EQ(timer(1s, -1s).leeway(), 0ns);
  EXPECT_EQ(timer(1s, 100ms).leeway(), 100ms);
}

}  // namespace
}  // namespace tavril
