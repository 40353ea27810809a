#include "simulator/MotionModel.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

namespace tavril::simulator {
namespace {

using namespace std::chrono_literals;

constexpr double step_s = 0.001;

/// Runs in steps of 1 ms until the shaft rests, checking what must hold at each; false when it never rests.
bool runToRest(MotionModel &motion, double goal) {
  const double direction = goal > motion.position() ? 1.0 : -1.0;
  for (int i = 0; i < 10'000; ++i) {
    if (!motion.moving()) return true;
    const double position = motion.position();
    const double speed = motion.speed();
    motion.advance(1ms);
    EXPECT_GE((motion.position() - position) * direction, 0.0) << "it turned back at step " << i;
    EXPECT_LE((motion.position() - goal) * direction, 1e-9) << "it overshot at step " << i;
    EXPECT_LE(std::abs(motion.position() - position), MotionModel::topSpeed * step_s + 1e-9);
    // The friction takes the last creeping speed away at once.
    if (motion.moving()) {
      EXPECT_LE(std::abs(motion.speed() - speed), MotionModel::topAcceleration * step_s + 1e-9);
    }
    if (testing::Test::HasFailure()) return false;
  }
  return false;
}

TEST(MotionModel, StandsStiffAndStillAtFirst) {
  MotionModel motion(512);
  motion.advance(1s);
  EXPECT_EQ(motion.position(), 512.0);
  EXPECT_TRUE(motion.stiff());
  EXPECT_FALSE(motion.moving());
}

class MotionModelWay : public testing::TestWithParam<std::pair<int, int>> {};

TEST_P(MotionModelWay, IsGoneSteadilyWithinTheLimitsAndEndsAtTheGoal) {
  const auto [from, to] = GetParam();
  MotionModel motion(from);
  motion.setGoal(to);
  ASSERT_TRUE(runToRest(motion, to));
  EXPECT_EQ(motion.position(), to);
  EXPECT_EQ(motion.speed(), 0.0);
}

INSTANTIATE_TEST_SUITE_P(ShortAndLong, MotionModelWay,
                         testing::Values(std::pair{512, 513}, std::pair{512, 505}, std::pair{512, 560},
                                         std::pair{0, 1023}, std::pair{1023, 0}, std::pair{300, 700}));

TEST(MotionModel, ALongWayReachesTopSpeedAndTakesItsTime) {
  MotionModel motion(0);
  motion.setGoal(1023);
  double fastest = 0.0;
  int steps = 0;
  for (; motion.moving() && steps < 10'000; ++steps) {
    motion.advance(1ms);
    fastest = std::max(fastest, motion.speed());
  }
  EXPECT_DOUBLE_EQ(fastest, MotionModel::topSpeed);
  // 1023 counts at 1000 a second, speeding up and slowing down at 5000 a second squared.
  EXPECT_GT(steps, 1223);
  EXPECT_LT(steps, 1500);
}

TEST(MotionModel, ANewGoalOnTheWayBackIsReachedWithoutAJump) {
  MotionModel motion(0);
  motion.setGoal(1000);
  motion.advance(1ms);
  for (int i = 0; i < 400; ++i) motion.advance(1ms);
  const double turningPoint = motion.position();
  motion.setGoal(100);
  double farthest = turningPoint;
  for (int i = 0; i < 5000 && motion.moving(); ++i) {
    const double speed = motion.speed();
    motion.advance(1ms);
    if (motion.moving()) {
      ASSERT_LE(std::abs(motion.speed() - speed), MotionModel::topAcceleration * step_s + 1e-9);
    }
    farthest = std::max(farthest, motion.position());
  }
  EXPECT_GT(farthest, turningPoint);
  EXPECT_EQ(motion.position(), 100.0);
}

TEST(MotionModel, AReleasedShaftAtRestStays) {
  MotionModel motion(200);
  motion.release();
  motion.advance(1s);
  EXPECT_EQ(motion.position(), 200.0);
  EXPECT_FALSE(motion.stiff());
  EXPECT_FALSE(motion.moving());
}

TEST(MotionModel, AReleasedShaftOnItsWayStopsByFrictionAndForgetsItsGoal) {
  MotionModel motion(0);
  motion.setGoal(1023);
  for (int i = 0; i < 300; ++i) motion.advance(1ms);
  const double released = motion.position();
  motion.release();
  for (int i = 0; i < 1000; ++i) motion.advance(1ms);
  EXPECT_FALSE(motion.moving());
  EXPECT_GT(motion.position(), released);
  EXPECT_LT(motion.position(), released + 150.0);
}

TEST(MotionModel, HoldingSettlesOnAWholeCount) {
  MotionModel motion(0);
  motion.setGoal(1023);
  for (int i = 0; i < 317; ++i) motion.advance(1ms);
  motion.release();
  for (int i = 0; i < 1000; ++i) motion.advance(1ms);
  motion.hold();
  for (int i = 0; i < 1000; ++i) motion.advance(1ms);
  EXPECT_FALSE(motion.moving());
  EXPECT_EQ(motion.position(), std::round(motion.position()));
}

TEST(MotionModel, GoalsBeyondTheEndsAreTakenAsTheEnds) {
  MotionModel motion(1000);
  motion.setGoal(5000);
  ASSERT_TRUE(runToRest(motion, 1023));
  EXPECT_EQ(motion.position(), 1023.0);
}

}  // namespace
}  // namespace tavril::simulator
