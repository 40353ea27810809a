#pragma once

#include <chrono>
#include <condition_variable>
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

}  // namespace tavril
