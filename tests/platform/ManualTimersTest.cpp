#include "tests/support/ManualTimers.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tavril {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;

TEST(ManualTimers, RunsWhatComesDueInDueOrder) {
  ManualTimers timers;
  std::vector<int> ran;
  timers.oneShot(25ms, [&ran] { ran.push_back(3); });
  timers.repeating(10ms, [&ran] { ran.push_back(1); });
  timers.repeating(20ms, [&ran] { ran.push_back(2); });
  timers.advance(9ms);
  EXPECT_TRUE(ran.empty());
  timers.advance(16ms);
  EXPECT_THAT(ran, ElementsAre(1, 1, 2, 3));
  EXPECT_EQ(timers.now(), 25ms);
  EXPECT_EQ(timers.running(), 2U);
}

TEST(ManualTimers, AJobSeesTheTimeAtWhichItWasDueAndMayStartAndStopTimers) {
  ManualTimers timers;
  std::vector<ManualTimers::Interval> times;
  std::shared_ptr<Timer> timer = timers.repeating(10ms, [&] {
    times.push_back(timers.now());
    timer->stop();
    timers.oneShot(5ms, [&] { times.push_back(timers.now()); });
  });
  timers.advance(100ms);
  EXPECT_THAT(times, ElementsAre(10ms, 15ms));
  EXPECT_EQ(timers.running(), 0U);
}

}  // namespace
}  // namespace tavril
