#include "serial/LineSession.h"

#include "platform/Background.h"
#include "platform/TerminalCalls.h"

#include <utility>

namespace tavril {

LineSession::LineSession(TerminalCalls &calls, int descriptor) : calls_(calls), descriptor_(descriptor) {
  const CallResult wake = calls_.openWake();
  if (!wake.failed()) wakeDescriptor_ = static_cast<int>(wake.value);
}

LineSession::~LineSession() {
  if (wakeDescriptor_ >= 0) calls_.closeWake(wakeDescriptor_);
}

void LineSession::setPinPollTimer(std::shared_ptr<RepeatingWork> timer) {
  {
    const std::lock_guard lock(mutex_);
    pinPollTimer_.swap(timer);
  }
  if (timer) timer->cancel();
}

void LineSession::beginClosing() {
  closing_ = true;
  if (wakeDescriptor_ >= 0) calls_.wake(wakeDescriptor_);
}

void LineSession::end() {
  {
    const std::lock_guard lock(mutex_);
    ended_ = true;
  }
  endedCondition_.notify_all();
  if (wakeDescriptor_ >= 0) calls_.wake(wakeDescriptor_);
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
