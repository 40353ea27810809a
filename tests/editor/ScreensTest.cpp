#include "editor/ButtonLabel.h"
#include "editor/ConnectionLine.h"
#include "editor/DialView.h"
#include "editor/EntryField.h"
#include "editor/FrameField.h"
#include "editor/KnobView.h"
#include "editor/ScreenCoordinates.h"
#include "editor/ValueField.h"
#include "protocol/RegisterCatalogue.h"
#include "tests/editor/ShippedScreen.h"

#include <QLabel>
#include <QPlainTextEdit>

#include <gmock/gmock.h>

#include <algorithm>
#include <cmath>
#include <map>

namespace tavril {
namespace {

struct Row {
  const char *caption;
  const char *identifier;
  int base;  ///< lower edge of the row's band, in the design's coordinates
};

constexpr int bandHeight = 25;

/// By register number, from 1.
constexpr Row rows[]{
    {"sid", "sid", 618},
    {"ack_policy", "", 589},
    {"alarm_led_policy", "", 560},
    {"torque_policy", "", 534},
    {"max_temperature", "maxtemp", 505},
    {"min_volt", "minvolt", 476},
    {"max_volt", "maxvolt", 447},
    {"max_load", "maxload", 419},
    {"kp", "kp", 392},
    {"ki", "ki", 363},
    {"kd", "kd", 334},
    {"over_temperature", "overtemp", 305},
    {"over_volt", "overvolt", 277},
    {"over_load", "overload", 249},
    {"calibretion_angle", "calangle", 220},
    {"status_error", "", 192},
    {"status_detail", "", 164},
    {"present_volt", "", 136},
    {"present_temperature", "", 107},
    {"present_load", "", 79},
};

QRectF frameOf(const QWidget &widget) {
  return ScreenCoordinates::frameFromQt(widget.geometry());
}

QString identifierOf(const QWidget &widget) {
  return widget.property("identifier").toString();
}

class ScreensTest : public testing::Test {
 protected:
  ShippedScreen shipped_;
};

TEST_F(ScreensTest, TheScreenIsAsLargeAsItsDesign) {
  shipped_.show();
  EXPECT_EQ(shipped_.screen.size(), QSize(1024, 768));
  EXPECT_EQ(shipped_.screen.minimumSize(), QSize(1024, 768));
  EXPECT_EQ(shipped_.screen.maximumSize(), QSize(1024, 768));
}

TEST_F(ScreensTest, EveryRowHasItsFieldWithItsIdentifierAndStartsDisabled) {
  for (const RegisterRow &row : registerCatalogue()) {
    SCOPED_TRACE(row.number);
    const auto &field = shipped_.widget<ValueField>(row.valueKey.toString());
    EXPECT_EQ(identifierOf(field), QString::fromLatin1(rows[row.number - 1].identifier));
    EXPECT_FALSE(field.isEnabled());
    EXPECT_EQ(field.isReadOnly(), !row.isSetting());
    EXPECT_EQ(field.text(), QString());
  }
}

TEST_F(ScreensTest, EveryRowLiesInItsBandWithTheCaptionOnTheLeftAndTheFieldOnTheRight) {
  for (const RegisterRow &row : registerCatalogue()) {
    SCOPED_TRACE(row.number);
    const Row &expected = rows[row.number - 1];
    const QRectF band(374, expected.base, 619 - 374, bandHeight);
    const QRectF caption = frameOf(shipped_.widget<QLabel>(expected.caption));
    const QRectF field = frameOf(shipped_.widget(row.valueKey.toString()));
    EXPECT_TRUE(band.contains(caption));
    EXPECT_TRUE(band.contains(field));
    EXPECT_EQ(caption.left(), band.left());
    EXPECT_EQ(field.right(), band.right());
    EXPECT_LT(caption.right(), field.left());
    EXPECT_EQ(caption.center().y(), field.center().y());
  }
}

TEST_F(ScreensTest, TheFiveButtonsHaveTheirIdentifiersAndTagsAndStartDisabled) {
  const std::map<QString, std::pair<QString, int>> expected{{"relax", {"relax", 100}},
                                                            {"capture", {"capture", 101}},
                                                            {"motor_set", {"motorset", 102}},
                                                            {"read", {"read", 103}},
                                                            {"detail_set", {"detailset", 104}}};
  for (const auto &[name, marks] : expected) {
    SCOPED_TRACE(qPrintable(name));
    const auto &button = shipped_.widget<ButtonLabel>(name);
    EXPECT_EQ(identifierOf(button), marks.first);
    EXPECT_EQ(button.property("tag").toInt(), marks.second);
    EXPECT_FALSE(button.isEnabled());
  }
  std::map<int, int> tags;
  for (const QWidget *widget : shipped_.screen.findChildren<QWidget *>()) {
    if (widget->property("tag").isValid()) ++tags[widget->property("tag").toInt()];
  }
  EXPECT_THAT(tags, testing::ElementsAre(testing::Pair(100, 1), testing::Pair(101, 1), testing::Pair(102, 1),
                                         testing::Pair(103, 1), testing::Pair(104, 1), testing::Pair(999, 1),
                                         testing::Pair(1000, 1)));
}

TEST_F(ScreensTest, ThePositionEntryCanBeUsedFromTheStart) {
  const auto &entry = shipped_.widget<EntryField>(QStringLiteral("angle"));
  EXPECT_EQ(identifierOf(entry), QStringLiteral("angle"));
  EXPECT_TRUE(entry.isEnabled());
}

TEST_F(ScreensTest, TheDialFillsItsSensitiveSquareAndTheKnobRestsAboveItsCentre) {
  EXPECT_EQ(frameOf(shipped_.widget<DialView>(QStringLiteral("imageView"))), QRectF(717, 439, 200, 200));
  EXPECT_EQ(frameOf(shipped_.widget<KnobView>(QStringLiteral("MotorPoint"))), QRectF(806, 593, 22, 22));
}

TEST_F(ScreensTest, TheNoticeLiesInItsRectangleWithItsTextInside) {
  const QWidget &notice = shipped_.widget(QStringLiteral("NoticeMSGview"));
  const auto &text = shipped_.widget<QPlainTextEdit>(QStringLiteral("MsgView"));
  EXPECT_TRUE(QRectF(658, 103, 993 - 658, 307 - 103).contains(frameOf(notice)));
  EXPECT_TRUE(notice.isAncestorOf(&text));
  EXPECT_TRUE(notice.rect().contains(text.geometry()));
  EXPECT_TRUE(text.isReadOnly());
  EXPECT_EQ(text.font().pixelSize(), 18);
}

TEST_F(ScreensTest, TheContainersCoverTheWholeScreenAndStartHidden) {
  for (const char *name : {"ContrainerView_MsgView", "ContrainerView_WaitView"}) {
    const auto &container = shipped_.widget<PanelBackdrop>(name);
    EXPECT_EQ(frameOf(container), QRectF(0, 0, 1024, 768));
    EXPECT_TRUE(container.isHidden());
  }
}

TEST_F(ScreensTest, ThePanelsHaveTheirElementsWithIdentifiersAndTags) {
  for (const char *name : {"MsgTittle", "MsgContent", "WaitTittle", "WaitContent"}) {
    shipped_.widget<QLabel>(name);
  }
  EXPECT_EQ(identifierOf(shipped_.widget<ButtonLabel>("cancel_lab")), QStringLiteral("cancel"));
  EXPECT_EQ(shipped_.widget("cancel_lab").property("tag").toInt(), 999);
  EXPECT_EQ(identifierOf(shipped_.widget<ButtonLabel>("ok_lab")), QStringLiteral("ok"));
  EXPECT_EQ(shipped_.widget("ok_lab").property("tag").toInt(), 1000);
  EXPECT_EQ(identifierOf(shipped_.widget<ButtonLabel>("close")), QStringLiteral("close"));
  EXPECT_EQ(identifierOf(shipped_.widget<ButtonLabel>("cancel")), QStringLiteral("close"));
  EXPECT_EQ(identifierOf(shipped_.widget<ButtonLabel>("CloseButton")), QStringLiteral("close"));
  EXPECT_TRUE(shipped_.widget("CloseButtonView").isAncestorOf(&shipped_.widget("CloseButton")));
  EXPECT_TRUE(shipped_.widget("CloseButtonView").isHidden());
}

/// Of the dial's square only the round face is drawn on; figures of the scale stand in its corners.
bool overlap(const QWidget &one, const QWidget &other) {
  const QWidget *dial = nullptr;
  for (const QWidget *widget : {&one, &other}) {
    if (qobject_cast<const DialView *>(widget)) dial = widget;
  }
  if (!dial) return one.geometry().intersects(other.geometry());
  constexpr double faceRadius = 92.5;
  const QPointF centre = QRectF(dial->geometry()).center();
  const QRectF place((dial == &one ? other : one).geometry());
  const QPointF nearest(std::clamp(centre.x(), place.left(), place.right()),
                        std::clamp(centre.y(), place.top(), place.bottom()));
  return std::hypot(nearest.x() - centre.x(), nearest.y() - centre.y()) < faceRadius;
}

TEST_F(ScreensTest, NothingOnTheScreenOverlaps) {
  shipped_.show();
  QList<QWidget *> elements;
  for (QWidget *child : shipped_.screen.findChildren<QWidget *>(QString(), Qt::FindDirectChildrenOnly)) {
    const bool isBehind = child->property("card").toBool();
    const bool isAbove = qobject_cast<PanelBackdrop *>(child) || qobject_cast<KnobView *>(child);
    if (isBehind || isAbove) continue;
    elements.append(child);
  }
  ASSERT_GT(elements.size(), 60);
  for (qsizetype i = 0; i < elements.size(); ++i) {
    EXPECT_TRUE(shipped_.screen.rect().contains(elements[i]->geometry()))
        << qPrintable(elements[i]->objectName());
    for (qsizetype k = i + 1; k < elements.size(); ++k) {
      EXPECT_FALSE(overlap(*elements[i], *elements[k]))
          << qPrintable(elements[i]->objectName() + u' ' + elements[k]->objectName());
    }
  }
}

TEST_F(ScreensTest, EveryElementLiesOnACard) {
  shipped_.show();
  QList<QRect> cards;
  for (const QFrame *frame : shipped_.screen.findChildren<QFrame *>(QString(), Qt::FindDirectChildrenOnly)) {
    if (frame->property("card").toBool()) cards.append(frame->geometry());
  }
  ASSERT_EQ(cards.size(), 3);
  for (QWidget *child : shipped_.screen.findChildren<QWidget *>(QString(), Qt::FindDirectChildrenOnly)) {
    if (qobject_cast<PanelBackdrop *>(child)) continue;
    const QRect place = child->geometry();
    EXPECT_TRUE(std::any_of(cards.begin(), cards.end(), [&](const QRect &card) {
      return card.contains(place);
    })) << qPrintable(child->objectName());
  }
}

TEST_F(ScreensTest, TheDialFollowsThePositionEntryAndKeepsStillForWhatIsNoPosition) {
  auto &entry = shipped_.widget<EntryField>(QStringLiteral("angle"));
  const auto &dial = shipped_.widget<DialView>(QStringLiteral("imageView"));
  EXPECT_EQ(dial.position(), std::nullopt);
  entry.setText(QStringLiteral("1023"));
  EXPECT_EQ(dial.position(), 1023);
  entry.setText(QStringLiteral("1024"));
  EXPECT_EQ(dial.position(), 1023);
  entry.setText(QStringLiteral("12a"));
  EXPECT_EQ(dial.position(), 1023);
  entry.setText(QString());
  EXPECT_EQ(dial.position(), 0);
}

/// The centre of what is drawn in the knob's colours, in the design's coordinates.
QPointF drawnCentre(const QImage &picture, const QColor &colour, double pixelRatio) {
  double x = 0;
  double y = 0;
  int count = 0;
  for (int row = 0; row < picture.height(); ++row) {
    for (int column = 0; column < picture.width(); ++column) {
      if (picture.pixelColor(column, row) != colour) continue;
      x += column + 0.5;
      y += row + 0.5;
      ++count;
    }
  }
  EXPECT_GT(count, 0);
  return ScreenCoordinates::pointFromQt({x / count / pixelRatio, y / count / pixelRatio});
}

TEST_F(ScreensTest, TheLiveArcIsDrawnRoundTheDialsCentreFromLowerRightToLowerLeft) {
  auto &dial = shipped_.widget<DialView>(QStringLiteral("imageView"));
  dial.setPosition(1023);
  const QImage picture = dial.grab().toImage();
  const double ratio = picture.devicePixelRatio();
  const auto colourAt = [&](double x, double y) {  // relative to the dial's centre, y upwards
    return picture.pixelColor(qRound((100 + x) * ratio), qRound((100 - y) * ratio));
  };
  EXPECT_EQ(colourAt(66, 0), Style::accent());
  EXPECT_EQ(colourAt(0, 66), Style::accent());
  EXPECT_EQ(colourAt(-66, 0), Style::accent());
  EXPECT_EQ(colourAt(31, -55), Style::accent()) << "position 0 at 300 degrees";
  EXPECT_EQ(colourAt(-31, -55), Style::accent()) << "position 1023 at 240 degrees";
  EXPECT_EQ(colourAt(0, -66), Style::recess()) << "the dead arc";

  dial.setPosition(511);
  const QImage half = dial.grab().toImage();
  EXPECT_EQ(half.pixelColor(qRound(166 * ratio), qRound(100 * ratio)), Style::accent());
  EXPECT_NE(half.pixelColor(qRound(34 * ratio), qRound(100 * ratio)), Style::accent());
}

TEST_F(ScreensTest, TheKnobIsDrawnInTheMiddleOfItsFrame) {
  auto &knob = shipped_.widget<KnobView>(QStringLiteral("MotorPoint"));
  knob.setKnown(true);
  const QImage picture = shipped_.screen.grab(knob.geometry()).toImage();
  const QPointF centre = drawnCentre(picture, Style::text(), picture.devicePixelRatio());
  EXPECT_NEAR(centre.x(), 11, 0.5);
  EXPECT_NEAR(768 - centre.y(), 11, 0.5);
}

TEST_F(ScreensTest, TheKnobIsDrawnBetweenWholePointsToo) {
  auto &knob = shipped_.widget<KnobView>(QStringLiteral("MotorPoint"));
  knob.setKnown(true);
  constexpr int ratio = 8;
  for (const QPointF &at : {QPointF(806.5, 153.25), QPointF(852.669, 171.331), QPointF(740, 218)}) {
    knob.setFrame(QRectF(at, QSizeF(22, 22)));
    EXPECT_TRUE(QRectF(knob.geometry()).contains(knob.frame()));
    QImage picture(knob.size() * ratio, QImage::Format_RGB32);
    picture.setDevicePixelRatio(ratio);
    knob.render(&picture);
    const QPointF centre = drawnCentre(picture, Style::text(), ratio) - QPointF(0, 768);
    EXPECT_NEAR(knob.x() + centre.x(), at.x() + 11, 0.1);
    EXPECT_NEAR(knob.y() - centre.y(), at.y() + 11, 0.1);
  }
}

/// Whether the left and the right half of the lamp are filled: the states differ in shape, not in colour
/// alone.
std::pair<bool, bool> filledHalves(QWidget &line) {
  const QImage picture = line.grab().toImage();
  const double ratio = picture.devicePixelRatio();
  const auto isFilled = [&](double x) {
    return picture.pixelColor(qRound(x * ratio), qRound(line.height() / 2.0 * ratio)) != Style::recess();
  };
  return {isFilled(22 - 4), isFilled(22 + 4)};
}

TEST_F(ScreensTest, TheLampFollowsTheConnectionState) {
  auto &line = shipped_.widget<ConnectionLine>("ConnectStatus");
  EXPECT_EQ(line.state(), ConnectionState::NotConnected) << "before it follows anything";
  ConnectionState connection = ConnectionState::NotConnected;
  line.follow(connection);
  EXPECT_EQ(line.state(), ConnectionState::NotConnected);
  EXPECT_EQ(filledHalves(line), std::pair(false, false));
  connection = ConnectionState::Initialising;
  EXPECT_EQ(line.state(), ConnectionState::Initialising);
  EXPECT_EQ(filledHalves(line), std::pair(true, false));
  connection = ConnectionState::Connected;
  EXPECT_EQ(line.state(), ConnectionState::Connected);
  EXPECT_EQ(filledHalves(line), std::pair(true, true));
}

TEST_F(ScreensTest, ANumberOfErrorsIsMarked) {
  auto &field = shipped_.widget<ValueField>(QStringLiteral("StatusError_value"));
  field.setText(QStringLiteral("2 Items"));
  EXPECT_TRUE(field.alarm());
  EXPECT_EQ(field.palette().color(QPalette::Disabled, QPalette::Text), Style::warningText());
  field.setText(QStringLiteral("0 Items"));
  EXPECT_FALSE(field.alarm());
  EXPECT_EQ(field.palette().color(QPalette::Disabled, QPalette::Text), Style::liveText());
}

}  // namespace
}  // namespace tavril
