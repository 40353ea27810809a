#include "editor/ButtonLabel.h"
#include "editor/ValueField.h"
#include "look/Style.h"
#include "platform/linux/QtMainQueue.h"
#include "platform/linux/QtModalAlert.h"
#include "tests/support/ActiveWindow.h"

#include <QAccessible>
#include <QApplication>
#include <QMessageBox>
#include <QSignalSpy>
#include <QTest>
#include <QTimer>

#include <gtest/gtest.h>

namespace tavril {
namespace {

class ButtonLabelTest : public testing::Test {
 protected:
  ButtonLabelTest() {
    field_.setGeometry(0, 0, 100, 30);
    button_.setGeometry(0, 40, 120, 30);
    button_.setText(QStringLiteral("Read"));
    window_.show();
    makeActive(&window_);
    EXPECT_TRUE(QTest::qWaitForWindowActive(&window_));
    field_.setFocus();
  }

  QImage picture() { return button_.grab().toImage(); }

  /// A real alert, in the middle of which the user does something before pressing Enter.
  void runAlert(std::function<void()> meanwhile = {}) {
    QTimer::singleShot(0, [&] {
      if (meanwhile) meanwhile();
      ASSERT_NE(QApplication::activeModalWidget(), nullptr);
      QTest::keyClick(QApplication::activeModalWidget(), Qt::Key_Return);
    });
    QtMainQueue queue;
    QtModalAlert(queue).run({QStringLiteral("Error"), QStringLiteral("0~253"), {QStringLiteral("OK")}});
    makeActive(&window_);
  }

  QWidget window_;
  ValueField field_{&window_};
  ButtonLabel button_{&window_};
  QSignalSpy clicked_{&button_, &ButtonLabel::clicked};
};

TEST_F(ButtonLabelTest, IsClickedByThePointer) {
  QTest::mouseClick(&button_, Qt::LeftButton);
  EXPECT_EQ(clicked_.size(), 1);
}

TEST_F(ButtonLabelTest, IsNotClickedWhenThePointerIsLetGoElsewhere) {
  QTest::mousePress(&button_, Qt::LeftButton, {}, QPoint(10, 10));
  QTest::mouseMove(&button_, QPoint(-20, -20));
  QTest::mouseRelease(&button_, Qt::LeftButton, {}, QPoint(-20, -20));
  EXPECT_EQ(clicked_.size(), 0);
}

TEST_F(ButtonLabelTest, IsNotClickedByAnotherButtonOfThePointer) {
  QTest::mouseClick(&button_, Qt::RightButton);
  EXPECT_EQ(clicked_.size(), 0);
}

TEST_F(ButtonLabelTest, IsReachedByTabAndPressedBySpaceAndEnter) {
  QTest::keyClick(&field_, Qt::Key_Tab);
  ASSERT_TRUE(button_.hasFocus());
  QTest::keyClick(&button_, Qt::Key_Space);
  EXPECT_EQ(clicked_.size(), 1);
  QTest::keyClick(&button_, Qt::Key_Return);
  EXPECT_EQ(clicked_.size(), 2);
  QTest::keyClick(&button_, Qt::Key_Enter);
  EXPECT_EQ(clicked_.size(), 3);
}

TEST_F(ButtonLabelTest, AnEnterKeyHeldDownClicksOnce) {
  button_.setFocus();
  QKeyEvent first(QEvent::KeyPress, Qt::Key_Return, Qt::NoModifier, QString(), false);
  QKeyEvent repeated(QEvent::KeyPress, Qt::Key_Return, Qt::NoModifier, QString(), true);
  QApplication::sendEvent(&button_, &first);
  QApplication::sendEvent(&button_, &repeated);
  EXPECT_EQ(clicked_.size(), 1);
}

TEST_F(ButtonLabelTest, DisabledItIsNeitherClickedNorReached) {
  button_.setEnabled(false);
  QTest::mouseClick(&button_, Qt::LeftButton);
  QTest::keyClick(&field_, Qt::Key_Tab);
  QTest::keyClick(&button_, Qt::Key_Space);
  EXPECT_FALSE(button_.hasFocus());
  EXPECT_EQ(clicked_.size(), 0);
}

TEST_F(ButtonLabelTest, AFieldThatIsBeingEditedCommitsBeforeTheClick) {
  QStringList order;
  QObject::connect(&field_, &ValueField::committed, &field_,
                   [&] { order.append(QStringLiteral("committed")); });
  QObject::connect(&button_, &ButtonLabel::clicked, &button_,
                   [&] { order.append(QStringLiteral("clicked")); });
  QTest::keyClicks(&field_, QStringLiteral("42"));
  QTest::mouseClick(&button_, Qt::LeftButton);
  EXPECT_EQ(order, QStringList({QStringLiteral("committed"), QStringLiteral("clicked")}));
}

TEST_F(ButtonLabelTest, AClickThatLeavesARejectedEntryIsNotCarriedOutAndTheButtonIsUpAgain) {
  QObject::connect(&field_, &ValueField::committed, &field_, [&] { runAlert(); });
  QTest::keyClicks(&field_, QStringLiteral("999"));
  QTest::mousePress(&button_, Qt::LeftButton);
  EXPECT_FALSE(button_.isDown());
  EXPECT_TRUE(button_.hasFocus());
  QTest::mouseRelease(&button_, Qt::LeftButton);  // held beyond the alert
  EXPECT_EQ(clicked_.size(), 0);
  QTest::mouseClick(&button_, Qt::LeftButton);
  EXPECT_EQ(clicked_.size(), 1);
}

TEST_F(ButtonLabelTest, AnAlertThatComesUpDuringAPressEndsItForGood) {
  QTest::mousePress(&button_, Qt::LeftButton);
  ASSERT_TRUE(button_.isDown());
  bool wasDown = true;
  runAlert([&] { wasDown = button_.isDown(); });
  EXPECT_FALSE(wasDown);
  QMouseEvent move(QEvent::MouseMove, QPointF(5, 5), button_.mapToGlobal(QPointF(5, 5)), Qt::NoButton,
                   Qt::LeftButton, {});
  QApplication::sendEvent(&button_, &move);  // still held
  EXPECT_FALSE(button_.isDown());
  QTest::mouseRelease(&button_, Qt::LeftButton);
  EXPECT_EQ(clicked_.size(), 0);
}

TEST_F(ButtonLabelTest, ItsTextIsWhiteAtRestOnADarkFaceAndBlackOnALightOneWhenClicked) {
  EXPECT_EQ(button_.textColor(), QColor(Qt::white));
  EXPECT_EQ(button_.faceColor(), Style::face());
  const QImage atRest = picture();
  EXPECT_EQ(atRest.pixelColor(8, atRest.height() / 2), Style::face());
  button_.setTextColor(Qt::black);
  EXPECT_EQ(button_.textColor(), QColor(Qt::black));
  const QImage clicked = picture();
  EXPECT_EQ(clicked.pixelColor(8, clicked.height() / 2), Style::flashFace());
}

TEST_F(ButtonLabelTest, LooksDifferentWhenDisabledAndWhenFocused) {
  const QImage atRest = picture();
  button_.setFocus();
  const QImage focused = picture();
  button_.setEnabled(false);
  const QImage disabled = picture();
  EXPECT_NE(atRest, focused);
  EXPECT_NE(atRest, disabled);
  EXPECT_NE(focused, disabled);
}

TEST_F(ButtonLabelTest, IsAButtonWithItsTextAsNameForAssistiveTechnology) {
  QAccessibleInterface *interface = QAccessible::queryAccessibleInterface(&button_);
  ASSERT_NE(interface, nullptr);
  EXPECT_EQ(interface->role(), QAccessible::Button);
  EXPECT_EQ(interface->text(QAccessible::Name), QStringLiteral("Read"));
  ASSERT_NE(interface->actionInterface(), nullptr);
  interface->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
  EXPECT_TRUE(QTest::qWaitFor([this] { return clicked_.size() == 1; }));
}

}  // namespace
}  // namespace tavril
