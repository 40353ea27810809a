#pragma once

#include "editor/DialGeometry.h"

#include <optional>

/// From a pointer on the dial to a position. Points are in the design's coordinates: origin at the lower left
/// of the screen, y upwards. Each step has the precision of its type.
namespace tavril::dial {

inline constexpr double centreX = 817;
inline constexpr double centreY = 539;
inline constexpr int highestPosition = positionEnd - 1;

/// Whether the dial reacts to a pointer there: a square of 200 by 200 points, its edges not included.
bool isSensitive(double x, double y);

enum class Quadrant { None, First, Second, Third, Fourth };

/// The direction of the pointer from the dial's centre.
struct Direction {
  Quadrant quadrant;  ///< none on the two axes
  float angle_deg;    ///< not a number straight above and below the centre, at it, and where rounding says so
};
Direction directionOf(double x, double y);

/// What an angle on the dial means.
struct Reading {
  Offset knob;
  std::optional<float> exactPosition;  ///< nothing on the dead arc
  int position;                        ///< 0 to 1023
};
/// The dead arc between 240 and 300 degrees gives 1023 in its left half and 0 in its right; an angle that is
/// not a number gives 0.
Reading readingAt(float angle_deg);

/// The angle, at or just after dialAngle(), for which readingAt() gives this position, 0 to 1023.
float angleFor(int position);

/// A coordinate of the knob's centre, without its fraction.
int wholeCoordinate(double centre, float offset);

}  // namespace tavril::dial
