#include "platform/linux/EndingSignals.h"
#include "tests/support/WaitFor.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <optional>
#include <thread>
#include <vector>

namespace tavril {
namespace {

using testing::ElementsAre;

TEST(EndingSignals, AreHandedOverByTheEventLoopInTheirOrder) {
  const EndingSignals signals;
  std::raise(SIGTERM);  // which waits for whoever listens
  std::vector<int> heard;
  std::thread::id heardOn;
  const auto listening = signals.listen([&](int signal) {
    heard.push_back(signal);
    heardOn = std::this_thread::get_id();
  });
  std::thread([] { std::raise(SIGINT); }).join();
  std::raise(SIGHUP);
  EXPECT_TRUE(heard.empty());
  EXPECT_TRUE(waitFor([&] { return heard.size() == 3; }));
  EXPECT_THAT(heard, ElementsAre(SIGTERM, SIGINT, SIGHUP));
  EXPECT_EQ(heardOn, std::this_thread::get_id());
}

TEST(EndingSignals, EndTheProgramAgainAfterwards) {
  const auto raiseAfterwards = [] {
    { const EndingSignals signals; }
    std::raise(SIGTERM);
  };
  EXPECT_EXIT(raiseAfterwards(), testing::KilledBySignal(SIGTERM), "");
}

TEST(EndingSignals, AreNotBlockedInProgramsThatThisOneStarts) {
  const EndingSignals signals;
  sigset_t blocked;
  ASSERT_EQ(::pthread_sigmask(SIG_BLOCK, nullptr, &blocked), 0);
  for (const int signal : EndingSignals::numbers) EXPECT_EQ(::sigismember(&blocked, signal), 0);
}

TEST(EndingSignals, HaveTheStatusThatShellsGiveThem) {
  EXPECT_EQ(EndingSignals::exitStatus(SIGINT), 130);
  EXPECT_EQ(EndingSignals::exitStatus(SIGTERM), 143);
}

}  // namespace
}  // namespace tavril
