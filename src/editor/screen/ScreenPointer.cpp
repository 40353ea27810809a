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
  // A panel that opens during a drag takes the drag away from the dial, but not the release.
  if (isPanelUp()) return true;
  const QPointF location = locationOf(mouse);
  Q_EMIT dragged(location);
  followTo(location);
  return true;
}

void ScreenPointer::hover(const QWidget &receiver, const QMouseEvent &mouse) {
  // Qt passes an event that its receiver ignores on to the screen, where it would count twice.
  const QWidget *under = screen_.childAt(receiver.mapTo(&screen_, mouse.position()).toPoint());
  if (&receiver != (under ? under : &screen_) || isPanelUp()) return;
  const QPointF location = locationOf(mouse);
  Q_EMIT moved(location);
  followTo(location);
}

/// On a scaled display, the positions of an event in the widget and on the desktop may be rounded; only its
/// position in the window is exact. An event that did not come through the window does not have this
/// position.
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
