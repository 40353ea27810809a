#include "platform/linux/QtMainQueue.h"
#include "platform/linux/QtTimers.h"
#include "tests/support/WaitFor.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tavril {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;

class QtTimersTest : public testing::Test {
 protected:
  /// Lets the event loop turn until timers that were due when this began, or within the time, have come due.
  void letComeDue(std::chrono::milliseconds time) {
    bool due = false;
    QTimer::singleShot(time, Qt::PreciseTimer, [&due] { due = true; });
    EXPECT_TRUE(waitFor([&due] { return due; }));
  }

  QtMainQueue queue_;
  QtTimers timers_{queue_};
};

TEST_F(QtTimersTest, RunsAOneShotOnceAndNotBeforeItsTime) {
  int runs = 0;
  std::chrono::steady_clock::time_point ranAt;
  const auto begin = std::chrono::steady_clock::now();
  timers_.oneShot(20ms, [&] {
    ++runs;
    ranAt = std::chrono::steady_clock::now();
  });
  EXPECT_TRUE(waitFor([&runs] { return runs > 0; }));
  // Qt counts in whole milliseconds and may round the beginning down.
  EXPECT_GE(ranAt - begin, 19ms);
  letComeDue(40ms);
  EXPECT_EQ(runs, 1);
}

TEST_F(QtTimersTest, RepeatsWithoutAnybodyHoldingTheTimer) {
  int runs = 0;
  timers_.repeating(1ms, [&runs] { ++runs; });
  EXPECT_TRUE(waitFor([&runs] { return runs >= 3; }));
}

TEST_F(QtTimersTest, ComesDueInTheEventLoopOfItsOwnJobAndRunsOnceAfterIt) {
  std::vector<int> ran;
  const auto timer = timers_.repeating(2ms, [&] {
    ran.push_back(1);
    if (ran.size() > 1) return;
    letComeDue(15ms);
    // Behind the run that came due meanwhile.
    queue_.async([&ran] { ran.push_back(2); });
  });
  EXPECT_TRUE(waitFor([&ran] { return ran.size() >= 3; }));
  timer->stop();
  ran.resize(3);
  EXPECT_THAT(ran, ElementsAre(1, 1, 2));
}

TEST_F(QtTimersTest, RunsAStoppedTimerNoMore) {
  int runs = 0;
  const auto timer = timers_.repeating(1ms, [&runs] { ++runs; });
  EXPECT_TRUE(waitFor([&runs] { return runs >= 1; }));
  timer->stop();
  timer->stop();
  const int atStop = runs;
  letComeDue(5ms);
  EXPECT_EQ(runs, atStop);
}

TEST_F(QtTimersTest, StoppingFromWithinTheJobEndsTheTimerAfterTheJob) {
  const auto held = std::make_shared<int>(7);
  std::shared_ptr<Timer> timer;
  int seen = 0;
  timer = timers_.repeating(1ms, [&timer, &seen, held] {
    timer->stop();
    seen += *held;
  });
  EXPECT_TRUE(waitFor([&seen] { return seen > 0; }));
  letComeDue(5ms);
  EXPECT_EQ(seen, 7);
  EXPECT_EQ(held.use_count(), 1);
}

TEST_F(QtTimersTest, DroppingWhatTheJobHoldsMayStopTheTimerAgain) {
  struct Stopper {
    std::weak_ptr<Timer> timer;
    ~Stopper() {
      if (const auto locked = timer.lock()) locked->stop();
    }
  };
  auto stopper = std::make_shared<Stopper>();
  const std::weak_ptr<Stopper> watch = stopper;
  const auto timer = timers_.oneShot(1h, [stopper] {});
  stopper->timer = timer;
  stopper.reset();
  timer->stop();
  EXPECT_TRUE(watch.expired());
}

TEST_F(QtTimersTest, ATimerThatCameDueManyTimesWhileHeldRunsOnce) {
  int runs = 0;
  queue_.hold();
  const auto timer = timers_.repeating(1ms, [&runs] { ++runs; });
  letComeDue(10ms);
  EXPECT_EQ(runs, 0);
  int runsOnce = -1;
  queue_.async([&] {
    runsOnce = runs;
    timer->stop();
  });
  queue_.release();
  EXPECT_TRUE(waitFor([&runsOnce] { return runsOnce >= 0; }));
  EXPECT_EQ(runsOnce, 1);
}

TEST_F(QtTimersTest, WhatCameDueWhileHeldRunsInTheOrderInWhichItFirstCameDue) {
  std::vector<int> ran;
  queue_.hold();
  queue_.async([&ran] { ran.push_back(1); });
  timers_.oneShot(9ms, [&ran] { ran.push_back(4); });
  const auto repeating = timers_.repeating(2ms, [&ran] { ran.push_back(2); });
  timers_.oneShot(5ms, [&ran] { ran.push_back(3); });
  letComeDue(15ms);
  repeating->stop();
  timers_.oneShot(1ms, [&ran] { ran.push_back(5); });
  letComeDue(5ms);
  queue_.release();
  EXPECT_TRUE(waitFor([&ran] { return !ran.empty() && ran.back() == 5; }));
  EXPECT_THAT(ran, ElementsAre(1, 3, 4, 5));
}

TEST_F(QtTimersTest, ATimerStoppedWhileItsJobIsQueuedDoesNotRun) {
  bool ran = false;
  bool after = false;
  queue_.hold();
  const auto timer = timers_.oneShot(1ms, [&ran] { ran = true; });
  letComeDue(5ms);
  timer->stop();
  queue_.async([&after] { after = true; });
  queue_.release();
  EXPECT_TRUE(waitFor([&after] { return after; }));
  EXPECT_FALSE(ran);
}

TEST_F(QtTimersTest, ALongJobDoesNotPileUpRunsOrRunInsideItself) {
  int depth = 0;
  int deepest = 0;
  int runs = 0;
  int runsSoonAfter = -1;
  const auto timer = timers_.repeating(1ms, [&] {
    ++runs;
    deepest = std::max(deepest, ++depth);
    if (runs == 1) {
      letComeDue(20ms);
      queue_.async([&] { runsSoonAfter = runs; });
    }
    --depth;
  });
  EXPECT_TRUE(waitFor([&runsSoonAfter] { return runsSoonAfter >= 0; }));
  timer->stop();
  EXPECT_EQ(deepest, 1);
  EXPECT_EQ(runsSoonAfter, 2);
}

TEST_F(QtTimersTest, DestroyingTheServiceStopsItsTimers) {
  bool ran = false;
  auto timers = std::make_unique<QtTimers>(queue_);
  const auto queued = timers->oneShot(1ms, [&ran] { ran = true; });
  const auto running = timers->repeating(4ms, [&ran] { ran = true; });
  queue_.hold();
  letComeDue(2ms);
  timers.reset();
  queue_.release();
  letComeDue(10ms);
  EXPECT_FALSE(ran);
  queued->stop();
  running->stop();
}

TEST_F(QtTimersTest, AJobMayDestroyTheService) {
  auto timers = std::make_unique<QtTimers>(queue_);
  int runs = 0;
  timers->repeating(1ms, [&] {
    timers.reset();
    ++runs;
  });
  EXPECT_TRUE(waitFor([&runs] { return runs > 0; }));
  letComeDue(5ms);
  EXPECT_EQ(runs, 1);
}

TEST_F(QtTimersTest, TakesANegativeDelayForNone) {
  bool ran = false;
  timers_.oneShot(-5ms, [&ran] { ran = true; });
  EXPECT_TRUE(waitFor([&ran] { return ran; }));
}

}  // namespace
}  // namespace tavril
