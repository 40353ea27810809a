#include "platform/linux/PaintingWait.h"
#include "tests/support/ManualMainQueue.h"
#include "tests/support/RecordingWait.h"

#include <gtest/gtest.h>

#include <thread>

namespace tavril {
namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

TEST(AnyThreadPause, OfTheMainThreadIsTheBlockingWait) {
  const ManualMainQueue mainQueue;
  RecordingWait wait;
  anyThreadPause(mainQueue, wait)(1h);
  EXPECT_EQ(wait.waits, std::vector<std::chrono::milliseconds>{1h});
}

TEST(AnyThreadPause, OfAnotherThreadIsSleepAndPaintsNothing) {
  const ManualMainQueue mainQueue;
  RecordingWait wait;
  const auto pause = anyThreadPause(mainQueue, wait);
  Clock::duration lasted{};
  std::thread other([&] {
    const Clock::time_point begin = Clock::now();
    pause(20ms);
    lasted = Clock::now() - begin;
  });
  other.join();
  EXPECT_GE(lasted, 20ms);
  EXPECT_TRUE(wait.waits.empty());
}

}  // namespace
}  // namespace tavril
