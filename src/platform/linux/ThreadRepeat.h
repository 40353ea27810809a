#pragma once

#include "platform/Background.h"

#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <stop_token>

namespace tavril {

/// A repeated job: run() is what its thread does until it is cancelled. Thread-safe.
class ThreadRepeat final : public RepeatingWork {
 public:
  /// An interval below a millisecond is taken for one.
  ThreadRepeat(std::chrono::milliseconds interval, std::function<void()> tick);

  void cancel() override;

  /// Ticks on the calling thread and returns when cancelled, which `closing` does as well.
  void run(const std::stop_token &closing);

 private:
  const std::chrono::milliseconds interval_;
  std::function<void()> tick_;
  std::stop_source cancelled_;
  std::mutex mutex_;
  std::condition_variable_any never_;
};

}  // namespace tavril
