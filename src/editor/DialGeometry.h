#pragma once

#include "wire/Range.h"

/// The arithmetic of the dial. Angles are degrees, anticlockwise from the right; the mix of single and double
/// precision decides the results at the borders.
namespace tavril::dial {

inline constexpr double knobRadius = 66;
inline constexpr double knobSize = 22;
inline constexpr double unitsPerDegree = wire::positionsPerDegree;
inline constexpr int positionEnd = wire::positionRange.maximum + 1;  ///< first value that is no position

double DegreeToRadians(double degrees);

/// The knob's position relative to the dial's centre.
struct Offset {
  float a;
  float b;
};
Offset knobOffset(float angle_deg);

/// A position as degrees of the servo's travel.
float travelAngle(int position);
/// A position as an angle on the dial: position 0 is at 300 degrees.
float dialAngle(int position);

}  // namespace tavril::dial
