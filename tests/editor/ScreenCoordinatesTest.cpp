#include "editor/screen/ScreenCoordinates.h"

#include <gtest/gtest.h>

namespace tavril {
namespace {

TEST(ScreenCoordinates, TheOriginIsTheLowerLeftCorner) {
  EXPECT_EQ(ScreenCoordinates::pointFromQt({0, 768}), QPointF(0, 0));
  EXPECT_EQ(ScreenCoordinates::pointFromQt({1024, 0}), QPointF(1024, 768));
}

TEST(ScreenCoordinates, TheDialsCentreIsTurnedBothWays) {
  EXPECT_EQ(ScreenCoordinates::pointFromQt({817, 229}), QPointF(817, 539));
  EXPECT_EQ(ScreenCoordinates::pointToQt({817, 539}), QPointF(817, 229));
}

TEST(ScreenCoordinates, FractionsOfAPointerLocationAreKept) {
  EXPECT_EQ(ScreenCoordinates::pointFromQt({817.25, 228.5}), QPointF(817.25, 539.5));
}

TEST(ScreenCoordinates, AFrameIsGivenByItsLowerLeftCorner) {
  EXPECT_EQ(ScreenCoordinates::frameToQt(806, 593, 22, 22), QRectF(806, 153, 22, 22));
  EXPECT_EQ(ScreenCoordinates::frameFromQt(QRect(806, 153, 22, 22)), QRectF(806, 593, 22, 22));
}

TEST(ScreenCoordinates, FractionsOfAFrameAreKept) {
  EXPECT_EQ(ScreenCoordinates::frameToQt(805.5, 592.75, 22, 22), QRectF(805.5, 153.25, 22, 22));
  EXPECT_EQ(ScreenCoordinates::frameFromQt(QRectF(805.5, 153.25, 22, 22)), QRectF(805.5, 592.75, 22, 22));
}

}  // namespace
}  // namespace tavril
