#include "platform/linux/AtExit.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <thread>

namespace tavril {
namespace {

using testing::ElementsAre;
using testing::ExitedWithCode;
using testing::StrEq;

void say(const char *word) {
  std::fputs(word, stderr);
}

TEST(AtExit, RunsTheHandlersAtItsEndTheLastRegisteredFirst) {
  std::vector<int> ran;
  {
    AtExit atExit;
    EXPECT_EQ(atExit.registerHandler([&ran] { ran.push_back(1); }), 0);
    EXPECT_EQ(atExit.registerHandler([&ran] { ran.push_back(2); }), 0);
    EXPECT_TRUE(ran.empty());
  }
  EXPECT_THAT(ran, ElementsAre(2, 1));
}

TEST(AtExit, RunsAHandlerThatAHandlerRegisters) {
  std::vector<int> ran;
  {
    AtExit atExit;
    atExit.registerHandler([&ran] { ran.push_back(1); });
    atExit.registerHandler([&] {
      atExit.registerHandler([&ran] { ran.push_back(3); });
      ran.push_back(2);
    });
  }
  EXPECT_THAT(ran, ElementsAre(2, 3, 1));
}

TEST(AtExit, RefusesAnEmptyHandler) {
  AtExit atExit;
  EXPECT_EQ(atExit.registerHandler({}), EINVAL);
}

TEST(AtExit, RunsTheHandlersOnceWhenTheProcessExits) {
  const auto process = [] {
    AtExit atExit;
    atExit.registerHandler([] { say("first "); });
    atExit.registerHandler([] { say("second "); });
    std::exit(3);
  };
  EXPECT_EXIT(process(), ExitedWithCode(3), StrEq("second first "));
}

TEST(AtExit, RunsNothingAgainWhenTheProcessExitsAfterItsEnd) {
  const auto process = [] {
    {
      AtExit atExit;
      atExit.registerHandler([] { say("handler "); });
    }
    say("end ");
    std::exit(0);
  };
  EXPECT_EXIT(process(), ExitedWithCode(0), StrEq("handler end "));
}

TEST(AtExit, TakesHandlersFromManyThreads) {
  int ran = 0;
  {
    AtExit atExit;
    std::vector<std::thread> threads;
    for (int thread = 0; thread < 4; ++thread) {
      threads.emplace_back([&] {
        for (int handler = 0; handler < 50; ++handler) atExit.registerHandler([&ran] { ++ran; });
      });
    }
    for (std::thread &thread : threads) thread.join();
  }
  EXPECT_EQ(ran, 200);
}

TEST(AtExitDeathTest, ThereCanBeOnlyOne) {
  const auto two = [] {
    AtExit one;
    AtExit other;
  };
  EXPECT_DEATH(two(), "only one");
}

}  // namespace
}  // namespace tavril
