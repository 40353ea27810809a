// A desktop that is smaller than the screen: there are scroll bars, and nothing is out of reach.
#include "tests/gui/GuiBench.h"
#include "tests/gui/TextFit.h"

#include <QScrollArea>
#include <QScrollBar>

namespace tavril {
namespace {

class SmallScreenTest : public GuiBench {
 protected:
  SmallScreenTest() {
    window->fitInto(QSize(800, 480));
    EXPECT_TRUE(waitFor([this] { return scroller().verticalScrollBar()->isVisible(); }));
  }

  QScrollArea &scroller() { return *window->findChild<QScrollArea *>(); }

  /// Whether all of the element is in view.
  bool isInView(const QWidget &element) {
    const QWidget &viewport = *scroller().viewport();
    return viewport.rect().contains(QRect(element.mapTo(&viewport, QPoint()), element.size()));
  }
};

TEST_F(SmallScreenTest, HasScrollBarsAndALargeOneHasNone) {
  EXPECT_EQ(window->size(), QSize(800, 480));
  EXPECT_TRUE(scroller().horizontalScrollBar()->isVisible());
  window->fitInto(QSize(1920, 1080));
  EXPECT_TRUE(waitFor([this] { return !scroller().verticalScrollBar()->isVisible(); }));
  EXPECT_FALSE(scroller().horizontalScrollBar()->isVisible());
}

TEST_F(SmallScreenTest, TheScrollBarsReachTheWholeScreen) {
  const QWidget *read = find<QWidget>("detail_set");
  const QWidget *capture = find<QWidget>("capture");
  EXPECT_FALSE(isInView(*read));
  scroller().verticalScrollBar()->setValue(scroller().verticalScrollBar()->maximum());
  EXPECT_TRUE(isInView(*read));
  EXPECT_FALSE(isInView(*capture));
  scroller().horizontalScrollBar()->setValue(scroller().horizontalScrollBar()->maximum());
  EXPECT_EQ(window->mainScreen().mapTo(scroller().viewport(), QPoint(1024, 768)),
            QPoint(scroller().viewport()->width(), scroller().viewport()->height()));
}

TEST_F(SmallScreenTest, WhateverTabReachesIsScrolledIntoView) {
  connectToServo();
  window->activateWindow();
  ASSERT_TRUE(QTest::qWaitForWindowActive(window));
  find<QWidget>("sID_value")->setFocus();
  QSet<QString> visited;
  for (int i = 0; i < 30; ++i) {
    const QWidget *focus = QApplication::focusWidget();
    ASSERT_NE(focus, nullptr);
    EXPECT_TRUE(isInView(*focus)) << focus->objectName().toStdString();
    visited.insert(focus->objectName());
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
  }
  for (const char *button : {"read", "detail_set", "motor_set", "relax", "capture"}) {
    EXPECT_TRUE(visited.contains(QLatin1String(button))) << button;
  }
}

TEST_F(SmallScreenTest, APanelIsScrolledIntoViewWithAllItsButtons) {
  window->activateWindow();
  ASSERT_TRUE(QTest::qWaitForWindowActive(window));
  for (const auto &[container, panel] :
       {std::pair("ContrainerView_MsgView", "MsgPanel"), std::pair("ContrainerView_WaitView", "WaitPanel")}) {
    scroller().verticalScrollBar()->setValue(0);
    scroller().horizontalScrollBar()->setValue(0);
    find<QWidget>(container)->show();
    EXPECT_TRUE(isInView(*find<QWidget>(panel))) << panel;
    find<QWidget>(container)->hide();
  }
}

TEST_F(SmallScreenTest, TheWindowCanBeMadeSmallerThanItsScreen) {
  EXPECT_LE(window->minimumSizeHint().width(), 800);
  EXPECT_LE(window->minimumSizeHint().height(), 480);
}

}  // namespace
}  // namespace tavril
