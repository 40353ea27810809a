#include "simulator/MotionModel.h"

#include <algorithm>
#include <cmath>

namespace tavril::simulator {
namespace {

// The planned braking is a little weaker than the possible one, so that the speed can follow the plan in
// steps.
constexpr double plannedBraking = 0.9 * MotionModel::topAcceleration;
// Close to the goal, the speed is proportional to the distance (1/s), as in a position loop.
constexpr double endGain = 30.0;
// Below this distance and this speed, friction holds the shaft.
constexpr double restDistance = 0.3;
constexpr double restSpeed = 10.0;

}  // namespace

MotionModel::MotionModel(int position) : position_(position), goal_(position) {}

void MotionModel::setGoal(int goal) {
  stiff_ = true;
  goal_ = std::clamp(goal, lowestPosition, highestPosition);
}

void MotionModel::hold() {
  stiff_ = true;
  // Rounded, because a reply has whole counts.
  goal_ = std::clamp(std::round(position_), double{lowestPosition}, double{highestPosition});
}

void MotionModel::release() {
  stiff_ = false;
}

double MotionModel::wantedSpeed() const {
  if (!stiff_) return 0.0;
  const double way = goal_ - position_;
  const double distance = std::abs(way);
  // From the speed of the square root, the planned braking stops at the goal. Near the goal, from the point
  // of equal slope, the straight line replaces it, so that the braking becomes weaker without a jerk.
  const double endDistance = plannedBraking / (endGain * endGain);
  const double speed = distance < endDistance
                           ? endGain * distance
                           : std::sqrt(2.0 * plannedBraking * (distance - endDistance / 2.0));
  return std::copysign(std::min(speed, topSpeed), way);
}

void MotionModel::advance(std::chrono::microseconds step) {
  const double seconds = std::chrono::duration<double>(step).count();
  if (seconds <= 0.0) return;
  const double most = topAcceleration * seconds;
  const double change = std::clamp(wantedSpeed() - speed_, -most, most);
  speed_ += change;
  acceleration_ = change / seconds;
  position_ += speed_ * seconds;

  const double inside = std::clamp(position_, double{lowestPosition}, double{highestPosition});
  if (inside != position_) {
    position_ = inside;
    speed_ = 0.0;
  }
  if (stiff_ && std::abs(goal_ - position_) < restDistance && std::abs(speed_) < restSpeed) {
    position_ = goal_;
    speed_ = 0.0;
  }
}

}  // namespace tavril::simulator
