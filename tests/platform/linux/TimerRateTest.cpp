#include "platform/linux/QtTimers.h"

#include <gtest/gtest.h>

namespace tavril {
namespace {

using namespace std::chrono_literals;

const TimerRate::Clock::time_point begin{1h};

TEST(TimerRate, MakesUpForTheDelayOfEachRun) {
  TimerRate rate(begin, 10ms);
  EXPECT_EQ(rate.untilNext(begin + 10ms), 10ms);
  EXPECT_EQ(rate.untilNext(begin + 23ms), 7ms);
  EXPECT_EQ(rate.untilNext(begin + 39ms), 1ms);
  EXPECT_EQ(rate.untilNext(begin + 40ms), 10ms);
}

TEST(TimerRate, WaitsRatherAMillisecondTooLongThanTooShort) {
  TimerRate rate(begin, 10ms);
  EXPECT_EQ(rate.untilNext(begin + 10ms + 1ns), 10ms);
  EXPECT_EQ(rate.untilNext(begin + 20ms + 999us), 10ms);
}

TEST(TimerRate, LeavesOutWhatALongRunHasMissedAndNeverWaitsForLessThanNothing) {
  TimerRate rate(begin, 10ms);
  EXPECT_EQ(rate.untilNext(begin + 20ms), 10ms);  // the second time is now, and counts as missed
  EXPECT_EQ(rate.untilNext(begin + 500ms), 10ms);
  EXPECT_EQ(rate.untilNext(begin + 512ms), 8ms);
}

TEST(TimerRate, AnIntervalOfNothingIsDueAtOnce) {
  TimerRate rate(begin, 0ms);
  EXPECT_EQ(rate.untilNext(begin), 0ms);
  EXPECT_EQ(rate.untilNext(begin + 5ms), 0ms);
}

}  // namespace
}  // namespace tavril
