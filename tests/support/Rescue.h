#pragma once

#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <thread>
#include <utility>

namespace tavril {

/// Frees whoever is stuck, after a time that no test that works needs, so that the test fails and ends.
class Rescue {
 public:
  explicit Rescue(std::function<void()> rescue)
      : thread_([this, rescue = std::move(rescue)] {
          std::unique_lock lock(mutex_);
          if (over_.wait_for(lock, std::chrono::seconds(10), [this] { return isOver_; })) return;
          wasNeeded_ = true;
          rescue();
        }) {}
  ~Rescue() { stop(); }
  Rescue(const Rescue &) = delete;
  Rescue &operator=(const Rescue &) = delete;

  bool wasNeeded() {
    stop();
    return wasNeeded_;
  }

 private:
  void stop() {
    {
      const std::lock_guard lock(mutex_);
      isOver_ = true;
    }
    over_.notify_all();
    if (thread_.joinable()) thread_.join();
  }

  std::mutex mutex_;
  std::condition_variable over_;
  bool isOver_ = false;
  bool wasNeeded_ = false;
  std::thread thread_;
};

}  // namespace tavril
