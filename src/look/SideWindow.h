#pragma once

#include "platform/Languages.h"
#include "platform/NotificationCenter.h"

#include <QKeyEvent>
#include <QObject>
#include <QString>
#include <QWidget>

namespace tavril {

class StringTable;

/// Shows the window in front of all others, also if it was minimized.
inline void bringToFront(QWidget &window) {
  window.setWindowState(window.windowState() & ~Qt::WindowMinimized);
  window.show();
  window.raise();
  window.activateWindow();
}

/// The base of every window beside the main one; `Kind` is QWidget or QDialog. Escape closes it, and it looks
/// up its texts again when the language changes.
template <typename Kind>
class SideWindow : public Kind {
 protected:
  SideWindow(const StringTable &strings, NotificationCenter &notifications, QWidget *parent,
             Qt::WindowFlags flags = {})
      : Kind(parent, flags), strings_(strings), notifications_(notifications) {
    notifications_.addObserver(this, QString::fromUtf16(LanguageDidChangeNotification),
                               [this](const Notification &) { setTexts(); });
  }
  ~SideWindow() override { notifications_.removeObserver(this); }

  virtual void setTexts() = 0;

  void keyPressEvent(QKeyEvent *event) override {
    if (event->key() == Qt::Key_Escape) {
      this->close();
    } else {
      Kind::keyPressEvent(event);
    }
  }

  const StringTable &strings_;

 private:
  NotificationCenter &notifications_;
};

/// Brings the one window of its class over `parent` to the front. If there is none, `make` makes it as a
/// child of `parent`, and it is deleted when it is closed; nullptr if `make` makes none.
template <typename Window, typename Make>
Window *openOnce(QWidget &parent, const Make &make) {
  Window *window = nullptr;
  for (QObject *child : parent.children()) {
    if (auto *one = dynamic_cast<Window *>(child)) window = one;
  }
  if (!window) {
    window = make();
    if (!window) return nullptr;
    window->setAttribute(Qt::WA_DeleteOnClose);
  }
  bringToFront(*window);
  return window;
}

}  // namespace tavril
