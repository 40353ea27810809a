#pragma once

#include "terminal/TerminalCalls.h"

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <semaphore>

namespace tavril {

class RepeatingWork;

/// The right to bring one thing to the main thread. It is free again when the last copy has gone, which is
/// when the thing has been told, or dropped.
using BackpressureSlot = std::shared_ptr<void>;

/// One opening of a port, from open to close: what its read loop and pin poller go by. A port that is closed
/// and opened again has a new session, so that loops of the old one end and cannot touch the new descriptor.
/// Thread-safe.
class LineSession {
 public:
  LineSession(TerminalCalls &calls, int descriptor) : descriptor_(descriptor), wake_(calls) {}
  LineSession(const LineSession &) = delete;
  LineSession &operator=(const LineSession &) = delete;

  int descriptor() const { return descriptor_; }
  int wakeDescriptor() const { return wake_.get(); }

  /// Cancels the pin poller there was before; storing nothing therefore stops the polling.
  void setPinPollTimer(std::shared_ptr<RepeatingWork> timer);

  /// Somebody is about to close: the read loop leaves its wait and does not enter it again.
  void beginClosing();
  bool isClosing() const { return closing_; }
  void end();
  bool hasEnded() const { return ended_; }
  /// True for the first of those who tell that the device of this opening is gone.
  bool claimRemoval() { return !removalClaimed_.exchange(true); }

  /// Takes one of the slots, or nothing if none became free in time. With all of them taken, further input of
  /// the device stays in the kernel, so that not more than this waits for a busy main thread.
  BackpressureSlot takeBackpressureSlot(std::chrono::milliseconds patience);
  static constexpr int backpressureSlots = 256;

  /// Blocks until the session ends or the time is over.
  void pause(std::chrono::milliseconds duration);

 private:
  using Slots = std::counting_semaphore<backpressureSlots>;

  const int descriptor_;
  const WakeDescriptor wake_;
  const std::shared_ptr<Slots> slots_ = std::make_shared<Slots>(backpressureSlots);
  std::mutex mutex_;
  std::shared_ptr<RepeatingWork> pinPollTimer_;
  std::condition_variable endedCondition_;
  std::atomic<bool> closing_ = false;
  std::atomic<bool> ended_ = false;
  std::atomic<bool> removalClaimed_ = false;
};

}  // namespace tavril
