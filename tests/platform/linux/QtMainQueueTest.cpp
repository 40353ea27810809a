#include "platform/linux/QtMainQueue.h"
#include "tests/support/WaitFor.h"

#include <QEventLoop>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <thread>

namespace tavril {
namespace {

using testing::ElementsAre;

TEST(QtMainQueue, RunsJobsLaterAndInTheOrderInWhichTheyCame) {
  QtMainQueue queue;
  std::vector<int> ran;
  for (const int job : {1, 2, 3}) queue.async([&ran, job] { ran.push_back(job); });
  EXPECT_TRUE(ran.empty());
  EXPECT_TRUE(waitFor([&ran] { return ran.size() == 3; }));
  EXPECT_THAT(ran, ElementsAre(1, 2, 3));
}

TEST(QtMainQueue, RunsASyncJobAtOnceOnTheMainThread) {
  QtMainQueue queue;
  bool ran = false;
  EXPECT_TRUE(queue.sync([&ran] { ran = true; }));
  EXPECT_TRUE(ran);
}

TEST(QtMainQueue, RunsASyncJobOfAnotherThreadOnTheMainThread) {
  QtMainQueue queue;
  const std::thread::id main = std::this_thread::get_id();
  std::thread::id ranOn;
  std::atomic<bool> done = false;
  std::thread other([&] {
    EXPECT_FALSE(queue.isMainThread());
    EXPECT_TRUE(queue.sync([&] { ranOn = std::this_thread::get_id(); }));
    EXPECT_EQ(ranOn, main);
    done = true;
  });
  EXPECT_TRUE(queue.isMainThread());
  EXPECT_TRUE(waitFor([&done] { return done.load(); }));
  other.join();
}

TEST(QtMainQueue, LetsGoOfWhatAJobHoldsBeforeItsCallerGoesOn) {
  QtMainQueue queue;
  const auto held = std::make_shared<int>(1);
  std::atomic<bool> done = false;
  std::thread other([&] {
    EXPECT_TRUE(queue.sync([copy = held] {}));
    EXPECT_EQ(held.use_count(), 1);
    done = true;
  });
  EXPECT_TRUE(waitFor([&done] { return done.load(); }));
  other.join();
}

TEST(QtMainQueue, WhatAJobHoldsMayQueueAJobWhenItGoes) {
  struct Parting {
    QtMainQueue &queue;
    bool &ran;
    ~Parting() {
      queue.async([&ran = ran] { ran = true; });
    }
  };
  QtMainQueue queue;
  bool ran = false;
  queue.async([parting = std::shared_ptr<Parting>(new Parting{queue, ran})] {});
  EXPECT_TRUE(waitFor([&ran] { return ran; }));

  ran = false;
  queue.async([parting = std::shared_ptr<Parting>(new Parting{queue, ran})] {});
  queue.shutDown();
  QCoreApplication::processEvents();
  EXPECT_FALSE(ran);
}

TEST(QtMainQueue, RunsNothingWhileHeldAndEverythingInOrderAfterwards) {
  QtMainQueue queue;
  std::vector<int> ran;
  queue.async([&ran] { ran.push_back(1); });
  queue.hold();
  queue.hold();
  queue.async([&ran] { ran.push_back(2); });
  std::thread other([&] { EXPECT_TRUE(queue.sync([&ran] { ran.push_back(3); })); });
  queue.release();
  EXPECT_TRUE(queue.isHeld());
  bool loopTurned = false;
  QTimer::singleShot(5, [&loopTurned] { loopTurned = true; });
  EXPECT_TRUE(waitFor([&loopTurned] { return loopTurned; }));
  EXPECT_TRUE(ran.empty());

  queue.release();
  EXPECT_FALSE(queue.isHeld());
  EXPECT_TRUE(waitFor([&ran] { return ran.size() == 3; }));
  other.join();
  EXPECT_THAT(ran, ElementsAre(1, 2, 3));
}

TEST(QtMainQueue, StopsBetweenTwoJobsWhenTheFirstHoldsIt) {
  QtMainQueue queue;
  bool second = false;
  queue.async([&queue] { queue.hold(); });
  queue.async([&second] { second = true; });
  EXPECT_TRUE(waitFor([&queue] { return queue.isHeld(); }));
  EXPECT_FALSE(second);
  queue.release();
  EXPECT_TRUE(waitFor([&second] { return second; }));
}

TEST(QtMainQueue, RunsNoJobInsideTheEventLoopOfAnother) {
  QtMainQueue queue;
  std::vector<int> ran;
  queue.async([&] {
    queue.async([&ran] { ran.push_back(2); });
    bool turned = false;
    QTimer::singleShot(5, [&turned] { turned = true; });
    EXPECT_TRUE(waitFor([&turned] { return turned; }));
    EXPECT_TRUE(ran.empty());
    ran.push_back(1);
  });
  queue.async([&ran] { ran.push_back(3); });
  EXPECT_TRUE(waitFor([&ran] { return ran.size() == 3; }));
  EXPECT_THAT(ran, ElementsAre(1, 3, 2));
}

TEST(QtMainQueue, WhatTheEventLoopCallsBeginsAtOnceBehindTheJobsThatAreThere) {
  QtMainQueue queue;
  std::vector<int> ran;
  for (const int job : {1, 2}) queue.async([&ran, job] { ran.push_back(job); });
  queue.asyncAndBegin([&ran] { ran.push_back(3); });
  EXPECT_THAT(ran, ElementsAre(1, 2, 3));

  // The wake-up that the first job asked for has been taken as well.
  QEventLoop loop;
  for (int turn = 0; turn < 5; ++turn) loop.processEvents();
  EXPECT_FALSE(loop.processEvents());
  queue.async([&ran] { ran.push_back(4); });
  EXPECT_TRUE(waitFor([&ran] { return ran.size() == 4; }));
}

TEST(QtMainQueue, WhatTheEventLoopCallsWaitsForAJobThatIsRunningAndForAHold) {
  QtMainQueue queue;
  std::vector<int> ran;
  queue.async([&] {
    queue.asyncAndBegin([&ran] { ran.push_back(2); });
    ran.push_back(1);
  });
  EXPECT_TRUE(waitFor([&ran] { return ran.size() == 2; }));
  EXPECT_THAT(ran, ElementsAre(1, 2));
  {
    const QtMainQueue::Hold hold(queue);
    queue.asyncAndBegin([&ran] { ran.push_back(3); });
    EXPECT_THAT(ran, ElementsAre(1, 2));
  }
  EXPECT_TRUE(waitFor([&ran] { return ran.size() == 3; }));
  queue.shutDown();
  queue.asyncAndBegin([&ran] { ran.push_back(4); });
  EXPECT_EQ(ran.size(), 3u);
}

TEST(QtMainQueue, LeavesTheEventLoopQuietWhileItsJobsHaveToWait) {
  QtMainQueue queue;
  bool ran = false;
  bool quiet = false;
  queue.async([&] {
    queue.async([&ran] { ran = true; });
    QEventLoop loop;
    // The wake-up may be pending still; once it has been taken, nothing may be left to do.
    for (int turn = 0; turn < 5; ++turn) loop.processEvents();
    quiet = !loop.processEvents();
  });
  EXPECT_TRUE(waitFor([&ran] { return ran; }));
  EXPECT_TRUE(quiet);

  const QtMainQueue::Hold hold(queue);
  queue.async([] {});
  QEventLoop loop;
  for (int turn = 0; turn < 5; ++turn) loop.processEvents();
  EXPECT_FALSE(loop.processEvents());
}

TEST(QtMainQueue, LetsOtherEventsThroughWhileJobsKeepQueueingJobs) {
  QtMainQueue queue;
  bool eventCame = false;
  std::function<void()> again = [&] {
    if (!eventCame) queue.async(again);
  };
  queue.async([&] {
    QTimer::singleShot(0, [&eventCame] { eventCame = true; });
    again();
  });
  EXPECT_TRUE(waitFor([&eventCame] { return eventCame; }));
}

TEST(QtMainQueue, LetsWaitingAndLaterCallersGoWhenShutDown) {
  QtMainQueue queue;
  queue.hold();
  bool ran = false;
  std::atomic<bool> returned = false;
  std::thread other([&] {
    EXPECT_FALSE(queue.sync([&ran] { ran = true; }));
    returned = true;
  });
  const auto dropped = std::make_shared<int>(1);
  queue.async([&ran, dropped] { ran = true; });
  queue.shutDown();
  EXPECT_EQ(dropped.use_count(), 1);
  EXPECT_TRUE(waitFor([&returned] { return returned.load(); }));
  other.join();

  EXPECT_FALSE(queue.sync([&ran] { ran = true; }));
  queue.async([&ran] { ran = true; });
  queue.release();
  QCoreApplication::processEvents();
  EXPECT_FALSE(ran);
}

TEST(QtMainQueue, FinishesTheJobThatShutsItDown) {
  QtMainQueue queue;
  std::atomic<int> answer = -1;
  std::thread other([&] { answer = queue.sync([&queue] { queue.shutDown(); }) ? 1 : 0; });
  EXPECT_TRUE(waitFor([&answer] { return answer >= 0; }));
  other.join();
  EXPECT_EQ(answer, 1);
}

TEST(QtMainQueue, OutlivesTheCallersThatAreLeavingWhenItIsDestroyed) {
  for (int round = 0; round < 100; ++round) {
    auto queue = std::make_unique<QtMainQueue>();
    bool ran = false;
    std::thread other([&queue = *queue, &ran] { EXPECT_TRUE(queue.sync([&ran] { ran = true; })); });
    EXPECT_TRUE(waitFor([&ran] { return ran; }));
    queue.reset();
    other.join();
  }
}

TEST(QtMainQueue, KeepsTheOrderOfEachOfManyThreads) {
  constexpr int threads = 4;
  constexpr int jobs = 1000;
  QtMainQueue queue;
  std::vector<std::vector<int>> ran(threads);
  std::vector<std::thread> others;
  for (int thread = 0; thread < threads; ++thread) {
    others.emplace_back([&queue, &list = ran[static_cast<std::size_t>(thread)]] {
      for (int job = 0; job < jobs; ++job) {
        const auto note = [&list, job] { list.push_back(job); };
        if (job % 10 == 9) {
          EXPECT_TRUE(queue.sync(note));
        } else {
          queue.async(note);
        }
      }
    });
  }
  EXPECT_TRUE(waitFor([&ran] {
    return std::all_of(ran.begin(), ran.end(), [](const auto &list) { return list.size() == jobs; });
  }));
  for (std::thread &other : others) other.join();
  for (const std::vector<int> &list : ran) EXPECT_TRUE(std::is_sorted(list.begin(), list.end()));
}

}  // namespace
}  // namespace tavril
