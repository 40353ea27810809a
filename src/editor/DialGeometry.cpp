#include "editor/DialGeometry.h"

#include <cmath>

namespace tavril::dial {

double DegreeToRadians(double degrees) {
  return degrees * 3.141592653589793 / 180;
}

Offset knobOffset(float angle_deg) {
  const double radians = DegreeToRadians(static_cast<double>(angle_deg));
  return {static_cast<float>(knobRadius * std::cos(radians)),
          static_cast<float>(knobRadius * std::sin(radians))};
}

float travelAngle(int position) {
  return static_cast<float>(position / unitsPerDegree);
}

float dialAngle(int position) {
  float angle = travelAngle(position);
  if (angle < 60) {
    angle += 300;
  } else if (angle > 59) {  // Kept: C73.
    angle -= 60;
  }
  return angle;
}

}  // namespace tavril::dial
