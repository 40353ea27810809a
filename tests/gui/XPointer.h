#pragma once

#include <QPoint>
#include <QtGlobal>

#include <memory>

namespace tavril {

/// The X server's pointer, moved and pressed as a hand would do it: what it does comes to the window through
/// the server and the window manager. Everything has reached the server when a call returns.
class XPointer {
 public:
  /// Needs an X server with the XTEST extension; throws where there is none.
  XPointer();
  ~XPointer();
  XPointer(const XPointer &) = delete;
  XPointer &operator=(const XPointer &) = delete;

  /// Moves it to a pixel of the window with this X identifier, counted from the window's upper left corner.
  void moveTo(quintptr windowId, QPoint pixel);
  void press();
  void release();

 private:
  struct Connection;
  std::unique_ptr<Connection> connection_;
};

}  // namespace tavril
