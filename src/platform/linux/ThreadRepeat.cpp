#include "platform/linux/ThreadRepeat.h"

#include <algorithm>
#include <utility>

namespace tavril {

ThreadRepeat::ThreadRepeat(std::chrono::milliseconds interval, std::function<void()> tick)
    : interval_(std::max(interval, std::chrono::milliseconds(1))), tick_(std::move(tick)) {}

void ThreadRepeat::cancel() {
  cancelled_.request_stop();
}

void ThreadRepeat::run(const std::stop_token &closing) {
  using Clock = std::chrono::steady_clock;
  const std::stop_callback closed(closing, [this] { cancel(); });
  const std::stop_token cancelled = cancelled_.get_token();
  Clock::time_point due = Clock::now();
  while (!cancelled.stop_requested()) {
    tick_();
    due += interval_;
    // What came due while the tick ran is left out; the beat stays that of the first tick.
    const Clock::time_point now = Clock::now();
    if (due < now) due += ((now - due) / interval_ + 1) * interval_;
    std::unique_lock lock(mutex_);
    never_.wait_until(lock, cancelled, due, [] { return false; });
  }
  tick_ = nullptr;
}

}  // namespace tavril
