#pragma once

#include <chrono>

namespace tavril {

/// The one place where the main thread is put to sleep on purpose. Main thread only.
class BlockingWait {
 public:
  virtual ~BlockingWait() = default;

  /// Paints what is pending, then blocks the thread; nothing is received, drawn or timed meanwhile.
  virtual void wait(std::chrono::milliseconds duration) = 0;
};

}  // namespace tavril
