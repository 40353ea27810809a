#pragma once

#include "simulator/FrameEndpoint.h"
#include "simulator/Options.h"
#include "simulator/PtyServer.h"
#include "simulator/ServoModel.h"

#include <QString>

#include <functional>

namespace tavril::simulator {

/// A servo, its bridge and their terminal, all in this process. Thread-safe, except that start(), stop() and
/// unplug() belong to one thread. stop() and unplug() keep the settings; start() plugs in again, at a new
/// path.
class VirtualServo {
 public:
  explicit VirtualServo(const Options &options = {}) : endpoint_(model_, options), server_(endpoint_) {}

  /// False with the reason in `error`.
  bool start(QString *error = nullptr) { return server_.start(error); }
  void stop() { server_.stop(); }
  /// Hangs the line up, as pulling the plug does. May be called from a callback.
  void unplug() { server_.unplug(); }
  /// The terminal to open; empty before the first start().
  QString path() const { return server_.path(); }
  bool serving() const { return server_.serving(); }
  int framesSeen() const { return endpoint_.framesSeen(); }

  /// Brings the servo up to the present time and runs `act` with it, while the bridge waits. `act` must not
  /// call this object.
  void withModel(const std::function<void(ServoModel &)> &act) {
    server_.withEndpoint([&] { act(model_); });
  }
  /// Changes the faults. They apply to the commands that follow.
  void withOptions(const std::function<void(Options &)> &act) {
    server_.withEndpoint([&] { act(endpoint_.options()); });
  }

 private:
  ServoModel model_;
  FrameEndpoint endpoint_;
  PtyServer server_;
};

}  // namespace tavril::simulator
