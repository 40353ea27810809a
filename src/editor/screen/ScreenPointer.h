#pragma once

#include <QEvent>
#include <QObject>
#include <QPointF>
#include <QPointer>

class QMouseEvent;
class QWidget;

namespace tavril {

/// The pointer on the main screen, in the design's coordinates. Presses with the left button that no field or
/// button takes for itself, and all that follows up to the release, both also outside the screen; and moves
/// without a button held, over whatever is on the screen. A panel that is shown keeps all of it to itself.
/// Main thread only; lives as long as the screen at most.
class ScreenPointer final : public QObject {
  Q_OBJECT

 public:
  /// Watches the screen and what is on it now. The panels' places must be there already.
  explicit ScreenPointer(QWidget &screen);
  /// What is round the screen in a larger window: a press there counts as one on the screen.
  void watchAround(QWidget &around);

  /// Whether a press is under way.
  bool isDown() const { return isDown_; }
  /// Whether the pointer is where the dial reacts to it.
  bool isOverDial() const { return isOverDial_; }
  /// Whether a panel covers the screen.
  bool isPanelUp() const;

 Q_SIGNALS:
  void pressed(QPointF location);
  void dragged(QPointF location);
  /// Also when an alert came up in the middle of a press: the real release would not get here.
  void released();
  void moved(QPointF location);
  /// After each of the above and when the pointer left.
  void followed();

 protected:
  bool eventFilter(QObject *watched, QEvent *event) override;

 private:
  bool takeButton(QEvent &event);
  bool takeFromScreen(QEvent &event);
  bool takePress(const QMouseEvent &mouse);
  bool takeDrag(const QMouseEvent &mouse);
  void hover(const QWidget &receiver, const QMouseEvent &mouse);
  QPointF locationOf(const QMouseEvent &mouse) const;
  void release();
  void leave();
  void followTo(QPointF location);

  QWidget &screen_;
  QPointer<QWidget> around_;
  bool isDown_ = false;
  bool isOverDial_ = false;
};

}  // namespace tavril
