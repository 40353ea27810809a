#include "editor/ScreenScroller.h"

#include "editor/PanelBackdrop.h"

#include <QApplication>
#include <QFrame>
#include <QLayout>
#include <QPoint>

namespace tavril {

namespace {

constexpr int margin = 24;

/// The panel that the widget belongs to, or nothing.
QWidget *panelOf(QWidget *widget) {
  for (QWidget *ancestor = widget; ancestor; ancestor = ancestor->parentWidget()) {
    if (qobject_cast<PanelBackdrop *>(ancestor->parentWidget())) return ancestor;
  }
  return nullptr;
}

}  // namespace

ScreenScroller::ScreenScroller(QWidget *parent) : QScrollArea(parent) {
  setFrameShape(QFrame::NoFrame);
  setAlignment(Qt::AlignCenter);
  // There is nothing to do here for a key, so that Tab would only get lost.
  setFocusPolicy(Qt::NoFocus);
  connect(qApp, &QApplication::focusChanged, this, [this](QWidget *, QWidget *now) { follow(now); });
}

void ScreenScroller::follow(QWidget *focus) {
  if (!focus || !widget() || !widget()->isAncestorOf(focus)) return;
  // A panel that has just been shown is not in its place before its layout has run.
  if (QWidget *panel = panelOf(focus)) {
    panel->parentWidget()->layout()->activate();
    bringIntoView(*panel);
  }
  bringIntoView(*focus);
}

void ScreenScroller::bringIntoView(const QWidget &element) {
  // By its place: Qt's own way goes by the text cursor, which need not be where the element is.
  const QPoint middle = element.mapTo(widget(), element.rect().center());
  ensureVisible(middle.x(), middle.y(), element.width() / 2 + margin, element.height() / 2 + margin);
}

}  // namespace tavril
