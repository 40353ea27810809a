#pragma once

#include "platform/Background.h"

#include <atomic>
#include <chrono>
#include <functional>
#include <memory>

namespace tavril {

/// When a repeated job of a serial queue comes due. Cancelling is thread-safe; all else belongs to the queue.
class QueueTimer final : public RepeatingWork {
 public:
  using Clock = std::chrono::steady_clock;
  using Duration = std::chrono::nanoseconds;
  using Job = std::function<void()>;

  /// `cancelled` tells the queue, once, on the thread that cancels. The interval is taken for at least a
  /// nanosecond and at most a century.
  QueueTimer(Clock::time_point start, Duration interval, Duration leeway, Job tick, Job cancelled);

  void cancel() override;
  bool isCancelled() const { return isCancelled_; }

  Clock::time_point due() const { return due_; }
  Duration leeway() const { return leeway_; }
  /// Whether a tick is to be queued now. What came due several times, or while a tick waits, counts once.
  bool comesDue(Clock::time_point now);
  /// The tick that was queued; nothing when the timer was cancelled meanwhile.
  void run();

 private:
  const Duration interval_;
  const Duration leeway_;
  const Job tick_;
  const Job cancelled_;
  Clock::time_point due_;
  std::atomic<bool> isCancelled_ = false;
  std::atomic<bool> isQueued_ = false;
};

}  // namespace tavril
