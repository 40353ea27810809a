#pragma once

#include <chrono>

namespace tavril {

/// The only place where the main thread sleeps on purpose.
class BlockingWait {
 public:
  virtual ~BlockingWait() = default;

  /// Paints pending changes, then blocks the thread. Meanwhile nothing is received or drawn, and no timer
  /// runs.
  virtual void wait(std::chrono::milliseconds duration) = 0;
};

}  // namespace tavril
