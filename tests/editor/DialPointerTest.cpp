#include "editor/dial/DialPointer.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace tavril::dial {
namespace {

int positionAt(double x, double y) {
  return readingAt(directionOf(x, y).angle_deg).position;
}

TEST(DialPointer, AnAngleOfExactly240GivesTheHighestPosition) {
  EXPECT_EQ(readingAt(240.0F).position, 1023);
  EXPECT_FALSE(readingAt(240.0F).exactPosition);
  EXPECT_EQ(readingAt(std::nextafter(240.0F, 0.0F)).position, 1022);
  EXPECT_EQ(readingAt(269.0F).position, 1023);
  EXPECT_EQ(readingAt(std::nextafter(270.0F, 0.0F)).position, 1023);
  EXPECT_NEAR(readingAt(255.0F).knob.a, -33, 0.0001);
  EXPECT_NEAR(readingAt(255.0F).knob.b, -57.15768, 0.0001);
}

TEST(DialPointer, AnAngleOfExactly300GivesPosition0) {
  EXPECT_EQ(readingAt(300.0F).position, 0);
  EXPECT_FALSE(readingAt(300.0F).exactPosition);
  EXPECT_EQ(readingAt(270.0F).position, 0);
  EXPECT_NEAR(readingAt(285.0F).knob.a, 33, 0.0001);
  EXPECT_NEAR(readingAt(285.0F).knob.b, -57.15768, 0.0001);
}

TEST(DialPointer, AnAngleOf300AndAHalfGivesPosition1) {
  EXPECT_EQ(readingAt(300.5F).position, 1);
  ASSERT_TRUE(readingAt(300.5F).exactPosition);
  EXPECT_FLOAT_EQ(*readingAt(300.5F).exactPosition, 1.705F);
}

TEST(DialPointer, AnAngleThatIsNoNumberCountsAsTheRightHalfOfTheDeadArc) {
  const Reading reading = readingAt(std::numeric_limits<float>::quiet_NaN());
  EXPECT_EQ(reading.position, 0);
  EXPECT_FALSE(reading.exactPosition);
  EXPECT_EQ(reading.knob.a, readingAt(300.0F).knob.a);
  EXPECT_EQ(reading.knob.b, readingAt(300.0F).knob.b);
}

TEST(DialPointer, TheScaleRunsAnticlockwiseOverTheTop) {
  EXPECT_EQ(readingAt(0.0F).position, 204);
  EXPECT_EQ(readingAt(90.0F).position, 511);
  EXPECT_EQ(readingAt(180.0F).position, 818);
  EXPECT_EQ(readingAt(239.99F).position, 1022);
}

TEST(DialPointer, StraightAboveAndBelowTheCentreAndAtItTheAngleIsNoNumber) {
  for (int y = 440; y < 639; ++y) {
    const Direction direction = directionOf(817, y);
    EXPECT_TRUE(std::isnan(direction.angle_deg)) << y;
    EXPECT_EQ(direction.quadrant, Quadrant::None) << y;
    EXPECT_EQ(positionAt(817, y), 0) << y;
  }
}

TEST(DialPointer, OnTheHorizontalTheAngleIs180ToTheLeftAnd0ToTheRightAndThereIsNoQuadrant) {
  for (int x = 718; x < 917; ++x) {
    if (x == 817) continue;
    const Direction direction = directionOf(x, 539);
    EXPECT_EQ(direction.angle_deg, x < 817 ? 180.0F : 0.0F) << x;
    EXPECT_EQ(direction.quadrant, Quadrant::None) << x;
    EXPECT_EQ(positionAt(x, 539), x < 817 ? 818 : 204) << x;
  }
}

// Found by trying all points of a grid of hundredths. On grids of halves, thirds, fourths, fifths, eighths,
// tenths and sixteenths, which is where pointers stand at the usual pixel ratios, there is none.
TEST(DialPointer, WhereRoundingCarriesTheCosinePast1TheAngleIsNoNumber) {
  constexpr double points[][2]{{717.10, 538.97}, {717.10, 539.03}, {717.28, 538.97}, {717.28, 539.03},
                               {717.36, 538.97}, {907.52, 538.97}, {907.52, 539.03}, {907.59, 538.97},
                               {907.59, 539.03}, {907.62, 538.97}};
  for (const auto &[x, y] : points) {
    EXPECT_TRUE(std::isnan(directionOf(x, y).angle_deg)) << x << ", " << y;
    EXPECT_EQ(positionAt(x, y), 0) << x << ", " << y;
  }
  EXPECT_EQ(positionAt(717.10, 539), 818) << "beside them it is a number";
  EXPECT_EQ(positionAt(907.52, 539), 204);
}

TEST(DialPointer, EachQuadrantHasItsAngles) {
  EXPECT_EQ(directionOf(827, 549).quadrant, Quadrant::First);
  EXPECT_FLOAT_EQ(directionOf(827, 549).angle_deg, 45);
  EXPECT_EQ(directionOf(807, 549).quadrant, Quadrant::Second);
  EXPECT_FLOAT_EQ(directionOf(807, 549).angle_deg, 135);
  EXPECT_EQ(directionOf(807, 529).quadrant, Quadrant::Third);
  EXPECT_FLOAT_EQ(directionOf(807, 529).angle_deg, 225);
  EXPECT_EQ(directionOf(827, 529).quadrant, Quadrant::Fourth);
  EXPECT_FLOAT_EQ(directionOf(827, 529).angle_deg, 315);
}

TEST(DialPointer, TheCornersOfTheSquareAreSensitiveAndTheKnobGoesToItsRimAllTheSame) {
  for (const double x : {717.5, 916.5}) {
    for (const double y : {439.5, 638.5}) {
      EXPECT_TRUE(isSensitive(x, y));
      const Offset knob = readingAt(directionOf(x, y).angle_deg).knob;
      EXPECT_NEAR(std::hypot(knob.a, knob.b), 66, 0.0001);
    }
  }
}

TEST(DialPointer, TheEdgesOfTheSquareAreNotSensitive) {
  EXPECT_FALSE(isSensitive(717, 539));
  EXPECT_FALSE(isSensitive(917, 539));
  EXPECT_FALSE(isSensitive(817, 439));
  EXPECT_FALSE(isSensitive(817, 639));
  EXPECT_TRUE(isSensitive(std::nextafter(717.0, 800), 539));
  EXPECT_TRUE(isSensitive(std::nextafter(917.0, 800), 539));
  EXPECT_TRUE(isSensitive(817, std::nextafter(439.0, 500)));
  EXPECT_TRUE(isSensitive(817, std::nextafter(639.0, 500)));
}

TEST(DialPointer, EachOfThe1024PositionsHasAnAngleThatGivesItBack) {
  for (int position = 0; position <= 1023; ++position) {
    const float angle = angleFor(position);
    EXPECT_EQ(readingAt(angle).position, position);
    // The knob then stands where it would for a position that was read from the servo.
    EXPECT_NEAR(angle, dialAngle(position), 0.0002) << position;
  }
}

TEST(DialPointer, CoordinatesOfTheKnobLoseTheirFraction) {
  EXPECT_EQ(wholeCoordinate(817, -33.0F), 784);
  EXPECT_EQ(wholeCoordinate(539, -57.15768F), 481);
  // Not 539 - 0.00001, which a single precision number near 539 cannot say.
  EXPECT_EQ(wholeCoordinate(539, -0.00001F), 539);
}

TEST(DialPointer, DegreesBecomeRadians) {
  EXPECT_EQ(DegreeToRadians(180), 3.141592653589793);
  EXPECT_EQ(DegreeToRadians(0), 0);
  EXPECT_DOUBLE_EQ(DegreeToRadians(-90), -1.5707963267948966);
}

}  // namespace
}  // namespace tavril::dial
