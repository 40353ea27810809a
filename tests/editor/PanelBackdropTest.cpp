#include "editor/screen/ButtonLabel.h"
#include "editor/screen/ValueField.h"
#include "tests/editor/ShippedScreen.h"

#include <QSignalSpy>
#include <QTest>
#include <QWheelEvent>
#include <QWindow>

namespace tavril {
namespace {

/// Notes what arrives at the screen below a panel.
class PointerListener : public QObject {
 public:
  bool eventFilter(QObject *, QEvent *event) override {
    switch (event->type()) {
      case QEvent::MouseButtonPress:
      case QEvent::MouseButtonRelease:
      case QEvent::MouseButtonDblClick:
      case QEvent::MouseMove:
      case QEvent::Wheel:
        kinds.insert(event->type());
        break;
      default:
        break;
    }
    return false;
  }

  QSet<int> kinds;
};

class PanelBackdropTest : public testing::Test {
 protected:
  PanelBackdropTest() {
    shipped_.show();
    shipped_.screen.setMouseTracking(true);
    shipped_.screen.installEventFilter(&below_);
  }

  static QPoint middle() { return {512, 384}; }

  /// Moves, presses, lets go and turns the wheel at a place of the window, as the window system tells it.
  void pointAt(QPoint place) {
    QWindow *window = shipped_.screen.windowHandle();
    QTest::mouseMove(window, place);
    QTest::mousePress(window, Qt::LeftButton, {}, place);
    QTest::mouseMove(window, place + QPoint(1, 1));
    QTest::mouseRelease(window, Qt::LeftButton, {}, place + QPoint(1, 1));
    QWidget *under = shipped_.screen.childAt(place);
    QWheelEvent wheel(under->mapFrom(&shipped_.screen, place), shipped_.screen.mapToGlobal(place), {},
                      {0, 120}, Qt::NoButton, {}, Qt::NoScrollPhase, false);
    QSpontaneKeyEvent::setSpontaneous(&wheel);
    qApp->notify(under, &wheel);
    QApplication::processEvents();
  }

  ShippedScreen shipped_;
  PointerListener below_;
  PanelBackdrop &question_ = shipped_.widget<PanelBackdrop>("ContrainerView_MsgView");
  PanelBackdrop &wait_ = shipped_.widget<PanelBackdrop>("ContrainerView_WaitView");
};

TEST_F(PanelBackdropTest, PointerEventsReachTheScreenWhenNoPanelIsUp) {
  pointAt({817, 229});
  EXPECT_EQ(below_.kinds, QSet<int>({QEvent::MouseMove, QEvent::MouseButtonPress, QEvent::MouseButtonRelease,
                                     QEvent::Wheel}));
}

TEST_F(PanelBackdropTest, PointerEventsOnAShownPanelNeverReachTheScreen) {
  for (PanelBackdrop *panel : {&question_, &wait_}) {
    panel->show();
    below_.kinds.clear();
    for (const QPoint place :
         {QPoint(817, 229), QPoint(500, 140), middle(), QPoint(512, 300), QPoint(3, 3)}) {
      pointAt(place);
    }
    EXPECT_EQ(below_.kinds, QSet<int>());
    panel->hide();
  }
}

TEST_F(PanelBackdropTest, ThePanelIsCentred) {
  for (PanelBackdrop *panel : {&question_, &wait_}) {
    panel->show();
    QApplication::processEvents();
    const auto *card = panel->findChild<QWidget *>(QString(), Qt::FindDirectChildrenOnly);
    ASSERT_NE(card, nullptr);
    EXPECT_NEAR(card->geometry().center().x(), middle().x(), 1);
    EXPECT_NEAR(card->geometry().center().y(), middle().y(), 1);
    panel->hide();
  }
}

TEST_F(PanelBackdropTest, WhatLiesBelowIsDimmed) {
  const QColor before = shipped_.screen.grab().toImage().pixelColor(100, 200);
  question_.show();
  const QColor after = shipped_.screen.grab().toImage().pixelColor(100, 200);
  EXPECT_LT(after.lightness(), before.lightness());
}

TEST_F(PanelBackdropTest, TheFocusGoesToCancelAndBackWhereItWas) {
  auto &field = shipped_.widget<ValueField>("sID_value");
  field.setEnabled(true);
  field.setFocus();
  question_.show();
  EXPECT_TRUE(shipped_.widget("cancel_lab").hasFocus());
  question_.hide();
  EXPECT_TRUE(field.hasFocus());
}

TEST_F(PanelBackdropTest, TheFocusOfTheWaitPanelGoesToItsCancelButton) {
  wait_.show();
  EXPECT_TRUE(shipped_.widget("cancel").hasFocus());
}

TEST_F(PanelBackdropTest, AnUnfinishedEditIsLeftAsItIsAndGoesOnAfterThePanel) {
  auto &field = shipped_.widget<ValueField>("sID_value");
  const QSignalSpy committed(&field, &ValueField::committed);
  field.setEnabled(true);
  field.setFocus();
  QTest::keyClicks(&field, QStringLiteral("25"));
  for (PanelBackdrop *panel : {&question_, &wait_}) {
    panel->show();
    EXPECT_FALSE(field.hasFocus());
    panel->hide();
    EXPECT_TRUE(field.hasFocus());
    EXPECT_TRUE(field.isModified());
    EXPECT_EQ(committed.size(), 0);
  }
  QTest::keyClicks(&field, QStringLiteral("3"));
  QTest::keyClick(&field, Qt::Key_Return);
  EXPECT_EQ(field.text(), QStringLiteral("253"));
  EXPECT_EQ(committed.size(), 1);
}

TEST_F(PanelBackdropTest, AButtonThatIsHeldDownWhenAPanelComesUpIsNotClicked) {
  auto &button = shipped_.widget<ButtonLabel>("read");
  const QSignalSpy clicked(&button, &ButtonLabel::clicked);
  button.setEnabled(true);
  QTest::mousePress(&button, Qt::LeftButton);
  ASSERT_TRUE(button.isDown());
  question_.show();
  EXPECT_FALSE(button.isDown());
  QTest::mouseRelease(&button, Qt::LeftButton);
  EXPECT_EQ(clicked.size(), 0);
}

TEST_F(PanelBackdropTest, TabStaysAmongThePanelsButtons) {
  question_.show();
  QStringList visited;
  for (int i = 0; i < 4; ++i) {
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
    visited.append(QApplication::focusWidget()->objectName());
  }
  EXPECT_EQ(QSet<QString>(visited.begin(), visited.end()), QSet<QString>({"cancel_lab", "ok_lab", "close"}));
  EXPECT_EQ(visited[0], visited[3]);
  QTest::keyClick(QApplication::focusWidget(), Qt::Key_Backtab);
  EXPECT_EQ(QApplication::focusWidget()->objectName(), visited[2]);
}

TEST_F(PanelBackdropTest, TheHiddenButtonIsPassedOverUntilItIsShown) {
  wait_.show();
  QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
  EXPECT_EQ(QApplication::focusWidget()->objectName(), QStringLiteral("cancel"));
  shipped_.widget("CloseButtonView").show();
  QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
  EXPECT_EQ(QApplication::focusWidget()->objectName(), QStringLiteral("CloseButton"));
}

TEST_F(PanelBackdropTest, EscapeIsTheCancelButton) {
  QSignalSpy questionCancelled(&shipped_.widget<ButtonLabel>("cancel_lab"), &ButtonLabel::clicked);
  QSignalSpy confirmed(&shipped_.widget<ButtonLabel>("ok_lab"), &ButtonLabel::clicked);
  question_.show();
  shipped_.widget("ok_lab").setFocus();
  QTest::keyClick(QApplication::focusWidget(), Qt::Key_Escape);
  EXPECT_EQ(questionCancelled.size(), 1);
  EXPECT_EQ(confirmed.size(), 0);
  question_.hide();

  QSignalSpy waitCancelled(&shipped_.widget<ButtonLabel>("cancel"), &ButtonLabel::clicked);
  wait_.show();
  QTest::keyClick(QApplication::focusWidget(), Qt::Key_Escape);
  EXPECT_EQ(waitCancelled.size(), 1);

  shipped_.widget("CloseButtonView").show();
  QSignalSpy givenUp(&shipped_.widget<ButtonLabel>("CloseButton"), &ButtonLabel::clicked);
  QTest::keyClick(QApplication::focusWidget(), Qt::Key_Escape);
  EXPECT_EQ(waitCancelled.size() + givenUp.size(), 2) << "one of the two, which do the same";
}

TEST_F(PanelBackdropTest, AButtonThatWasClickedIsWhiteAgainWhenThePanelComesBack) {
  auto &confirm = shipped_.widget<ButtonLabel>("ok_lab");
  question_.show();
  confirm.setTextColor(Qt::black);
  question_.hide();
  question_.show();
  EXPECT_EQ(confirm.textColor(), QColor(Qt::white));
}

TEST_F(PanelBackdropTest, TheFieldsBelowCannotBeTypedInto) {
  auto &field = shipped_.widget<ValueField>("sID_value");
  field.setEnabled(true);
  field.setFocus();
  question_.show();
  QTest::keyClicks(QApplication::focusWidget(), QStringLiteral("42"));
  EXPECT_EQ(field.text(), QString());
}

}  // namespace
}  // namespace tavril
