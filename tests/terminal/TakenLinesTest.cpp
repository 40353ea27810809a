#include "terminal/PosixTerminalCalls.h"
#include "terminal/TakenLines.h"
#include "tests/support/Ownership.h"
#include "tests/support/Pty.h"

#include <gtest/gtest.h>

#include <cstring>

namespace tavril {
namespace {

class TakenLinesTest : public testing::Test {
 protected:
  /// Opens the terminal and changes its settings, as a port does.
  int take() {
    const int descriptor = static_cast<int>(calls_.open(pty_.path().toStdString()).value);
    EXPECT_FALSE(calls_.lock(descriptor).failed());
    termios changed = before_;
    changed.c_lflag ^= ECHO;
    changed.c_cflag ^= CSTOPB;
    EXPECT_FALSE(calls_.setAttributes(descriptor, WhenToApply::Now, changed).failed());
    EXPECT_FALSE(calls_.setArbitrarySpeed(descriptor, 250000).failed());
    return descriptor;
  }
  bool isAsBefore() const { return sameAttributes(pty_.attributes(), before_); }

  PosixTerminalCalls calls_;
  Pty pty_;
  const termios before_ = pty_.attributes();
};

TEST_F(TakenLinesTest, ALineThatIsTakenIsPutBackWithoutBeingClosed) {
  const int descriptor = take();
  ASSERT_FALSE(isAsBefore());
  ASSERT_TRUE(isExclusive(pty_));
  calls_.takenLines()->putBack();
  EXPECT_TRUE(isAsBefore());
  EXPECT_FALSE(isExclusive(pty_));
  calls_.close(descriptor);
}

TEST_F(TakenLinesTest, ALineThatWasClosedIsLeftAlone) {
  const int descriptor = take();
  calls_.unlock(descriptor);
  calls_.close(descriptor);
  calls_.takenLines()->putBack();
  EXPECT_FALSE(isAsBefore()) << "whoever closes it has put it back, or has not";
}

TEST_F(TakenLinesTest, ATerminalThatIsGoneIsPassedOver) {
  const int descriptor = take();
  pty_.unplug();
  calls_.takenLines()->putBack();
  calls_.close(descriptor);
}

}  // namespace
}  // namespace tavril
