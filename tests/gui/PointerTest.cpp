// The dial and the notices with the real pointer of an X server. Runs on such a server only:
// tools/under-xvfb.
#include "editor/screen/ButtonLabel.h"
#include "platform/linux/QtModalAlert.h"
#include "tests/gui/DialBench.h"
#include "tests/gui/XPointer.h"

#include <QMenu>
#include <QMenuBar>
#include <QPlainTextEdit>
#include <QTimer>

namespace tavril {
namespace {

struct Point {
  double x;
  double y;
  const char *frame;  ///< what the servo is to receive
};

constexpr Point points[]{
    {817, 539, "FF 06 96 00 00 FE"},  // the centre
    {817, 600, "FF 06 96 00 00 FE"},  // straight above it
    {850, 539, "FF 06 96 00 CC FE"}, {780, 539, "FF 06 96 03 32 FE"},
    {827, 549, "FF 06 96 01 66 FE"}, {807, 549, "FF 06 96 02 98 FE"},
    {807, 529, "FF 06 96 03 CB FE"}, {827, 529, "FF 06 96 00 33 FE"},
    {718, 440, "FF 06 96 03 CB FE"},  // the four corners
    {916, 440, "FF 06 96 00 33 FE"}, {718, 638, "FF 06 96 02 98 FE"},
    {916, 638, "FF 06 96 01 66 FE"}, {816, 450, "FF 06 96 03 FF FE"},  // the two halves of the dead arc
    {818, 450, "FF 06 96 00 00 FE"}, {900, 500, "FF 06 96 00 76 FE"},
    {760, 470, "FF 06 96 03 DE FE"}, {790, 620, "FF 06 96 02 3E FE"},
    {870, 620, "FF 06 96 01 8E FE"}, {784, 482, "FF 06 96 03 FE FE"},  // just short of the dead arc
    {850, 482, "FF 06 96 00 00 FE"},
};

/// Only where a point has more than one pixel can a pointer stand between two whole coordinates.
constexpr Point halfPoints[]{
    {827.5, 549.5, "FF 06 96 01 66 FE"}, {780.5, 539.5, "FF 06 96 03 2F FE"},
    {850.5, 482.5, "FF 06 96 00 02 FE"}, {717.5, 638.5, "FF 06 96 02 98 FE"},
    {916.5, 439.5, "FF 06 96 00 33 FE"}, {817.5, 500.5, "FF 06 96 00 00 FE"},
};

struct Row {
  double middle;
  const char16_t *key;
};
constexpr Row rows[]{
    {630.5, u"NoticeMsg_sid"},
    {601.5, u"NoticeMsg_ack_policy"},
    {572.5, u"NoticeMsg_alarm_led_policy"},
    {546.5, u"NoticeMsg_torque_policy"},
    {517.5, u"NoticeMsg_max_tempertaure"},
    {488.5, u"NoticeMsg_min_voltage"},
    {459.5, u"NoticeMsg_max_voltage"},
    {431.5, u"NoticeMsg_max_load"},
    {404.5, u"NoticeMsg_kp"},
    {375.5, u"NoticeMsg_ki"},
    {346.5, u"NoticeMsg_kd"},
    {317.5, u"NoticeMsg_over_temperature"},
    {289.5, u"NoticeMsg_over_voltage"},
    {261.5, u"NoticeMsg_over_load"},
    {232.5, u"NoticeMsg_calibration_angle"},
    {204.5, u"NoticeMsg_status_error"},
    {176.5, u"NoticeMsg_status_detail"},
    {148.5, u"NoticeMsg_present_voltage"},
    {119.5, u"NoticeMsg_present_temperature"},
    {91.5, u"NoticeMsg_present_load"},
};

class Pointer : public DialBench {
 protected:
  void moveTo(double x, double y) {
    const QPointF pixel = inWindow({x, y}) * window->devicePixelRatio();
    hand.moveTo(window->winId(), pixel.toPoint());
  }
  /// Whether one frame more has come, and it is this one.
  bool receivesNext(const char *frame) {
    ++received;
    return waitFor([this] { return positionFrames().size() >= received; }) &&
           positionFrames().value(received - 1) == QString::fromLatin1(frame);
  }
  /// Releases the button and waits until the window knows: a press that comes at the same instant is lost in
  /// Qt.
  bool letGo() {
    const auto count = [this] { return log.lines().filter(QStringLiteral("MouseUp")).size(); };
    const qsizetype before = count();
    hand.release();
    return waitFor([&] { return count() > before; });
  }
  void clickAt(const QWidget &widget, QPoint place) {
    const QPointF pixel = QPointF(widget.mapTo(widget.window(), place)) * widget.devicePixelRatio();
    hand.moveTo(widget.window()->winId(), pixel.toPoint());
    hand.press();
    hand.release();
  }
  QString notice() { return find<QPlainTextEdit>("MsgView")->toPlainText(); }

  void pressAt(std::span<const Point> all) {
    QStringList frames;
    for (const Point &point : all) {
      moveTo(point.x, point.y);
      hand.press();
      ASSERT_TRUE(receivesNext(point.frame)) << point.x << ", " << point.y;
      ASSERT_TRUE(letGo());
      frames.append(QString::fromLatin1(point.frame));
    }
    EXPECT_TRUE(receivesExactly(frames)) << "hovering and releasing send nothing";
    received = 0;
  }
  void dragThrough(std::span<const Point> all) {
    moveTo(817, 520);
    hand.press();
    ASSERT_TRUE(receivesNext("FF 06 96 00 00 FE"));
    QStringList frames{QStringLiteral("FF 06 96 00 00 FE")};
    for (const Point &point : all) {
      moveTo(point.x, point.y);
      ASSERT_TRUE(receivesNext(point.frame)) << point.x << ", " << point.y;
      EXPECT_EQ(state.limitFlag, QStringLiteral("MouseIn"));
      frames.append(QString::fromLatin1(point.frame));
    }
    ASSERT_TRUE(letGo());
    EXPECT_EQ(state.limitFlag, QString());
    EXPECT_TRUE(receivesExactly(frames));
    received = 0;
  }

  XPointer hand;
  qsizetype received = 0;
};

TEST_F(Pointer, APressAtEachOfTwentyPointsSendsItsFrame) {
  static_assert(std::size(points) == 20);
  connectAndForget();
  pressAt(points);
}

TEST_F(Pointer, ADragThroughTwentyPointsSendsTheirFrames) {
  connectAndForget();
  dragThrough(points);
}

TEST_F(Pointer, BetweenWholePointsPressesAndDragsSendTheirFrames) {
  ASSERT_EQ(window->devicePixelRatio(), 2);
  connectAndForget();
  pressAt(halfPoints);
  dragThrough(halfPoints);
}

TEST_F(Pointer, HoveringEachOfTheTwentyRowsShowsItsNotice) {
  static_assert(std::size(rows) == 20);
  connectAndForget();
  state.ErrorMsgShowToMegView[QStringLiteral("Error")] = KeyedText::words(QStringLiteral("\nTwo errors"));
  state.ErrorMsgShowToMegView[QStringLiteral("Detail")] = KeyedText::words(QStringLiteral("\nOne detail"));
  for (const double x : {400.0, 580.0}) {  // over the captions, over the fields
    for (const Row &row : rows) {
      QString expected = strings.text(row.key);
      if (row.key == QStringView(u"NoticeMsg_status_error")) expected += QStringLiteral("\nTwo errors\n");
      if (row.key == QStringView(u"NoticeMsg_status_detail")) expected += QStringLiteral("\nOne detail\n");
      moveTo(x, row.middle);
      EXPECT_TRUE(waitFor([&] { return notice() == expected; })) << expected.toStdString();
    }
  }
  EXPECT_TRUE(receivesExactly({}));
}

TEST_F(Pointer, ADragThatLeavesTheWindowIsHeardOfUntilTheRelease) {
  moveTo(850, 539);
  hand.press();
  ASSERT_TRUE(waitFor([this] { return textOf("angle") == u"204"; }));
  moveTo(-200, 539);
  ASSERT_TRUE(waitFor([this] { return state.limitFlag == u"MouseIn"; }));
  EXPECT_EQ(textOf("angle"), QStringLiteral("204"));
  moveTo(780, 539);
  EXPECT_TRUE(waitFor([this] { return textOf("angle") == u"818"; }));
  moveTo(-200, 539);
  ASSERT_TRUE(letGo());
  EXPECT_EQ(state.limitFlag, QString());
  EXPECT_EQ(textOf("angle"), QStringLiteral("818"));
}

/// Counts the events of one kind that a widget gets.
class EventCounter final : public QObject {
 public:
  EventCounter(QWidget *watched, QEvent::Type type) : type_(type) { watched->installEventFilter(this); }
  int count = 0;

 protected:
  bool eventFilter(QObject *, QEvent *event) override {
    if (event->type() == type_) ++count;
    return false;
  }

 private:
  QEvent::Type type_;
};

TEST_F(Pointer, UnderAPanelNothingIsTurnedOrExplained) {
  connectAndForget();
  moveTo(400, 404);
  ASSERT_TRUE(waitFor([this] { return notice() == strings.text(u"NoticeMsg_kp"); }));
  auto *panel = find<QWidget>("ContrainerView_WaitView");
  const EventCounter moves(panel, QEvent::MouseMove);
  const EventCounter presses(panel, QEvent::MouseButtonPress);
  const EventCounter releases(panel, QEvent::MouseButtonRelease);
  panel->setHidden(false);
  moveTo(400, 91);
  ASSERT_TRUE(waitFor([&] { return moves.count == 1; }));
  moveTo(850, 539);
  hand.press();
  ASSERT_TRUE(waitFor([&] { return presses.count == 1; }));
  moveTo(780, 539);
  ASSERT_TRUE(waitFor([&] { return moves.count == 3; }));
  hand.release();
  ASSERT_TRUE(waitFor([&] { return releases.count == 1; }));
  EXPECT_EQ(notice(), strings.text(u"NoticeMsg_kp"));
  EXPECT_EQ(textOf("angle"), QString());
  EXPECT_TRUE(receivesExactly({}));
}

TEST_F(Pointer, AnUnfinishedPositionIsNotSentWhenTheMenuOfRebootIsUsed) {
  connectAndForget();
  entry()->setFocus();
  entry()->selectAll();
  QTest::keyClicks(entry(), QStringLiteral("6"));
  const QMenuBar *bar = window->menuBar();
  for (QAction *title : bar->actions()) {
    QMenu *menu = title->menu();
    for (QAction *item : menu->actions()) {
      if (item->text() != strings.text(u"reboot_servo")) continue;
      clickAt(*bar, bar->actionGeometry(title).center());
      ASSERT_TRUE(waitFor([&] { return QApplication::activePopupWidget() == menu; }));
      ASSERT_TRUE(QTest::qWaitForWindowExposed(menu));
      clickAt(*menu, menu->actionGeometry(item).center());
    }
  }
  ASSERT_TRUE(waitFor([this] { return find<QWidget>("ContrainerView_MsgView")->isVisible(); }));
  QTest::keyClick(QApplication::focusWidget(), Qt::Key_Escape);
  EXPECT_TRUE(entry()->hasFocus());
  EXPECT_EQ(entry()->text(), QStringLiteral("6"));
  EXPECT_TRUE(receivesExactly({}));
}

/// Values that are refused in a real alert, which the pointer or a key closes.
class PointerAndAlert : public Pointer {
 protected:
  void SetUp() override {
    connectAndForget();
    alert.whileUp = [this] {
      QTimer::singleShot(0, [this] { answer(); });
      QtModalAlert(mainQueue).run(alert.contents.back());
      isOver = true;
    };
    auto *field = find<QLineEdit>("sID_value");
    field->setFocus();
    field->selectAll();
    QTest::keyClicks(field, QStringLiteral("254"));
    alert.contents.clear();
    clearTraffic();
    button = find<ButtonLabel>("read");
  }
  void TearDown() override { alert.whileUp = nullptr; }

  /// Presses the button, and waits until the alert that this raises has been answered.
  void pressButton() {
    moveToButton();
    hand.press();
    ASSERT_TRUE(waitFor([this] { return isOver; }));
    ASSERT_EQ(alert.contents.size(), 1u);
    EXPECT_EQ(textOf("sID_value"), QStringLiteral("1")) << "the entry is put back";
  }
  void moveToButton() {
    const QPointF middle = button->mapTo(window, QPointF(button->rect().center()));
    hand.moveTo(window->winId(), (middle * window->devicePixelRatio()).toPoint());
  }
  /// Nothing is sent, and the button is drawn like one that is up.
  void checkThatNothingWasClicked() {
    // What the pointer did before has come to the window when the notice is there. The row is one that the
    // alert did not cover: the server may not have taken that away yet.
    moveTo(400, 630.5);
    ASSERT_TRUE(waitFor([this] { return notice() == strings.text(u"NoticeMsg_sid"); }));
    controller().FunctionCMD()->ReadServoPosition();
    ASSERT_TRUE(waitFor([this] { return !trafficLines().filter(QStringLiteral("-> FF 04 97")).isEmpty(); }));
    EXPECT_EQ(trafficLines().filter(QStringLiteral("-> FF 05 91")), QStringList());
    EXPECT_FALSE(button->isDown());
    EXPECT_EQ(window->focusWidget(), button);
    const QImage after = button->grab().toImage();
    button->setDown(true);
    EXPECT_NE(after, button->grab().toImage());
    button->setDown(false);
    EXPECT_EQ(after, button->grab().toImage());
  }
  bool isAnswerShown() {
    QAbstractButton *ok = alertButton();
    return ok && ok->window()->windowHandle()->isExposed() && ok->window()->isActiveWindow();
  }

  std::function<void()> answer;
  bool isOver = false;
  ButtonLabel *button = nullptr;
};

TEST_F(PointerAndAlert, AClickOnAButtonThatRejectsAnEntryIsNotCarriedOut) {
  answer = [this] {
    hand.release();
    ASSERT_TRUE(waitFor([this] { return isAnswerShown(); }));
    clickAt(*alertButton(), alertButton()->rect().center());
  };
  pressButton();
  checkThatNothingWasClicked();
  // The next click is one.
  moveToButton();
  hand.press();
  ASSERT_TRUE(waitFor([this] { return button->isDown(); }));
  hand.release();
  EXPECT_TRUE(waitFor([this] { return !trafficLines().filter(QStringLiteral("-> FF 05 91")).isEmpty(); }));
}

TEST_F(PointerAndAlert, NorIsAClickThatIsHeldUntilAKeyHasClosedTheAlert) {
  answer = [this] {
    ASSERT_TRUE(waitFor([this] { return isAnswerShown(); }));
    QTest::keyClick(QApplication::activeModalWidget(), Qt::Key_Return);
  };
  pressButton();
  moveToButton();
  hand.release();
  checkThatNothingWasClicked();
}

}  // namespace
}  // namespace tavril
