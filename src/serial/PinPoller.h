#pragma once

#include <memory>

namespace tavril {

class LineSession;
class PortLine;
class TerminalCalls;

/// Watches the input pins of a line, and is the first to notice that its device is gone.
class PinPoller {
 public:
  PinPoller(TerminalCalls &calls, std::weak_ptr<PortLine> line, std::shared_ptr<LineSession> session);

  /// One look. May wait for the main thread, which hears of pins that changed and of a device that is gone.
  void poll() const;

 private:
  TerminalCalls &calls_;
  std::weak_ptr<PortLine> line_;
  std::shared_ptr<LineSession> session_;
};

}  // namespace tavril
