#pragma once

#include "serial/LineSession.h"
#include "terminal/TerminalCalls.h"

#include <QByteArray>

#include <chrono>
#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>

namespace tavril {

/// A counting semaphore that asks the kernel for nothing as long as nobody has to wait, which the standard
/// library's does at each release. Thread-safe.
class Semaphore {
 public:
  explicit Semaphore(int count) : count_(count) {}

  void acquire() {
    std::unique_lock lock(mutex_);
    released_.wait(lock, [this] { return count_ > 0; });
    --count_;
  }
  /// False when it could not be had in time.
  bool tryAcquireFor(std::chrono::milliseconds patience) {
    std::unique_lock lock(mutex_);
    if (count_ == 0 && !released_.wait_for(lock, patience, [this] { return count_ > 0; })) return false;
    --count_;
    return true;
  }
  void release() {
    {
      const std::lock_guard lock(mutex_);
      ++count_;
    }
    released_.notify_one();
  }

 private:
  std::mutex mutex_;
  std::condition_variable released_;
  int count_;
};

/// What the threads of an opening see of their port. They hold it weakly but for one round at a time.
class PortLine {
 public:
  virtual ~PortLine() = default;

  /// Makes the call with the open descriptor, which is not closed meanwhile; EBADF when there is none.
  virtual CallResult withDescriptor(const std::function<CallResult(int)> &call) const = 0;
  /// Held while somebody waits for input, and while the port is closed.
  virtual Semaphore &selectSemaphore() = 0;
  /// `slot` is kept until the delegate has been told of the bytes, or they have been dropped.
  virtual void receiveData(const QByteArray &bytes, const BackpressureSlot &slot) = 0;
  virtual void showPins(int pins) = 0;
  virtual void notifyDelegateOfPosixError(int error, bool waitUntilDone = false,
                                          const BackpressureSlot &slot = nullptr) = 0;
  /// Tells the delegate, waiting until it has heard, unless somebody has told it already or the port was
  /// opened anew; and closes the port unless the session has ended by then.
  virtual void deviceHasGone(const std::shared_ptr<LineSession> &session) = 0;
};

}  // namespace tavril
