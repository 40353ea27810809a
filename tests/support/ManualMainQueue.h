#pragma once

#include "platform/MainQueue.h"
#include "tests/support/Hook.h"

#include <chrono>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <thread>
#include <utility>

namespace tavril {

/// A main queue without an event loop: jobs run when the test says so, on the thread that made the queue.
class ManualMainQueue final : public MainQueue {
 public:
  /// Long enough never to be reached by a test that works.
  static constexpr std::chrono::seconds patience{30};

  ManualMainQueue() = default;
  ~ManualMainQueue() override {
    shutDown();
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [this] { return callers_ == 0; });
  }

  void async(Job job) override {
    const std::lock_guard lock(mutex_);
    if (shutDown_) return;
    entries_.push_back({std::move(job), nullptr});
    changed_.notify_all();
  }

  /// Called at the beginning of each sync() of another thread, on that thread.
  Hook<> atSync;

  bool sync(Job job) override {
    if (!isMainThread()) atSync();
    std::unique_lock lock(mutex_);
    if (shutDown_) return false;
    if (isMainThread()) {
      lock.unlock();
      job();
      return true;
    }
    Outcome outcome = Outcome::Waiting;
    entries_.push_back({std::move(job), &outcome});
    ++callers_;
    changed_.notify_all();
    changed_.wait(lock, [&outcome] { return outcome != Outcome::Waiting; });
    --callers_;
    changed_.notify_all();
    return outcome == Outcome::Ran;
  }

  bool isMainThread() const override { return std::this_thread::get_id() == mainThread_; }

  std::size_t pending() const {
    const std::lock_guard lock(mutex_);
    return entries_.size();
  }

  /// Runs the jobs that are there and those that they add; returns how many ran.
  std::size_t runAll() {
    std::size_t ran = 0;
    std::unique_lock lock(mutex_);
    for (; !entries_.empty(); ++ran) runFirst(lock);
    return ran;
  }

  /// Waits for a job, if there is none yet, and runs it. False when none came.
  bool runNext() {
    std::unique_lock lock(mutex_);
    if (!changed_.wait_for(lock, patience, [this] { return !entries_.empty(); })) return false;
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

  void shutDown() override {
    std::deque<Entry> dropped;
    {
      const std::lock_guard lock(mutex_);
      shutDown_ = true;
      dropped.swap(entries_);
    }
    for (Entry &entry : dropped) entry.job = nullptr;
    const std::lock_guard lock(mutex_);
    for (const Entry &entry : dropped) {
      if (entry.outcome) *entry.outcome = Outcome::Dropped;
    }
    changed_.notify_all();
  }

 private:
  enum class Outcome { Waiting, Ran, Dropped };
  struct Entry {
    Job job;
    Outcome *outcome;
  };

  void runFirst(std::unique_lock<std::mutex> &lock) {
    Entry entry = std::move(entries_.front());
    entries_.pop_front();
    lock.unlock();
    entry.job();
    entry.job = nullptr;
    lock.lock();
    if (entry.outcome) *entry.outcome = Outcome::Ran;
    changed_.notify_all();
  }

  const std::thread::id mainThread_ = std::this_thread::get_id();
  mutable std::mutex mutex_;
  std::condition_variable changed_;
  std::deque<Entry> entries_;
  int callers_ = 0;
  bool shutDown_ = false;
};

}  // namespace tavril
