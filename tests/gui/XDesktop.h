#pragma once

#include <QtGlobal>

#include <cstddef>
#include <memory>

namespace tavril {

/// The windows of an X server as its window manager knows them.
class XDesktop {
 public:
  /// Needs an X server with a window manager; throws where there is no server.
  XDesktop();
  ~XDesktop();
  XDesktop(const XDesktop &) = delete;
  XDesktop &operator=(const XDesktop &) = delete;

  /// How many windows this process has.
  std::size_t countWindows(qint64 processId) const;
  /// Asks the window manager to close the window of this process, as the cross in its frame does. False when
  /// the process has no window, or more than one.
  bool close(qint64 processId);

 private:
  struct Connection;
  std::unique_ptr<Connection> connection_;
};

}  // namespace tavril
