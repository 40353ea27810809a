#pragma once

#include <QEvent>
#include <QObject>
#include <QPointF>
#include <QPointer>

class QMouseEvent;
class QWidget;

namespace tavril {

/// The pointer on the main screen, in the design's coordinates. It reports presses of the left button that no
/// field or button takes, and what follows up to the release, inside and outside of the screen. Without a
/// press it reports moves over the whole screen. While a panel is shown, it reports nothing. It lives at most
/// as long as the screen.
class ScreenPointer final : public QObject {
  Q_OBJECT

 public:
  /// Watches the screen and all widgets on it now, including the containers of the panels.
  explicit ScreenPointer(QWidget &screen);
  /// Also watches the space around the screen in a larger window. A press there counts as one on the screen.
  void watchAround(QWidget &around);

  /// Whether a press is under way.
  bool isDown() const { return isDown_; }
  /// Whether the pointer is in the area in which the dial reacts.
  bool isOverDial() const { return isOverDial_; }
  /// Whether a panel covers the screen.
  bool isPanelUp() const;

 Q_SIGNALS:
  void pressed(QPointF location);
  void dragged(QPointF location);
  /// Also emitted when an alert opens during a press, because the real release will not come here.
  void released();
  void moved(QPointF location);
  /// Emitted after each of the above and when the pointer has left the screen.
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
