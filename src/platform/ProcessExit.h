#pragma once

#include <functional>

namespace tavril {

/// Handlers that run when the process ends normally: when the program's main function is left, or on exit().
class ProcessExit {
 public:
  virtual ~ProcessExit() = default;

  /// Registers the handler; the last one registered runs first, each once, on the exiting thread.
  /// Returns 0, or the error number when it could not be registered.
  virtual int registerHandler(std::function<void()> handler) = 0;
};

}  // namespace tavril
