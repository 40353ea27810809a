#include "editor/ScreenPointer.h"
#include "platform/linux/QtModalAlert.h"
#include "tests/gui/DialBench.h"

#include <QPlainTextEdit>
#include <QScrollArea>
#include <QScrollBar>
#include <QTimer>

namespace tavril {
namespace {

using DialPointerInWindow = DialBench;

TEST_F(DialPointerInWindow, PressDragAndReleaseTurnTheDialAndMoveTheServo) {
  connectAndForget();
  pressPointer(850, 539);
  EXPECT_EQ(textOf("angle"), QStringLiteral("204"));
  EXPECT_EQ(state.limitFlag, QString());
  movePointer(780, 539);
  EXPECT_EQ(textOf("angle"), QStringLiteral("818"));
  EXPECT_EQ(dialView()->position(), 818);
  EXPECT_EQ(knobFrame().topLeft(), QPoint(740, 768 - 528 - 22));
  EXPECT_EQ(state.limitFlag, QStringLiteral("MouseIn"));
  releasePointer(780, 539);
  EXPECT_EQ(state.limitFlag, QString());
  EXPECT_TRUE(receivesExactly({"FF 06 96 00 CC FE", "FF 06 96 03 32 FE"}));
}

TEST_F(DialPointerInWindow, BeforeAServoIsFoundTheLinesOfFramesShowTheKnobsCentre) {
  clickPointer(827, 549);
  EXPECT_EQ(textOf("angle"), QStringLiteral("358"));
  EXPECT_EQ(textOf("TXcmd"), QStringLiteral("863"));
  EXPECT_EQ(textOf("RXcmd"), QStringLiteral("585"));
}

TEST_F(DialPointerInWindow, ADoubleClickIsTwoPresses) {
  connectAndForget();
  QTest::mouseDClick(window->windowHandle(), Qt::LeftButton, {}, inWindow({850, 539}).toPoint());
  EXPECT_TRUE(receivesExactly({"FF 06 96 00 CC FE", "FF 06 96 00 CC FE"}));
}

TEST_F(DialPointerInWindow, OtherButtonsDoNotTurnTheDial) {
  log.clear();
  pressPointer(850, 539, Qt::RightButton);
  movePointer(780, 539);
  releasePointer(780, 539, Qt::RightButton);
  clickPointer(354, 384, Qt::MiddleButton);
  EXPECT_EQ(textOf("angle"), QString());
  EXPECT_EQ(state.limitFlag, QString());
  EXPECT_EQ(log.lines().filter(QStringLiteral("Other Area")), QStringList());
  EXPECT_EQ(log.lines().filter(QStringLiteral("MouseUp")), QStringList());
}

TEST_F(DialPointerInWindow, ADragThatLeavesTheWindowKeepsComingUntilTheRelease) {
  pressPointer(850, 539);
  movePointer(850, 560);
  const QRect knob = knobFrame();
  movePointer(1300, -200);
  EXPECT_EQ(state.limitFlag, QStringLiteral("MouseIn"));
  EXPECT_EQ(knobFrame(), knob);
  movePointer(780, 539);
  EXPECT_EQ(textOf("angle"), QStringLiteral("818")) << "and it may come back";
  movePointer(1300, -200);
  releasePointer(1300, -200);
  EXPECT_EQ(state.limitFlag, QString());
  movePointer(850, 539);
  EXPECT_EQ(textOf("angle"), QStringLiteral("818")) << "without a button held nothing is turned";
}

TEST_F(DialPointerInWindow, APressThatAFieldTakesForItselfIsNotTheScreens) {
  log.clear();
  clickPointer(790, 400);  // in the position entry
  EXPECT_TRUE(entry()->hasFocus());
  EXPECT_EQ(state.TextMouseFlag, QString());
  clickPointer(400, 629);  // on a caption
  EXPECT_EQ(state.TextMouseFlag, QStringLiteral("MouseDown"));
  EXPECT_EQ(log.lines().filter(QStringLiteral("Other Area")).size(), 1);
}

TEST_F(DialPointerInWindow, NoticesShowOverCaptionsFieldsAndTheSpaceBetweenThem) {
  for (const double x : {380.0, 527.0, 600.0}) {
    movePointer(100, 100);
    movePointer(x, 574);
    EXPECT_EQ(textOf("NoticeMSGview"), QString()) << "the frame has no text of its own";
    EXPECT_EQ(find<QPlainTextEdit>("MsgView")->toPlainText(), strings.text(u"NoticeMsg_alarm_led_policy"));
    movePointer(x, 403);
    EXPECT_EQ(find<QPlainTextEdit>("MsgView")->toPlainText(), strings.text(u"NoticeMsg_kp"));
  }
  movePointer(800, 200);  // over the notice itself
  EXPECT_EQ(find<QPlainTextEdit>("MsgView")->toPlainText(), strings.text(u"NoticeMsg_kp"));
}

TEST_F(DialPointerInWindow, EachMoveIsToldOnceHoweverManyWidgetsPassItOn) {
  int moves = 0;
  QObject::connect(&window->mainScreen().pointer(), &ScreenPointer::moved, window, [&] { ++moves; });
  movePointer(100, 100);
  movePointer(400, 629);  // a caption, which passes it on
  movePointer(600, 629);  // a field
  movePointer(800, 200);  // the notice
  movePointer(850, 539);  // the dial
  EXPECT_EQ(moves, 5);
}

TEST_F(DialPointerInWindow, TheNoticeIsWhiteAndOfSize18) {
  auto *notice = find<QPlainTextEdit>("MsgView");
  movePointer(400, 629);
  EXPECT_EQ(notice->font().pixelSize(), 18);
  EXPECT_EQ(notice->palette().color(QPalette::Text), QColor(Qt::white));
}

TEST_F(DialPointerInWindow, AShownPanelKeepsThePointerToItself) {
  connectAndForget();
  for (const char *name : {"ContrainerView_MsgView", "ContrainerView_WaitView"}) {
    auto *panel = find<QWidget>(name);
    movePointer(400, 629);
    const QString notice = find<QPlainTextEdit>("MsgView")->toPlainText();
    const QRect knob = knobFrame();
    panel->setHidden(false);
    log.clear();
    movePointer(400, 90);
    pressPointer(850, 539);
    movePointer(780, 560);
    releasePointer(780, 560);
    clickPointer(60, 60);
    const QPointF middle(512, 384);  // on the panel proper
    movePointer(middle.x(), middle.y());
    clickPointer(middle.x(), middle.y());
    EXPECT_TRUE(panel->isVisible());
    EXPECT_EQ(find<QPlainTextEdit>("MsgView")->toPlainText(), notice) << name;
    EXPECT_EQ(knobFrame(), knob) << name;
    EXPECT_EQ(log.lines().filter(QStringLiteral("Other Area")), QStringList()) << name;
    EXPECT_EQ(log.lines().filter(QStringLiteral("MouseUp")), QStringList()) << name;
    panel->setHidden(true);
  }
  EXPECT_TRUE(receivesExactly({}));
}

TEST_F(DialPointerInWindow, APanelThatComesUpDuringADragTakesItAwayButNotTheRelease) {
  pressPointer(850, 539);
  movePointer(850, 545);
  const QString position = textOf("angle");
  find<QWidget>("ContrainerView_WaitView")->setHidden(false);
  movePointer(780, 539);
  EXPECT_EQ(textOf("angle"), position);
  EXPECT_EQ(state.limitFlag, QStringLiteral("MouseIn"));
  releasePointer(780, 539);
  EXPECT_EQ(state.limitFlag, QString());
}

TEST_F(DialPointerInWindow, AnAlertThatComesUpDuringADragEndsIt) {
  pressPointer(850, 539);
  movePointer(850, 545);
  ASSERT_EQ(state.limitFlag, QStringLiteral("MouseIn"));
  QtModalAlert realAlert(mainQueue);
  QString flagDuringTheAlert = QStringLiteral("unset");
  QTimer outside;
  QObject::connect(&outside, &QTimer::timeout, &outside, [&] {
    QAbstractButton *button = alertButton();
    if (!button) return;
    outside.stop();
    flagDuringTheAlert = state.limitFlag;
    QTest::mouseClick(button, Qt::LeftButton);
  });
  outside.start(5);
  realAlert.run({QStringLiteral("Title"), QStringLiteral("Text"), {QStringLiteral("OK")}});
  EXPECT_EQ(flagDuringTheAlert, QString());
  movePointer(780, 539);
  EXPECT_NE(textOf("angle"), QStringLiteral("818"));
}

TEST_F(DialPointerInWindow, APressOnTheDialEndsAnEditOfThePositionWithoutSendingIt) {
  connectAndForget();
  clickPointer(790, 400);
  QTest::keyClicks(entry(), QStringLiteral("600"));
  ASSERT_TRUE(entry()->isModified());
  clickPointer(850, 539);
  EXPECT_EQ(entry()->text(), QStringLiteral("204"));
  EXPECT_TRUE(dialView()->hasFocus());
  QTest::keyClick(window, Qt::Key_Tab);
  EXPECT_TRUE(receivesExactly({"FF 06 96 00 CC FE"}));
  EXPECT_TRUE(alert.contents.empty());
}

TEST_F(DialPointerInWindow, APressOnTheDialLeavesAnyOtherUnfinishedEditAlone) {
  connectAndForget();
  auto *field = find<QLineEdit>("sID_value");
  field->setFocus();
  field->selectAll();
  QTest::keyClicks(field, QStringLiteral("254"));
  alert.contents.clear();
  clickPointer(850, 539);
  EXPECT_TRUE(alert.contents.empty()) << "no alert in the middle of a press";
  EXPECT_TRUE(field->hasFocus());
  EXPECT_TRUE(receivesExactly({"FF 06 96 00 CC FE"}));
  QTest::keyClick(field, Qt::Key_Return);
  EXPECT_EQ(alert.contents.size(), 1u);
}

TEST_F(DialPointerInWindow, AfterAPressElsewhereAnEditOfThePositionEndsUnsentUntilTheDialIsPressed) {
  connectAndForget();
  entry()->setFocus();
  QTest::keyClicks(entry(), QStringLiteral("600"));
  clickPointer(354, 384);  // between two cards
  EXPECT_TRUE(entry()->hasFocus()) << "nothing there takes the focus";
  QTest::keyClick(entry(), Qt::Key_Return);
  EXPECT_TRUE(receivesExactly({}));
  clickPointer(850, 539);
  entry()->setFocus();
  entry()->selectAll();
  QTest::keyClicks(entry(), QStringLiteral("600"));
  QTest::keyClick(entry(), Qt::Key_Return);
  EXPECT_TRUE(receivesExactly({"FF 06 96 00 CC FE", "FF 06 96 02 58 FE"}));
}

TEST_F(DialPointerInWindow, InAWindowThatIsTooSmallTheDialIsWhereItHasBeenScrolledTo) {
  window->fitInto(QSize(700, 500));
  auto *scroll = window->findChild<QScrollArea *>();
  ASSERT_TRUE(waitFor([&] { return scroll->horizontalScrollBar()->maximum() > 300; }));
  scroll->horizontalScrollBar()->setValue(scroll->horizontalScrollBar()->maximum());
  scroll->verticalScrollBar()->setValue(37);
  clickPointer(780, 539);
  EXPECT_EQ(textOf("angle"), QStringLiteral("818"));
  clickPointer(827, 549);
  EXPECT_EQ(textOf("angle"), QStringLiteral("358"));
}

TEST_F(DialPointerInWindow, TheWindowMayGoInTheMiddleOfADragAndOfAnEdit) {
  connectAndForget();
  auto *field = find<QLineEdit>("sID_value");
  field->setFocus();
  field->selectAll();
  QTest::keyClicks(field, QStringLiteral("254"));
  pressPointer(850, 539);
  movePointer(780, 539);
  alert.contents.clear();
  log.clear();
  editor.reset();
  EXPECT_TRUE(alert.contents.empty());
  EXPECT_EQ(log.lines().filter(QStringLiteral("MouseUp")), QStringList());
}

TEST_F(DialPointerInWindow, TheKnobStandsBetweenWholePoints) {
  clickPointer(827, 549);  // at 45 degrees
  const QRectF frame = find<KnobView>("MotorPoint")->frame();
  EXPECT_NEAR(frame.x(), 806 + 46.669, 0.001);
  EXPECT_NEAR(frame.y(), 768 - (528 + 46.669) - 22, 0.001);
  EXPECT_EQ(frame.size(), QSizeF(22, 22));
}

TEST_F(DialPointerInWindow, APressBesideTheScreenInALargerWindowCountsAsElsewhere) {
  window->resize(1600, 1000);
  auto *around = window->findChild<QScrollArea *>()->viewport();
  ASSERT_TRUE(waitFor([&] { return around->width() > 1200; }));
  log.clear();
  for (const QPoint &beside : {QPoint(10, 300), QPoint(around->width() - 10, 300), QPoint(700, 5)}) {
    state.TextMouseFlag = QString();
    const QPoint place = around->mapTo(window, beside);
    QTest::mouseClick(window->windowHandle(), Qt::LeftButton, {}, place);
    EXPECT_EQ(state.TextMouseFlag, QStringLiteral("MouseDown")) << beside.x();
  }
  EXPECT_EQ(log.lines().filter(QStringLiteral("Other Area")).size(), 3);
  EXPECT_EQ(log.lines().filter(QStringLiteral("MouseUp")).size(), 3);
  state.TextMouseFlag = QString();
  QTest::mouseClick(window->windowHandle(), Qt::RightButton, {}, around->mapTo(window, QPoint(10, 300)));
  find<QWidget>("ContrainerView_WaitView")->setHidden(false);
  QTest::mouseClick(window->windowHandle(), Qt::LeftButton, {}, around->mapTo(window, QPoint(10, 300)));
  EXPECT_EQ(state.TextMouseFlag, QString()) << "neither another button nor a press beside a panel";
}

TEST_F(DialPointerInWindow, ADragThatBeginsBesideTheScreenTurnsTheDial) {
  window->resize(1600, 1000);
  auto *around = window->findChild<QScrollArea *>()->viewport();
  ASSERT_TRUE(waitFor([&] { return around->width() > 1200; }));
  QTest::mousePress(window->windowHandle(), Qt::LeftButton, {}, around->mapTo(window, QPoint(10, 300)));
  EXPECT_EQ(textOf("angle"), QString());
  movePointer(780, 539);
  EXPECT_EQ(textOf("angle"), QStringLiteral("818"));
  EXPECT_EQ(state.limitFlag, QStringLiteral("MouseIn"));
  releasePointer(780, 539);
  EXPECT_EQ(state.limitFlag, QString());
}

TEST_F(DialPointerInWindow, TheKnobShowsWhatThePointerDoes) {
  auto *knob = find<QWidget>("MotorPoint");
  movePointer(100, 100);
  clickPointer(850, 539);
  movePointer(100, 100);
  const QImage atRest = knob->grab().toImage();
  movePointer(830, 560);
  const QImage hovered = knob->grab().toImage();
  EXPECT_EQ(window->mainScreen().cursor().shape(), Qt::PointingHandCursor);
  pressPointer(850, 539);
  const QImage pressed = knob->grab().toImage();
  releasePointer(850, 539);
  EXPECT_NE(atRest, hovered);
  EXPECT_NE(hovered, pressed);
  EXPECT_EQ(knob->grab().toImage(), hovered);
  auto *panel = find<QWidget>("ContrainerView_WaitView");
  panel->setHidden(false);
  EXPECT_EQ(window->mainScreen().cursor().shape(), Qt::ArrowCursor) << "under a panel nothing is hovered";
  panel->setHidden(true);
  EXPECT_EQ(knob->grab().toImage(), atRest);
}

}  // namespace
}  // namespace tavril
