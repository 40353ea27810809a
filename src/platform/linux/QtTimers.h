#pragma once

#include "platform/Timers.h"

#include <chrono>
#include <memory>
#include <vector>

namespace tavril {

class QtMainQueue;

/// When a repeating timer comes due, on a clock that is asked elsewhere.
class TimerRate {
 public:
  using Clock = std::chrono::steady_clock;
  using Interval = std::chrono::milliseconds;

  /// `interval`: not negative.
  TimerRate(Clock::time_point begin, Interval interval) : interval_(interval), due_(begin + interval) {}

  /// How long to wait at `now`, when the timer has come due, until it does so again. Counted from when it was
  /// due, so that delays do not add up; what has been missed is left out.
  Interval untilNext(Clock::time_point now) {
    due_ += interval_;
    if (due_ <= now) due_ = now + interval_;
    return std::chrono::ceil<Interval>(due_ - now);
  }

 private:
  Interval interval_;
  Clock::time_point due_;
};

/// Timers of Qt's event loop whose jobs travel through the main queue: so they run in order with its other
/// jobs, wait while it is held, and never run inside one another. At most one job of a timer is queued at a
/// time. Main thread only. Destroying the service stops all its timers.
class QtTimers final : public Timers {
 public:
  /// `queue` carries the timers' jobs and must outlive the service.
  explicit QtTimers(QtMainQueue &queue);
  ~QtTimers() override;
  QtTimers(const QtTimers &) = delete;
  QtTimers &operator=(const QtTimers &) = delete;

  std::shared_ptr<Timer> repeating(Interval interval, Job job) override;
  std::shared_ptr<Timer> oneShot(Interval delay, Job job) override;

 private:
  class Running;

  std::shared_ptr<Timer> start(Interval interval, bool once, Job job);
  void forget(const Running *timer);

  QtMainQueue &queue_;
  std::vector<std::shared_ptr<Running>> timers_;
};

}  // namespace tavril
