#include "platform/linux/ThreadBackground.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <future>
#include <semaphore>
#include <thread>
#include <utility>
#include <vector>

#include <sys/prctl.h>

namespace tavril {
namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

/// Whether the value comes in a time that no test that works needs.
template <typename Value>
bool comes(std::future<Value> &future) {
  return future.wait_for(30s) == std::future_status::ready;
}

class ThreadQueues : public testing::Test {
 protected:
  ThreadBackground background{1ms};
  std::shared_ptr<SerialQueue> queue = background.serialQueue(QStringLiteral("timers"));
};

TEST_F(ThreadQueues, ATimerTicksOnItsQueueOneIntervalLaterAndAgain) {
  std::counting_semaphore<> ticked(0);
  std::vector<Clock::time_point> ticks;
  std::atomic<bool> onQueue = true;
  const Clock::time_point start = Clock::now();
  const auto timer = queue->repeat(5ms, 0ns, [&] {
    onQueue = onQueue && queue->isCurrent();
    ticks.push_back(Clock::now());
    ticked.release();
  });
  for (int tick = 0; tick < 3; ++tick) ASSERT_TRUE(ticked.try_acquire_for(30s));
  queue->sync([&] { timer->cancel(); });
  EXPECT_TRUE(onQueue);
  EXPECT_GE(ticks[0] - start, 5ms);
  EXPECT_GE(ticks[2] - start, 15ms);
}

TEST_F(ThreadQueues, ATimerKeepsItsTimeThoughTheQueueHasBeenIdleForLong) {
  // The idle time of this queue is a fifth of the interval: the thread stays for the timer.
  std::promise<void> ticked;
  auto future = ticked.get_future();
  const auto timer = queue->repeat(5ms, 0ns, [&, once = false]() mutable {
    if (!std::exchange(once, true)) ticked.set_value();
  });
  EXPECT_TRUE(comes(future));
  queue->sync([&] { timer->cancel(); });
}

TEST_F(ThreadQueues, ATimerCancelledOnItsQueueTicksNoMore) {
  for (int round = 0; round < 50; ++round) {
    int ticks = 0;
    int ticksWhenCancelled = -1;
    const auto timer = queue->repeat(50us, 0ns, [&ticks] { ++ticks; });
    std::this_thread::yield();
    queue->sync([&] {
      // Long enough for the next tick to come due and wait behind this job.
      const Clock::time_point end = Clock::now() + 200us;
      while (Clock::now() < end) {
      }
      timer->cancel();
      ticksWhenCancelled = ticks;
    });
    queue->sync([] {});
    EXPECT_EQ(ticks, ticksWhenCancelled);
  }
}

TEST_F(ThreadQueues, ATickMayCancelItsTimer) {
  std::shared_ptr<RepeatingWork> timer;
  int ticks = 0;
  std::promise<void> ticked;
  auto future = ticked.get_future();
  queue->sync([&] {
    timer = queue->repeat(1ms, 0ns, [&] {
      ++ticks;
      timer->cancel();
      ticked.set_value();
    });
  });
  ASSERT_TRUE(comes(future));
  queue->sync([] {});
  EXPECT_EQ(ticks, 1);
}

TEST_F(ThreadQueues, ACancelledTimerLetsGoOfWhatItHeld) {
  auto held = std::make_shared<int>(1);
  const std::weak_ptr<int> weak = held;
  auto timer = queue->repeat(1h, 0ns, [held = std::move(held)] {});
  timer->cancel();
  timer.reset();
  EXPECT_TRUE(weak.expired());
}

TEST_F(ThreadQueues, AShorterTimerIsNotKeptWaitingByALongerOne) {
  std::promise<void> ticked;
  auto future = ticked.get_future();
  const auto longer = queue->repeat(1h, 0ns, [] {});
  queue->sync([] {});
  const auto shorter = queue->repeat(1ms, 0ns, [&, once = false]() mutable {
    if (!std::exchange(once, true)) ticked.set_value();
  });
  EXPECT_TRUE(comes(future));
  shorter->cancel();
  longer->cancel();
  queue->sync([] {});
}

TEST_F(ThreadQueues, TheKernelIsToldTheLeeway) {
  std::promise<void> told;
  auto future = told.get_future();
  // A tick that came due before the thread could wait for it was not waited for, nor was the kernel told
  // then.
  const auto timer = queue->repeat(2ms, 200us, [&, once = false]() mutable {
    if (::prctl(PR_GET_TIMERSLACK) == 200000 && !std::exchange(once, true)) told.set_value();
  });
  EXPECT_TRUE(comes(future));
  queue->sync([&] { timer->cancel(); });
}

TEST_F(ThreadQueues, JobsKeepTheirOrderWhileATimerTicks) {
  std::vector<int> ran;
  std::atomic<int> ticks = 0;
  const auto timer = queue->repeat(20us, 0ns, [&ticks] { ++ticks; });
  for (int job = 0; job < 2000; ++job) queue->async([&ran, job] { ran.push_back(job); });
  queue->sync([&] { timer->cancel(); });
  ASSERT_EQ(ran.size(), 2000u);
  EXPECT_TRUE(std::is_sorted(ran.begin(), ran.end()));
}

TEST_F(ThreadQueues, KnowsItsOwnJobs) {
  EXPECT_FALSE(queue->isCurrent());
  const auto other = background.serialQueue(QStringLiteral("other"));
  bool inJob = false;
  bool inOther = true;
  queue->sync([&] { inJob = queue->isCurrent(); });
  other->sync([&] { inOther = queue->isCurrent(); });
  EXPECT_TRUE(inJob);
  EXPECT_FALSE(inOther);
}

TEST(ThreadQueueEnd, ATimerDoesNotKeepTheBackgroundFromGoing) {
  int ticks = 0;
  std::shared_ptr<SerialQueue> queue;
  {
    ThreadBackground background;
    queue = background.serialQueue(QStringLiteral("timers"));
    queue->repeat(1h, 0ns, [&ticks] { ++ticks; });
  }
  queue->repeat(1us, 0ns, [&ticks] { ++ticks; });
  queue->sync([] {});
  EXPECT_EQ(ticks, 0) << "without threads nothing ticks";
}

TEST(ThreadQueueEnd, AJobBroughtAfterTheEndRunsAsAJobOfItsQueue) {
  std::shared_ptr<SerialQueue> queue;
  {
    ThreadBackground background;
    queue = background.serialQueue(QStringLiteral("late"));
  }
  bool inJob = false;
  queue->sync([&] { inJob = queue->isCurrent(); });
  EXPECT_TRUE(inJob);
  EXPECT_FALSE(queue->isCurrent());
}

}  // namespace
}  // namespace tavril
