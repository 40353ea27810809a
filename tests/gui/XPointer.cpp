#include "tests/gui/XPointer.h"

#include <X11/Xlib.h>
#include <X11/extensions/XTest.h>
#include <stdexcept>

namespace tavril {

namespace {

constexpr unsigned leftButton = 1;

}  // namespace

/// A connection of its own beside Qt's.
struct XPointer::Connection {
  Connection() : display(XOpenDisplay(nullptr)) {
    int unused = 0;
    if (!display || !XTestQueryExtension(display, &unused, &unused, &unused, &unused)) {
      throw std::runtime_error("no X server with the XTEST extension");
    }
  }
  ~Connection() { XCloseDisplay(display); }
  Connection(const Connection &) = delete;
  Connection &operator=(const Connection &) = delete;

  Display *display;
};

XPointer::XPointer() : connection_(std::make_unique<Connection>()) {}

XPointer::~XPointer() = default;

void XPointer::moveTo(quintptr windowId, QPoint pixel) {
  Display *display = connection_->display;
  int x = 0;
  int y = 0;
  ::Window child = 0;
  XTranslateCoordinates(display, windowId, DefaultRootWindow(display), pixel.x(), pixel.y(), &x, &y, &child);
  XTestFakeMotionEvent(display, -1, x, y, CurrentTime);
  XSync(display, False);
}

void XPointer::press() {
  XTestFakeButtonEvent(connection_->display, leftButton, True, CurrentTime);
  XSync(connection_->display, False);
}

void XPointer::release() {
  XTestFakeButtonEvent(connection_->display, leftButton, False, CurrentTime);
  XSync(connection_->display, False);
}

}  // namespace tavril
