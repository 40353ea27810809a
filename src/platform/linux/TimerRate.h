#pragma once

#include <chrono>

namespace tavril {

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

}  // namespace tavril
