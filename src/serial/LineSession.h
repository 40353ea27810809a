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

  /// Whoever has something for the main thread takes a place first and gives it along: it is free again when
  /// that has been told, or dropped. So a main thread that is busy, or held by an alert, finds no more than
  /// `mostUntold` things waiting, and what else the device sends stays in the kernel. Nothing when no place
  /// became free in time.
  std::shared_ptr<void> takePlace(std::chrono::milliseconds patience);
  static constexpr int mostUntold = 256;

  /// Blocks until the session ends or the time is over.
  void pause(std::chrono::milliseconds duration);

 private:
  using Places = std::counting_semaphore<mostUntold>;

  const int descriptor_;
  const WakeDescriptor wake_;
  const std::shared_ptr<Places> places_ = std::make_shared<Places>(mostUntold);
  std::mutex mutex_;
  std::shared_ptr<RepeatingWork> pinPollTimer_;
  std::condition_variable endedCondition_;
  std::atomic<bool> closing_ = false;
  std::atomic<bool> ended_ = false;
  std::atomic<bool> removalClaimed_ = false;
};

}  // namespace tavril
