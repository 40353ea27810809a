#include "editor/screen/ScreenPointer.h"

#include "editor/dial/DialPointer.h"
#include "editor/panels/PanelBackdrop.h"
#include "editor/screen/ScreenCoordinates.h"

#include <QMouseEvent>
#include <QString>
#include <QWidget>

#include <algorithm>
#include <cmath>
#include <utility>

namespace tavril {

namespace {

bool isOnPanel(const QWidget &screen, const QWidget *widget) {
  while (widget != &screen && !qobject_cast<const PanelBackdrop *>(widget)) widget = widget->parentWidget();
  return widget != &screen;
}

}  // namespace

ScreenPointer::ScreenPointer(QWidget &screen) : QObject(&screen), screen_(screen) {
  screen.setMouseTracking(true);
  screen.installEventFilter(this);
  for (QWidget *widget : screen.findChildren<QWidget *>()) {
    if (qobject_cast<PanelBackdrop *>(widget)) {
      widget->installEventFilter(this);
    } else if (!isOnPanel(screen, widget)) {
      widget->setMouseTracking(true);
      widget->installEventFilter(this);
    }
  }
}

void ScreenPointer::watchAround(QWidget &around) {
  around_ = &around;
  around.installEventFilter(this);
}

bool ScreenPointer::eventFilter(QObject *watched, QEvent *event) {
  auto &widget = static_cast<QWidget &>(*watched);
  if (qobject_cast<PanelBackdrop *>(watched)) {
    if (event->type() == QEvent::Show) leave();
    return false;
  }
  if (&widget == around_) return takeButton(*event);
  if (event->type() == QEvent::MouseMove) {
    const auto &mouse = static_cast<const QMouseEvent &>(*event);
    if (mouse.buttons() == Qt::NoButton) hover(widget, mouse);
  }
  return &widget == &screen_ && takeFromScreen(*event);
}

bool ScreenPointer::isPanelUp() const {
  const auto panels = screen_.findChildren<PanelBackdrop *>(QString(), Qt::FindDirectChildrenOnly);
  return std::any_of(panels.begin(), panels.end(), [](const auto *panel) { return panel->isVisible(); });
}

bool ScreenPointer::takeButton(QEvent &event) {
  switch (event.type()) {
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonDblClick:  // the second press of two in quick succession
      return takePress(static_cast<const QMouseEvent &>(event));
    case QEvent::MouseMove:
      return takeDrag(static_cast<const QMouseEvent &>(event));
    case QEvent::MouseButtonRelease:
      if (static_cast<const QMouseEvent &>(event).button() != Qt::LeftButton || !isDown_) return false;
      release();
      return true;
    default:
      return false;
  }
}

bool ScreenPointer::takeFromScreen(QEvent &event) {
  switch (event.type()) {
    case QEvent::WindowBlocked:
    case QEvent::Hide:
      release();
      return false;
    case QEvent::Leave:
      leave();
      return false;
    default:
      return takeButton(event);
  }
}

bool ScreenPointer::takePress(const QMouseEvent &mouse) {
  if (mouse.button() != Qt::LeftButton || isPanelUp()) return false;
  const QPointF location = locationOf(mouse);
  isDown_ = true;
  Q_EMIT pressed(location);
  followTo(location);
  return true;
}

bool ScreenPointer::takeDrag(const QMouseEvent &mouse) {
  if (!isDown_ || !mouse.buttons().testFlag(Qt::LeftButton)) return false;
  // A panel that came up in the middle of a drag takes it away from the dial, but not the release.
  if (isPanelUp()) return true;
  const QPointF location = locationOf(mouse);
  Q_EMIT dragged(location);
  followTo(location);
  return true;
}

void ScreenPointer::hover(const QWidget &receiver, const QMouseEvent &mouse) {
  // What the receiver does not want goes on to the screen, where it would count again.
  const QWidget *under = screen_.childAt(receiver.mapTo(&screen_, mouse.position()).toPoint());
  if (&receiver != (under ? under : &screen_) || isPanelUp()) return;
  const QPointF location = locationOf(mouse);
  Q_EMIT moved(location);
  followTo(location);
}

/// Where a point has several pixels, an event's place in a widget and on the desktop may have been rounded,
/// and only its place in the window has not. An event that did not come through the window does not know that
/// place.
QPointF ScreenPointer::locationOf(const QMouseEvent &mouse) const {
  const QPointF rounded = screen_.mapFromGlobal(mouse.globalPosition());
  const QPointF exact = screen_.mapFrom(screen_.window(), mouse.scenePosition());
  const QPointF apart = exact - rounded;
  const bool isKnown = std::abs(apart.x()) <= 1 && std::abs(apart.y()) <= 1;
  return ScreenCoordinates::pointFromQt(isKnown ? exact : rounded);
}

void ScreenPointer::release() {
  if (!std::exchange(isDown_, false)) return;
  Q_EMIT released();
  Q_EMIT followed();
}

void ScreenPointer::leave() {
  isOverDial_ = false;
  Q_EMIT followed();
}

void ScreenPointer::followTo(QPointF location) {
  isOverDial_ = dial::isSensitive(location.x(), location.y());
  Q_EMIT followed();
}

}  // namespace tavril
