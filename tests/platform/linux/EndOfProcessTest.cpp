#include "platform/linux/EndOfProcess.h"

#include <gtest/gtest.h>

#include <future>

namespace tavril {
namespace {

using namespace std::chrono_literals;

constexpr auto patience = 20s;  // only there to end a test that has failed

TEST(EndOfProcess, ComesWithinTwoSecondsAndPutsTheLinesBackBefore) {
  EXPECT_LT(EndOfProcess::putBackTime, EndOfProcess::endTime);
  EXPECT_LT(EndOfProcess::endTime, 2s);
}

TEST(EndOfProcess, IsForcedWithItsStatusWhenItDoesNotComeByItself) {
  std::promise<void> putBack;
  std::promise<int> ended;
  EndOfProcess end(1ms, 2ms, [&](int status) { ended.set_value(status); });
  end.begin(3, [&] { putBack.set_value(); });
  EXPECT_EQ(putBack.get_future().wait_for(patience), std::future_status::ready);
  auto status = ended.get_future();
  ASSERT_EQ(status.wait_for(patience), std::future_status::ready);
  EXPECT_EQ(status.get(), 3);
}

TEST(EndOfProcess, IsForcedAlsoWhenALineCannotBePutBack) {
  std::promise<int> ended;
  std::promise<void> lineComesFree;
  {
    EndOfProcess end(1ms, 2ms, [&](int status) {
      ended.set_value(status);
      lineComesFree.set_value();  // so that this process may go on
    });
    std::promise<void> isTrying;
    end.begin(0, [&] {
      isTrying.set_value();
      lineComesFree.get_future().wait();
    });
    ASSERT_EQ(isTrying.get_future().wait_for(patience), std::future_status::ready);
  }  // which waits for the line, and is itself ended meanwhile
  EXPECT_EQ(ended.get_future().wait_for(0s), std::future_status::ready);
}

TEST(EndOfProcess, IsNotForcedWhenItComesByItself) {
  bool isPutBack = false;
  bool isForced = false;
  {
    EndOfProcess end(1h, 1h, [&](int) { isForced = true; });
    end.begin(0, [&] { isPutBack = true; });
  }
  EXPECT_FALSE(isPutBack);
  EXPECT_FALSE(isForced);
}

TEST(EndOfProcess, HasTheStatusThatItBeganWith) {
  std::promise<int> ended;
  EndOfProcess end(1ms, 2ms, [&](int status) { ended.set_value(status); });
  end.begin(0, [] {});
  end.begin(1, [] { ADD_FAILURE() << "this is not the first"; });
  auto status = ended.get_future();
  ASSERT_EQ(status.wait_for(patience), std::future_status::ready);
  EXPECT_EQ(status.get(), 0);
}

}  // namespace
}  // namespace tavril
