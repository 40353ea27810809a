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
