#include "platform/linux/QueueTimer.h"

#include <algorithm>
#include <utility>

namespace tavril {

namespace {

// So that a point in time can be added to it without leaving what the clock can count.
constexpr QueueTimer::Duration longest = std::chrono::years(100);

}  // namespace

QueueTimer::QueueTimer(Clock::time_point start, Duration interval, Duration leeway, Job tick, Job cancelled)
    : interval_(std::clamp(interval, Duration(1), longest)),
      leeway_(std::clamp(leeway, Duration(0), longest)),
      tick_(std::move(tick)),
      cancelled_(std::move(cancelled)),
      due_(start + interval_) {}

void QueueTimer::cancel() {
  if (!isCancelled_.exchange(true)) cancelled_();
}

bool QueueTimer::comesDue(Clock::time_point now) {
  if (isCancelled_ || due_ > now) return false;
  due_ += ((now - due_) / interval_ + 1) * interval_;
  return !isQueued_.exchange(true);
}

void QueueTimer::run() {
  isQueued_ = false;
  if (!isCancelled_) tick_();
}

}  // namespace tavril
