#pragma once

#include <QApplication>

namespace tavril {

/// Makes the window the active one at once, which asking the platform for it would not. Qt 6.5 and later
/// advise against that, for programs.
inline void makeActive(QWidget *window) {
  QT_WARNING_PUSH
  QT_WARNING_DISABLE_DEPRECATED
  QApplication::setActiveWindow(window);
  QT_WARNING_POP
}

}  // namespace tavril
