#include "editor/dial/DialPointer.h"

#include <cfloat>
#include <cmath>
#include <limits>

// Results at the borders depend on the last bit, so each step must be rounded to its own type.
static_assert(FLT_EVAL_METHOD == 0);
#ifdef __FAST_MATH__
#error "The dial needs the arithmetic as it is written."
#endif

namespace tavril::dial {

namespace {

constexpr double halfSquare = 100;
constexpr double deadArcBegin = 240;
constexpr double deadArcSplit = 270;
constexpr double deadArcEnd = 300;

Quadrant quadrantOf(float dx, float dy) {
  if (dx > 0 && dy > 0) return Quadrant::First;
  if (dx < 0 && dy > 0) return Quadrant::Second;
  if (dx < 0 && dy < 0) return Quadrant::Third;
  if (dx > 0 && dy < 0) return Quadrant::Fourth;
  return Quadrant::None;
}

/// The single precision functions of the C libraries are inexact at many points, and each library at others.
/// The double precision function, rounded, is right everywhere.
float arcCosine(float cosine) {
  return static_cast<float>(std::acos(static_cast<double>(cosine)));
}

/// Rounded once, at the end. If the sum were rounded as well, the last angle before 240 degrees would give
/// 1023, which only the dead arc may give.
float positionAt(double angle_deg) {
  double position = 0;
  if (angle_deg > 300) {
    position = angle_deg - 300;
  } else if (angle_deg > -1) {  // Kept: C74.
    position = angle_deg + 60;
  }
  return static_cast<float>(position * unitsPerDegree);
}

}  // namespace

bool isSensitive(double x, double y) {
  return x > centreX - halfSquare && x < centreX + halfSquare && y > centreY - halfSquare &&
         y < centreY + halfSquare;
}

Direction directionOf(double x, double y) {
  const auto dx = static_cast<float>(x - centreX);
  const auto dy = static_cast<float>(y - centreY);
  const float r = std::sqrt(dx * dx + dy * dy);
  // Kept: C75.
  const float cosine = ((r * r + dx * dx) - dy * dy) / ((2 * r) * dx);
  const float halfTurns = 180 * arcCosine(cosine);
  const auto angle = static_cast<float>(static_cast<double>(halfTurns) / 3.141592653589793);
  const Quadrant quadrant = quadrantOf(dx, dy);
  const bool isBelow = quadrant == Quadrant::Third || quadrant == Quadrant::Fourth;
  return {quadrant, isBelow ? 360 - angle : angle};
}

Reading readingAt(float angle_deg) {
  const auto angle = static_cast<double>(angle_deg);
  if (angle < deadArcBegin || angle > deadArcEnd) {
    const float exact = positionAt(angle);
    return {knobOffset(angle_deg), exact, static_cast<int>(exact)};
  }
  if (angle < deadArcSplit) return {knobOffset(static_cast<float>(deadArcBegin)), {}, highestPosition};
  return {knobOffset(static_cast<float>(deadArcEnd)), {}, 0};
}

float angleFor(int position) {
  float angle_deg = dialAngle(position);
  // Rounding may put the angle just before its position, where the position below is read.
  while (readingAt(angle_deg).position < position) {
    angle_deg = std::nextafter(angle_deg, std::numeric_limits<float>::infinity());
  }
  return angle_deg;
}

int wholeCoordinate(double centre, float offset) {
  return static_cast<int>(static_cast<float>(centre) + offset);
}

}  // namespace tavril::dial
