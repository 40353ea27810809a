#include "look/WindowMemory.h"

#include <gtest/gtest.h>

namespace tavril {
namespace {

const QRect main(0, 0, 1920, 1080);
const QRect left(-1280, 100, 1280, 1024);

WindowPlace placed(int x, int y, int width = 1024, int height = 790) {
  return {QSize(width, height), QPoint(x, y), false};
}

TEST(WindowPlace, IsKeptAsATextAndReadBack) {
  const std::pair<WindowPlace, const char *> kept[]{
      {placed(36, 24), "1024x790+36+24"},
      {placed(-1200, -8), "1024x790-1200-8"},
      {{QSize(800, 600), std::nullopt, false}, "800x600"},
      {{QSize(800, 600), QPoint(0, 0), true}, "800x600+0+0 maximized"},
      {{QSize(800, 600), std::nullopt, true}, "800x600 maximized"}};
  for (const auto &[place, text] : kept) {
    EXPECT_EQ(place.text().toStdString(), text);
    EXPECT_EQ(WindowPlace::fromText(QString::fromLatin1(text)), place) << text;
  }
}

TEST(WindowPlace, IsNotReadFromATextThatSomethingIsWrongWith) {
  for (const char *text : {"", "1024", "1024x", "x790", "1024x790+36", "1024x790+36+24+1", "1024x790 +36+24",
                           "-1024x790", "1024x790+36+24 minimized", "1024x790+36+24\n", "99999999999x790",
                           "1024x790+99999999999+0", "0x0", "10x790", "1024x10", "1e3x790"}) {
    EXPECT_EQ(WindowPlace::fromText(QString::fromLatin1(text)), std::nullopt) << text;
  }
}

TEST(WindowPlace, StaysWhereThereIsRoomForIt) {
  EXPECT_EQ(placed(36, 24).within({main, left}), placed(36, 24));
  EXPECT_EQ(placed(-1200, 200).within({main, left}), placed(-1200, 200));
}

TEST(WindowPlace, OnAScreenThatIsGoneComesBackToTheMainOne) {
  EXPECT_EQ(placed(-1200, 200).within({main}), placed(0, 200));
  EXPECT_EQ(placed(5000, 4000).within({main}), placed(1920 - 1024, 1080 - 790));
}

TEST(WindowPlace, ThatReachesOverAnEdgeIsMovedInWhole) {
  EXPECT_EQ(placed(-300, -5).within({main}), placed(0, 0));
  EXPECT_EQ(placed(1500, 600).within({main}), placed(1920 - 1024, 1080 - 790));
}

TEST(WindowPlace, BetweenTwoScreensGoesToTheOneThatHasMoreOfIt) {
  EXPECT_EQ(placed(-900, 200).within({main, left}), placed(-1024, 200));
  EXPECT_EQ(placed(-100, 200).within({main, left}), placed(0, 200));
}

TEST(WindowPlace, OfAWindowLargerThanTheScreenShrinks) {
  EXPECT_EQ(placed(10, 10, 3000, 2000).within({main}), placed(0, 0, 1920, 1080));
}

TEST(WindowPlace, LeavesRoomForAPanelAtTheEdge) {
  EXPECT_EQ(placed(0, 0).within({QRect(64, 32, 1856, 1048)}), placed(64, 32));
}

TEST(WindowPlace, WithoutAPositionOnlyShrinks) {
  const WindowPlace tall{QSize(3000, 700), std::nullopt, true};
  const WindowPlace fitted{QSize(1920, 700), std::nullopt, true};
  EXPECT_EQ(tall.within({main}), fitted);
}

TEST(WindowPlace, StaysAsItIsWhereThereIsNoScreenAtAll) {
  EXPECT_EQ(placed(9000, 9000).within({}), placed(9000, 9000));
}

}  // namespace
}  // namespace tavril
