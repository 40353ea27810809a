#pragma once

#include <memory>

namespace tavril {

class LineSession;
class PortLine;
class TerminalCalls;

/// Reads what comes in on a line, from the opening of its port to the closing, and hands it to the port.
class ReadLoop {
 public:
  ReadLoop(TerminalCalls &calls, std::weak_ptr<PortLine> line, std::shared_ptr<LineSession> session);

  /// Returns when the session has ended, or the port is no more.
  void run() const;

 private:
  bool readOnce(PortLine &line) const;

  TerminalCalls &calls_;
  std::weak_ptr<PortLine> line_;
  std::shared_ptr<LineSession> session_;
};

}  // namespace tavril
