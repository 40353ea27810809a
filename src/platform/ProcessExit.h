#pragma once

#include <functional>

namespace tavril {

/// Handlers that run when the process ends normally: when main() returns, or on exit().
class ProcessExit {
 public:
  virtual ~ProcessExit() = default;

  /// Registers a handler. Each runs once, on the exiting thread, the last one first. Returns 0, or the error
  /// number if it could not be registered.
  virtual int registerHandler(std::function<void()> handler) = 0;
};

}  // namespace tavril
