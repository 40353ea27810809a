#include "look/SideWindow.h"

namespace tavril {

void bringToFront(QWidget &window) {
  window.setWindowState(window.windowState() & ~Qt::WindowMinimized);
  window.show();
  window.raise();
  window.activateWindow();
}

}  // namespace tavril
