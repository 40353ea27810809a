#include "tests/gui/XDesktop.h"

#include <X11/Xatom.h>
#include <X11/Xlib.h>
#include <stdexcept>
#include <vector>

namespace tavril {

/// A connection of its own beside Qt's.
struct XDesktop::Connection {
  Connection() : display(XOpenDisplay(nullptr)) {
    if (!display) throw std::runtime_error("no X server");
    // A window may go while it is asked about.
    XSetErrorHandler([](Display *, XErrorEvent *) { return 0; });
  }
  ~Connection() { XCloseDisplay(display); }
  Connection(const Connection &) = delete;
  Connection &operator=(const Connection &) = delete;

  Atom atom(const char *name) const { return XInternAtom(display, name, False); }

  /// A property's numbers, which Xlib hands out as longs.
  std::vector<unsigned long> numbers(::Window window, const char *property, Atom type) const {
    Atom actual = 0;
    int format = 0;
    unsigned long count = 0;
    unsigned long left = 0;
    unsigned char *data = nullptr;
    XGetWindowProperty(display, window, atom(property), 0, 1024, False, type, &actual, &format, &count, &left,
                       &data);
    std::vector<unsigned long> values;
    if (data && format == 32) {
      const auto *first = reinterpret_cast<const unsigned long *>(data);
      values.assign(first, first + count);
    }
    if (data) XFree(data);
    return values;
  }

  std::vector<::Window> windowsOf(qint64 processId) const {
    std::vector<::Window> found;
    for (const ::Window window : numbers(DefaultRootWindow(display), "_NET_CLIENT_LIST", XA_WINDOW)) {
      const auto owner = numbers(window, "_NET_WM_PID", XA_CARDINAL);
      if (!owner.empty() && static_cast<qint64>(owner.front()) == processId) found.push_back(window);
    }
    return found;
  }

  Display *display;
};

XDesktop::XDesktop() : connection_(std::make_unique<Connection>()) {}

XDesktop::~XDesktop() = default;

std::size_t XDesktop::countWindows(qint64 processId) const {
  return connection_->windowsOf(processId).size();
}

bool XDesktop::close(qint64 processId) {
  Display *display = connection_->display;
  const ::Window root = DefaultRootWindow(display);
  const std::vector<::Window> found = connection_->windowsOf(processId);
  if (found.size() != 1) return false;
  XEvent request{};
  request.xclient.type = ClientMessage;
  request.xclient.window = found.front();
  request.xclient.message_type = connection_->atom("_NET_CLOSE_WINDOW");
  request.xclient.format = 32;
  request.xclient.data.l[0] = CurrentTime;
  request.xclient.data.l[1] = 2;  // a pager asks, which stands for the user
  XSendEvent(display, root, False, SubstructureNotifyMask | SubstructureRedirectMask, &request);
  XSync(display, False);
  return true;
}

}  // namespace tavril
