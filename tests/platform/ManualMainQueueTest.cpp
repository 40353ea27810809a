#include "tests/support/ManualMainQueue.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>

namespace tavril {
namespace {

TEST(ManualMainQueue, RunsJobsOnlyWhenToldTo) {
  ManualMainQueue queue;
  std::vector<int> ran;
  queue.async([&] {
    ran.push_back(1);
    queue.async([&ran] { ran.push_back(3); });
  });
  queue.async([&ran] { ran.push_back(2); });
  EXPECT_TRUE(ran.empty());
  EXPECT_EQ(queue.pending(), 2U);
  EXPECT_EQ(queue.runAll(), 3U);
  EXPECT_THAT(ran, testing::ElementsAre(1, 2, 3));
}

TEST(ManualMainQueue, KeepsAnotherThreadWaitingInSyncUntilTheJobHasRun) {
  ManualMainQueue queue;
  bool ran = false;
  std::atomic<bool> done = false;
  std::thread other([&] {
    EXPECT_FALSE(queue.isMainThread());
    EXPECT_TRUE(queue.sync([&ran] { ran = true; }));
    EXPECT_TRUE(ran);
    queue.async([&done] { done = true; });
  });
  EXPECT_TRUE(queue.runUntil([&done] { return done.load(); }));
  other.join();
  EXPECT_TRUE(queue.sync([&ran] { ran = false; }));
  EXPECT_FALSE(ran);
}

TEST(ManualMainQueue, LetsWaitingCallersGoWhenShutDown) {
  ManualMainQueue queue;
  std::thread other([&queue] { EXPECT_FALSE(queue.sync([] { ADD_FAILURE(); })); });
  queue.shutDown();
  other.join();
  EXPECT_FALSE(queue.sync([] { ADD_FAILURE(); }));
  EXPECT_EQ(queue.pending(), 0U);
}

}  // namespace
}  // namespace tavril
