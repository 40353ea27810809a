#include "serial/LineSession.h"

#include "platform/Background.h"

#include <utility>

namespace tavril {

void LineSession::setPinPollTimer(std::shared_ptr<RepeatingWork> timer) {
  {
    const std::lock_guard lock(mutex_);
    pinPollTimer_.swap(timer);
  }
  if (timer) timer->cancel();
}

void LineSession::beginClosing() {
  closing_ = true;
  wake_.wake();
}

void LineSession::end() {
  {
    const std::lock_guard lock(mutex_);
    ended_ = true;
  }
  endedCondition_.notify_all();
  wake_.wake();
}

BackpressureSlot LineSession::takeBackpressureSlot(std::chrono::milliseconds patience) {
  // A timed attempt gives the processor away even when there is no time to wait for.
  const bool taken = patience.count() > 0 ? slots_->try_acquire_for(patience) : slots_->try_acquire();
  if (!taken) return nullptr;
  // Holds the semaphore, not the session, because a slot may outlive the session.
  return {this, [slots = slots_](const void *) { slots->release(); }};
}

void LineSession::pause(std::chrono::milliseconds duration) {
  std::unique_lock lock(mutex_);
  endedCondition_.wait_for(lock, duration, [this] { return ended_.load(); });
}

}  // namespace tavril
