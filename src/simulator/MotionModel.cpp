#include "simulator/MotionModel.h"

#include <algorithm>
#include <cmath>

namespace tavril::simulator {
namespace {

// Braking is planned a little weaker than it could be, so that the speed can follow the plan in whole steps.
constexpr double plannedBraking = 0.9 * MotionModel::topAcceleration;
// Close to the goal the speed falls in proportion to the way that is left, 1/s: the soft end of a position
// loop.
constexpr double endGain = 30.0;
// Nearer and slower than this the friction holds the shaft.
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
  // A whole count, or the shaft would creep to a place that no reply can name.
  goal_ = std::clamp(std::round(position_), double{lowestPosition}, double{highestPosition});
}

void MotionModel::release() {
  stiff_ = false;
}

double MotionModel::wantedSpeed() const {
  if (!stiff_) return 0.0;
  const double way = goal_ - position_;
  const double distance = std::abs(way);
  // The square root is the speed from which the planned braking just stops in time; the straight line
  // replaces it where both have the same slope, which keeps the braking steady up to there and lets it fade
  // after.
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
