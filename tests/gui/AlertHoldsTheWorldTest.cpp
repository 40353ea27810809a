#include "platform/linux/PaintingWait.h"
#include "platform/linux/QtModalAlert.h"
#include "tests/gui/GuiBench.h"

#include <QAbstractButton>
#include <QMessageBox>
#include <QTimer>

namespace tavril {
namespace {

TEST_F(GuiBench, AReplyThatArrivesDuringAnAlertIsHandledAfterIt) {
  connectToServo();
  QtModalAlert realAlert(mainQueue);
  find<QLineEdit>("RXcmd")->clear();
  int ticksDuringTheAlert = 0;
  const auto tick = timers.repeating(std::chrono::milliseconds(1), [&] { ++ticksDuringTheAlert; });
  const int readsBefore = terminal.count(Call::Read);

  // Looks on from outside the program's own timers, and answers once the reply has been read off the line.
  QTimer outside;
  QString shownDuringTheAlert = QStringLiteral("unset");
  int ticksSeen = -1;
  QObject::connect(&outside, &QTimer::timeout, &outside, [&] {
    QAbstractButton *button = alertButton();
    if (!button || terminal.count(Call::Read) <= readsBefore) return;
    outside.stop();
    shownDuringTheAlert = textOf("RXcmd");
    ticksSeen = ticksDuringTheAlert;
    QTest::mouseClick(button, Qt::LeftButton);
  });
  outside.start(5);
  controller().FunctionCMD()->ReadServoPosition();
  EXPECT_EQ(realAlert.run({QStringLiteral("Title"), QStringLiteral("Text"), {QStringLiteral("OK")}}),
            ModalAlert::firstButton);
  EXPECT_EQ(shownDuringTheAlert, QString());
  EXPECT_EQ(ticksSeen, 0);
  EXPECT_TRUE(waitFor([this] { return textOf("RXcmd").startsWith(u"RX: 255 6 151"); }));
  EXPECT_TRUE(waitFor([&] { return ticksDuringTheAlert > 0; }));
  tick->stop();
}

/// Counts how often a widget is painted.
class PaintCounter final : public QObject {
 public:
  explicit PaintCounter(QWidget *watched) { watched->installEventFilter(this); }
  int paints = 0;

 protected:
  bool eventFilter(QObject *, QEvent *event) override {
    if (event->type() == QEvent::Paint) ++paints;
    return false;
  }
};

TEST_F(GuiBench, TheWaitPanelIsOnTheScreenBeforeTheWaitBegins) {
  QWidget *panel = find<QWidget>("ContrainerView_WaitView");
  PaintCounter counter(panel);
  std::vector<int> paintsAtWait;
  // What the real wait does, but for the waiting.
  PaintingWait painting(paintPendingWidgets);
  wait.during = [&] {
    painting.wait(std::chrono::milliseconds(0));
    paintsAtWait.push_back(counter.paints);
  };
  connectToServo();
  wait.during = nullptr;
  ASSERT_EQ(paintsAtWait.size(), 2u);
  EXPECT_GT(paintsAtWait[0], 0);
}

}  // namespace
}  // namespace tavril
