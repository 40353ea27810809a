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

std::shared_ptr<void> LineSession::takePlace(std::chrono::milliseconds patience) {
  // A timed attempt gives the processor away even when there is no time to wait for.
  const bool taken = patience.count() > 0 ? places_->try_acquire_for(patience) : places_->try_acquire();
  if (!taken) return nullptr;
  // Holds the places and not the session: what waits to be told may outlive it.
  return {this, [places = places_](const void *) { places->release(); }};
}

void LineSession::pause(std::chrono::milliseconds duration) {
  std::unique_lock lock(mutex_);
  endedCondition_.wait_for(lock, duration, [this] { return ended_.load(); });
}

}  // namespace tavril
