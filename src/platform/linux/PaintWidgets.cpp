#include "platform/linux/PaintWidgets.h"

#include <QApplication>
#include <QCoreApplication>
#include <QEvent>
#include <QWidget>

namespace tavril {

void paintPendingWidgets() {
  const auto windows = QApplication::topLevelWidgets();
  for (QWidget *window : windows) {
    if (!window->isVisible()) continue;
    // What was just shown has to be laid out before it is painted; both would wait for the event loop.
    QCoreApplication::sendPostedEvents(window, QEvent::LayoutRequest);
    const auto children = window->findChildren<QWidget *>();
    for (QWidget *child : children) QCoreApplication::sendPostedEvents(child, QEvent::LayoutRequest);
    window->repaint();
  }
}

}  // namespace tavril
