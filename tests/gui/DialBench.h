#pragma once

#include "editor/DialView.h"
#include "editor/EntryField.h"
#include "editor/KnobView.h"
#include "editor/ScreenCoordinates.h"
#include "tests/gui/GuiBench.h"

#include <QWindow>

namespace tavril {

/// The editor on a virtual servo with a pointer in the window and a view of the positions that are sent.
class DialBench : public GuiBench {
 protected:
  /// Where a point of the screen design lies in the window, in Qt's coordinates.
  QPointF inWindow(QPointF location) {
    return window->mainScreen().mapTo(window, ScreenCoordinates::pointToQt(location));
  }

  // The window finds out by itself which widget each of these is for.
  void movePointer(double x, double y) { QTest::mouseMove(window->windowHandle(), at(x, y)); }
  void pressPointer(double x, double y, Qt::MouseButton button = Qt::LeftButton) {
    QTest::mousePress(window->windowHandle(), button, {}, at(x, y));
  }
  void releasePointer(double x, double y, Qt::MouseButton button = Qt::LeftButton) {
    QTest::mouseRelease(window->windowHandle(), button, {}, at(x, y));
  }
  void clickPointer(double x, double y, Qt::MouseButton button = Qt::LeftButton) {
    pressPointer(x, y, button);
    releasePointer(x, y, button);
  }

  DialView *dialView() { return find<DialView>("imageView"); }
  EntryField *entry() { return find<EntryField>("angle"); }
  QRect knobFrame() { return find<KnobView>("MotorPoint")->frame().toRect(); }

  /// The frames with positions that the servo has received, without what the log says beside them.
  QStringList positionFrames() {
    QStringList frames;
    for (const QString &line : trafficLines()) {
      if (line.startsWith(u"-> FF 06 96")) frames.append(line.sliced(3, 17));
    }
    return frames;
  }
  /// Whether the servo receives just these. A request for the position goes after them: what came before it
  /// was all.
  bool receivesExactly(const QStringList &expected) {
    controller().FunctionCMD()->ReadServoPosition();
    const bool isAllThere =
        waitFor([this] { return !trafficLines().filter(QStringLiteral("-> FF 04 97")).isEmpty(); });
    const QStringList received = positionFrames();
    EXPECT_EQ(received, expected) << received.join(u'\n').toStdString();
    clearTraffic();
    return isAllThere && received == expected;
  }
  void connectAndForget() {
    connectToServo();
    window->activateWindow();  // again, after the port dialog
    ASSERT_TRUE(QTest::qWaitForWindowActive(window));
    clearTraffic();
  }

 private:
  QPoint at(double x, double y) { return inWindow({x, y}).toPoint(); }
};

}  // namespace tavril
