#include "platform/linux/EndingSignals.h"
#include "tests/support/WaitFor.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <future>
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

TEST(EndingSignals, AreToldOnAThreadOfTheirOwnAlsoIfTheMainThreadIsBusy) {
  const EndingSignals signals;
  std::promise<int> told;
  const auto watching = signals.watch([&](int signal) { told.set_value(signal); });
  std::raise(SIGTERM);
  // No event loop runs here.
  std::future<int> signal = told.get_future();
  ASSERT_EQ(signal.wait_for(std::chrono::seconds(20)), std::future_status::ready);
  EXPECT_EQ(signal.get(), SIGTERM);
}

TEST(EndingSignals, LeaveAHangUpIgnoredAsNohupWantsIt) {
  const auto before = std::signal(SIGHUP, SIG_IGN);
  std::vector<int> heard;
  {
    const EndingSignals signals;
    const auto listening = signals.listen([&](int signal) { heard.push_back(signal); });
    std::raise(SIGHUP);
    std::raise(SIGTERM);
    EXPECT_TRUE(waitFor([&] { return !heard.empty(); }));
  }
  std::signal(SIGHUP, before);
  EXPECT_THAT(heard, ElementsAre(SIGTERM));
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
