#include "editor/FrameField.h"
#include "look/Style.h"

#include <QApplication>
#include <QTest>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tavril {
namespace {

using testing::ElementsAre;

class FrameFieldTest : public testing::Test {
 protected:
  FrameFieldTest() {
    Style::apply(*static_cast<QApplication *>(QCoreApplication::instance()));
    field_.ensurePolished();
    field_.resize(270, 72);
  }

  QStringList shown(const QString &text) {
    field_.setText(text);
    return field_.lines();
  }

  FrameField field_;
};

TEST_F(FrameFieldTest, AShortFrameStandsOnOneLine) {
  EXPECT_THAT(shown(QStringLiteral("Kp_valueTX: ff 5 91 9 fe")), ElementsAre("Kp_valueTX: ff 5 91 9 fe"));
}

TEST_F(FrameFieldTest, AFrameWithALongLabelIsBrokenBehindTheLabel) {
  EXPECT_THAT(shown(QStringLiteral("CalibrationAngleTX: ff 7 92 f ff f6 fe")),
              ElementsAre("CalibrationAngleTX:", "ff 7 92 f ff f6 fe"));
}

TEST_F(FrameFieldTest, AReplyIsBrokenBetweenItsDecimalAndItsHexadecimalBytes) {
  EXPECT_THAT(shown(QStringLiteral("RX: 255 7 145 15 255 246 254 ff 07 91 0f ff f6 fe")),
              ElementsAre("RX: 255 7 145 15 255 246 254", "ff 07 91 0f ff f6 fe"));
}

TEST_F(FrameFieldTest, AShortReplyIsBrokenThereToo) {
  EXPECT_THAT(shown(QStringLiteral("RX: 255 6 151 255 253 254 ff 06 97 ff fd fe")),
              ElementsAre("RX: 255 6 151 255 253 254", "ff 06 97 ff fd fe"));
}

TEST_F(FrameFieldTest, WhatIsTooLongForTheRoomEndsInAnEllipsis) {
  const QStringList lines = shown(QStringList(100, QStringLiteral("255")).join(u' '));
  EXPECT_LE(lines.size() * field_.fontMetrics().lineSpacing(), field_.height());
  EXPECT_TRUE(lines.back().endsWith(u'\u2026'));
  EXPECT_TRUE(lines.front().startsWith(QStringLiteral("255 255")));
}

TEST_F(FrameFieldTest, AnEmptyTextHasNoLineToDraw) {
  EXPECT_EQ(shown(QString()).join(QString()), QString());
  EXPECT_EQ(shown(QStringLiteral("817")), QStringList(QStringLiteral("817")));
}

TEST_F(FrameFieldTest, ClickingSelectsTheWholeFrameForCopying) {
  const QString frame = QStringLiteral("RX: 255 7 145 15 255 246 254 ff 07 91 0f ff f6 fe");
  field_.setText(frame);
  field_.show();
  QTest::mouseClick(&field_, Qt::LeftButton);
  EXPECT_EQ(field_.selectedText(), frame);
}

TEST_F(FrameFieldTest, CannotBeTypedInto) {
  field_.setText(QStringLiteral("TX:"));
  field_.show();
  QTest::keyClicks(&field_, QStringLiteral("5"));
  EXPECT_EQ(field_.text(), QStringLiteral("TX:"));
}

TEST_F(FrameFieldTest, EveryLineIsDrawn) {
  field_.setText(QStringLiteral("CalibrationAngleTX: ff 7 92 f ff f6 fe"));
  const QImage picture = field_.grab().toImage();
  const int spacing = qRound(field_.fontMetrics().lineSpacing() * picture.devicePixelRatio());
  for (int line = 0; line < 3; ++line) {
    bool isInked = false;
    const QColor ground = picture.pixelColor(picture.width() - 1, picture.height() - 1);
    for (int y = line * spacing; y < (line + 1) * spacing; ++y) {
      for (int x = 0; x < picture.width(); ++x) isInked = isInked || picture.pixelColor(x, y) != ground;
    }
    EXPECT_EQ(isInked, line < 2) << line;
  }
}

}  // namespace
}  // namespace tavril
