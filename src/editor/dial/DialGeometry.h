#pragma once

/// The arithmetic of the dial. Angles are degrees, anticlockwise from the right; the mix of single and double
/// precision decides results at the borders and is meant as it stands.
namespace tavril::dial {

inline constexpr double knobRadius = 66;
inline constexpr double knobSize = 22;
inline constexpr double unitsPerDegree = 3.41;
inline constexpr int positionEnd = 1024;  ///< first value that is no position

double DegreeToRadians(double degrees);

/// Where the knob stands relative to the centre of its travel.
struct Offset {
  float a;
  float b;
};
Offset knobOffset(float angle_deg);

/// The servo's travel in degrees, before it is turned into the dial's orientation.
float travelAngle(int position);
/// The same on the dial: position 0 stands at 300 degrees.
float dialAngle(int position);

}  // namespace tavril::dial
