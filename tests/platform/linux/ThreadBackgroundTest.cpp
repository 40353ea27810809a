#include "platform/linux/ThreadBackground.h"

#include <QDir>
#include <QFile>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <future>
#include <latch>
#include <pthread.h>
#include <semaphore>
#include <thread>

#include <unistd.h>

namespace tavril {
namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

QByteArray thisThreadsName() {
  char name[16] = {};
  ::pthread_getname_np(::pthread_self(), name, sizeof name);
  return name;
}

bool hasThreadNamed(const QByteArray &name) {
  const QDir tasks(QStringLiteral("/proc/self/task"));
  for (const QString &task : tasks.entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
    QFile comm(tasks.filePath(task + QStringLiteral("/comm")));
    if (comm.open(QIODevice::ReadOnly) && comm.readAll().trimmed() == name) return true;
  }
  return false;
}

template <typename Condition>
bool becomesTrue(Condition condition) {
  const Clock::time_point deadline = Clock::now() + 30s;
  while (!condition()) {
    if (Clock::now() > deadline) return false;
    std::this_thread::sleep_for(1ms);
  }
  return true;
}

long addressSpace_MiB() {
  QFile file(QStringLiteral("/proc/self/statm"));
  if (!file.open(QIODevice::ReadOnly)) return -1;
  return file.readAll().split(' ').first().toLong() * ::sysconf(_SC_PAGESIZE) / (1024 * 1024);
}

TEST(ThreadBackground, RunsEachJobOnAThreadOfItsOwn) {
  std::latch together(3);
  {
    ThreadBackground background;
    // Each waits for the other two, which could not come if they shared a thread.
    for (int job = 0; job < 3; ++job) background.run([&together] { together.arrive_and_wait(); });
  }
  EXPECT_TRUE(together.try_wait());
}

TEST(ThreadBackground, LetsRunningJobsFinishWhenItIsDestroyed) {
  std::atomic<int> finished = 0;
  {
    std::binary_semaphore begun(0);
    ThreadBackground background;
    background.run([&] {
      begun.release();
      // A job may still bring work while the background goes.
      background.run([&finished] { ++finished; });
      ++finished;
    });
    begun.acquire();
  }
  EXPECT_EQ(finished, 2);
}

TEST(ThreadBackground, NamesItsThreads) {
  QByteArray runName;
  QByteArray repeatName;
  QByteArray queueName;
  {
    std::binary_semaphore ticked(0);
    ThreadBackground background;
    background.run([&runName] { runName = thisThreadsName(); });
    background.repeat(1h, [&] {
      repeatName = thisThreadsName();
      ticked.release();
    });
    ticked.acquire();
    background.serialQueue(QStringLiteral("requests of usbserial"))->sync([&queueName] {
      queueName = thisThreadsName();
    });
  }
  EXPECT_EQ(runName, "tavril-run");
  EXPECT_EQ(repeatName, "tavril-repeat");
  EXPECT_EQ(queueName, "requests of usb");
}

TEST(ThreadBackground, DoesNotCollectFinishedThreads) {
  std::counting_semaphore<> done(0);
  ThreadBackground background;
  const auto runOne = [&background, &done] {
    background.run([&done] { done.release(); });
    done.acquire();
    ASSERT_TRUE(becomesTrue([] { return !hasThreadNamed("tavril-run"); }));
  };
  for (int job = 0; job < 20; ++job) runOne();
  const long before = addressSpace_MiB();
  ASSERT_GT(before, 0);
  // A thread that is not joined keeps its stack, 8 MiB of address space.
  for (int job = 0; job < 200; ++job) runOne();
  EXPECT_LT(addressSpace_MiB() - before, 400);
}

TEST(ThreadBackground, TicksAtOnceAndAgain) {
  std::counting_semaphore<> ticks(0);
  std::binary_semaphore first(0);
  ThreadBackground background;
  const auto work = background.repeat(1ms, [&ticks] { ticks.release(); });
  for (int tick = 0; tick < 3; ++tick) ticks.acquire();
  work->cancel();

  background.repeat(1h, [&first] { first.release(); });
  first.acquire();
}

TEST(ThreadBackground, TicksUntilCancelledThoughNobodyHoldsTheWork) {
  std::counting_semaphore<> ticks(0);
  ThreadBackground background;
  background.repeat(1ms, [&ticks] { ticks.release(); });
  for (int tick = 0; tick < 3; ++tick) ticks.acquire();
}

TEST(ThreadBackground, CancellingDoesNotWaitForTheTickAndEndsTheThreadAtOnce) {
  const auto held = std::make_shared<int>(0);
  std::binary_semaphore begun(0);
  std::binary_semaphore goOn(0);
  std::atomic<int> ticks = 0;
  ThreadBackground background;
  const auto work = background.repeat(1ms, [&, held] {
    ++ticks;
    begun.release();
    goOn.acquire();
  });
  begun.acquire();
  work->cancel();
  work->cancel();
  goOn.release();
  // The tick goes with its thread.
  EXPECT_TRUE(becomesTrue([&held] { return held.use_count() == 1; }));
  EXPECT_EQ(ticks, 1);
}

TEST(ThreadBackground, WakesTheThreadThatIsCancelledBetweenTwoTicks) {
  const auto held = std::make_shared<int>(0);
  std::binary_semaphore ticked(0);
  ThreadBackground background;
  const auto work = background.repeat(1h, [&ticked, held] { ticked.release(); });
  ticked.acquire();
  work->cancel();
  EXPECT_TRUE(becomesTrue([&held] { return held.use_count() == 1; }));
}

TEST(ThreadBackground, ATickMayCancelItsOwnWork) {
  std::atomic<int> ticks = 0;
  {
    std::promise<std::shared_ptr<RepeatingWork>> promise;
    std::binary_semaphore done(0);
    ThreadBackground background;
    promise.set_value(background.repeat(1ms, [&, future = promise.get_future().share()] {
      ++ticks;
      future.get()->cancel();
      done.release();
    }));
    done.acquire();
  }
  EXPECT_EQ(ticks, 1);
}

TEST(ThreadBackground, LeavesOutTheTicksThatCameDueDuringALongOne) {
  std::vector<Clock::time_point> begins;
  Clock::time_point firstEnd;
  std::binary_semaphore done(0);
  ThreadBackground background;
  std::shared_ptr<RepeatingWork> work = background.repeat(2ms, [&] {
    if (begins.size() == 12) return;  // looked at by now
    begins.push_back(Clock::now());
    if (begins.size() == 1) {
      while (Clock::now() < begins.front() + 50ms) std::this_thread::yield();
      firstEnd = Clock::now();
    }
    if (begins.size() == 12) done.release();
  });
  done.acquire();
  work->cancel();
  // Ten whole intervals lie between the second and the twelfth, which ticks made up for would not keep.
  EXPECT_GE(begins[11] - firstEnd, 20ms);
}

TEST(ThreadBackground, RunsTheJobsOfAQueueInOrderAndOneAtATime) {
  ThreadBackground background;
  const auto queue = background.serialQueue(QStringLiteral("queue"));
  EXPECT_EQ(queue->label(), QStringLiteral("queue"));
  std::vector<int> ran;
  for (int job = 0; job < 1000; ++job) queue->async([&ran, job] { ran.push_back(job); });
  bool synced = false;
  queue->sync([&] { synced = ran.size() == 1000; });
  EXPECT_TRUE(synced);
  EXPECT_TRUE(std::is_sorted(ran.begin(), ran.end()));
}

TEST(ThreadBackground, RunsWhatADroppedQueueHoldsBeforeItGoes) {
  int ran = 0;
  {
    std::binary_semaphore goOn(0);
    ThreadBackground background;
    auto queue = background.serialQueue(QStringLiteral("queue"));
    queue->async([&goOn] { goOn.acquire(); });
    for (int job = 0; job < 10; ++job) queue->async([&ran] { ++ran; });
    queue.reset();
    goOn.release();
  }
  EXPECT_EQ(ran, 10);
}

TEST(ThreadBackground, AnIdleQueueHasNoThreadAndGetsANewOneForNewWork) {
  ThreadBackground background(1ms);
  const auto queue = background.serialQueue(QStringLiteral("idle-queue"));
  EXPECT_FALSE(hasThreadNamed("idle-queue"));
  for (int round = 0; round < 3; ++round) {
    bool seen = false;
    queue->sync([&seen] { seen = hasThreadNamed("idle-queue"); });
    EXPECT_TRUE(seen);
    EXPECT_TRUE(becomesTrue([] { return !hasThreadNamed("idle-queue"); }));
  }
}

TEST(ThreadBackground, DoesNotWaitForIdleQueuesWhenItIsDestroyed) {
  int ran = 0;
  {
    ThreadBackground background(24h);
    const auto queue = background.serialQueue(QStringLiteral("queue"));
    queue->sync([&ran] { ++ran; });
  }
  EXPECT_EQ(ran, 1);
}

TEST(ThreadBackground, AQueueThatOutlivesItRunsItsJobsOnTheCallersThread) {
  std::shared_ptr<SerialQueue> queue;
  {
    ThreadBackground background;
    queue = background.serialQueue(QStringLiteral("queue"));
    queue->sync([] {});
  }
  std::vector<int> ran;
  queue->sync([&] {
    queue->async([&ran] { ran.push_back(2); });
    ran.push_back(1);
  });
  queue->async([&ran] { ran.push_back(3); });
  EXPECT_THAT(ran, testing::ElementsAre(1, 2, 3));
}

TEST(ThreadBackground, StandsUpToManyThreadsAtOnce) {
  constexpr int threads = 4;
  constexpr int rounds = 200;
  // What the threads use goes after them, here and in all tests of this file.
  int inQueue = 0;
  std::atomic<int> runs = 0;
  std::atomic<int> ticks = 0;
  // No idle time: queue threads end and begin all the time.
  ThreadBackground background(0ms);
  const auto queue = background.serialQueue(QStringLiteral("queue"));
  std::vector<std::thread> callers;
  for (int thread = 0; thread < threads; ++thread) {
    callers.emplace_back([&] {
      for (int round = 0; round < rounds; ++round) {
        queue->async([&inQueue] { ++inQueue; });
        queue->sync([&inQueue] { ++inQueue; });
        if (round % 10 == 0) {
          background.run([&runs] { ++runs; });
          const auto work = background.repeat(1ms, [&ticks] { ++ticks; });
          if (round % 20 == 0) work->cancel();
        }
      }
    });
  }
  for (std::thread &caller : callers) caller.join();
  int counted = 0;
  queue->sync([&] { counted = inQueue; });
  EXPECT_EQ(counted, threads * rounds * 2);
  EXPECT_TRUE(becomesTrue([&runs] { return runs == threads * rounds / 10; }));
  EXPECT_TRUE(becomesTrue([&ticks] { return ticks >= threads * rounds / 20; }));
}

}  // namespace
}  // namespace tavril
