#pragma once

#include <chrono>

namespace tavril::simulator {

/// The shaft: a position in counts (0 to 1023 over 300 degrees) that follows its goal with limited speed and
/// acceleration and comes to rest without overshoot. A limp shaft stops by friction and stays where it is.
class MotionModel {
 public:
  static constexpr int lowestPosition = 0;
  static constexpr int highestPosition = 1023;
  /// Counts per second: about 60 degrees in 0.2 s.
  static constexpr double topSpeed = 1000.0;
  /// Counts per second squared.
  static constexpr double topAcceleration = 5000.0;

  explicit MotionModel(int position);

  /// Stiffens the shaft and sends it to a goal within the range above.
  void setGoal(int goal);
  /// Stiffens the shaft where it stands.
  void hold();
  void release();
  void advance(std::chrono::microseconds step);

  /// Counts, with a fraction that replies do not have.
  double position() const { return position_; }
  /// Counts per second, negative downwards.
  double speed() const { return speed_; }
  /// Counts per second squared during the last step.
  double acceleration() const { return acceleration_; }
  bool stiff() const { return stiff_; }
  bool moving() const { return speed_ != 0.0 || (stiff_ && position_ != goal_); }

 private:
  double wantedSpeed() const;

  double position_;
  double goal_;
  double speed_ = 0.0;
  double acceleration_ = 0.0;
  bool stiff_ = true;
};

}  // namespace tavril::simulator
