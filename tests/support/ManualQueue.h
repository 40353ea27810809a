#pragma once

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>
#include <utility>

namespace tavril {

/// Jobs that run when the test says so, on the thread that made the queue, in the order in which they were
/// added. Any thread may add one. The base of the other queues.
class ManualQueue {
 public:
  /// Long enough never to be reached by a test that works.
  static constexpr std::chrono::seconds patience{30};

  void add(std::function<void()> job) {
    const std::lock_guard lock(mutex_);
    if (isDropped_) return;
    jobs_.push_back(std::move(job));
    added_.notify_all();
  }
  std::size_t pending() const {
    const std::lock_guard lock(mutex_);
    return jobs_.size();
  }

  /// Runs the jobs that are there and those that they add; returns how many ran.
  std::size_t runAll() {
    std::size_t ran = 0;
    std::unique_lock lock(mutex_);
    for (; !jobs_.empty(); ++ran) runFirst(lock);
    return ran;
  }
  /// Waits for a job, if there is none yet, and runs it. False when none came.
  bool runNext() {
    std::unique_lock lock(mutex_);
    if (!added_.wait_for(lock, patience, [this] { return !jobs_.empty(); })) return false;
    runFirst(lock);
    return true;
  }
  /// Runs jobs as they come until the condition, which is looked at after each, holds. False when it never
  /// does.
  template <typename Condition>
  bool runUntil(Condition condition) {
    while (!condition()) {
      if (!runNext()) return false;
    }
    return true;
  }
  /// Drops the jobs that have not run. No others are taken from now on.
  void drop() {
    std::deque<std::function<void()>> dropped;  // go without the lock: what they hold may add jobs
    const std::lock_guard lock(mutex_);
    isDropped_ = true;
    dropped.swap(jobs_);
  }

 protected:
  bool isDropped() const {
    const std::lock_guard lock(mutex_);
    return isDropped_;
  }

  bool isOwnThread() const { return std::this_thread::get_id() == thread_; }
  /// Only on the thread that made the queue.
  bool isRunning() const { return isRunning_; }

 private:
  void runFirst(std::unique_lock<std::mutex> &lock) {
    std::function<void()> job = std::move(jobs_.front());
    jobs_.pop_front();
    lock.unlock();
    isRunning_ = true;
    job();
    isRunning_ = false;
    job = nullptr;
    lock.lock();
  }

  const std::thread::id thread_ = std::this_thread::get_id();
  mutable std::mutex mutex_;
  std::condition_variable added_;
  std::deque<std::function<void()>> jobs_;
  bool isDropped_ = false;
  bool isRunning_ = false;
};

}  // namespace tavril
