#pragma once

#include "simulator/FrameEndpoint.h"
#include "simulator/Options.h"
#include "simulator/PtyServer.h"
#include "simulator/ServoModel.h"

#include <QString>

#include <functional>

namespace tavril::simulator {

/// A servo behind a bridge behind a terminal, complete in this process. Thread-safe, except that start(),
/// stop() and unplug() are for one thread. The settings outlive stop() and unplug(); start() plugs in again,
/// on a new path.
class VirtualServo {
 public:
  explicit VirtualServo(const Options &options = {});

  /// False with the reason in `error`.
  bool start(QString *error = nullptr) { return server_.start(error); }
  void stop() { server_.stop(); }
  /// Hangs the line up, as pulling the plug does. May be called from a callback.
  void unplug() { server_.unplug(); }
  /// The terminal to open; empty before the first start().
  QString path() const { return server_.path(); }
  bool serving() const { return server_.serving(); }
  int framesSeen() const { return endpoint_.framesSeen(); }

  /// Looks at or changes the servo, brought up to the present, while the bridge waits. No method of this
  /// object may be called from within.
  void withModel(const std::function<void(ServoModel &)> &act);
  /// Changes the faults for the commands that follow.
  void withOptions(const std::function<void(Options &)> &act);

 private:
  ServoModel model_;
  FrameEndpoint endpoint_;
  PtyServer server_;
};

}  // namespace tavril::simulator
