#pragma once

#include "platform/Background.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <thread>
#include <utility>
#include <vector>

namespace tavril {

/// A serial queue without a thread: its jobs run when the test says so, on the thread that made the queue,
/// and its timers go by a clock that moves only when it is told to. Any thread may bring a job.
class ManualQueue final : public SerialQueue {
 public:
  using Duration = std::chrono::nanoseconds;
  /// Long enough never to be reached by a test that works.
  static constexpr std::chrono::seconds patience{30};

  struct Repeat final : RepeatingWork {
    void cancel() override { cancelled = true; }
    std::atomic<bool> cancelled = false;
    Duration interval{};
    Duration leeway{};
    Duration due{};
    Job tick;
  };

  explicit ManualQueue(QString label) : label_(std::move(label)) {}

  void async(Job job) override {
    const std::lock_guard lock(mutex_);
    jobs_.push_back(std::move(job));
    if (std::this_thread::get_id() != thread_) ++broughtByOthers_;
    jobCame_.notify_all();
  }
  /// Only on the thread that made the queue: runs what came before as well.
  void sync(Job job) override {
    async(std::move(job));
    runAll();
  }
  std::shared_ptr<RepeatingWork> repeat(Duration interval, Duration leeway, Job tick) override {
    auto made = std::make_shared<Repeat>();
    made->interval = interval;
    made->leeway = leeway;
    made->due = now_ + interval;
    made->tick = std::move(tick);
    repeats.push_back(made);
    return made;
  }
  bool isCurrent() const override { return std::this_thread::get_id() == thread_ && isRunning_; }
  QString label() const override { return label_; }

  /// Runs what is there, and what that adds, in order.
  void runAll() {
    std::unique_lock lock(mutex_);
    while (!jobs_.empty()) runFirst(lock);
  }
  /// Runs jobs as they come until the condition, which is looked at after each, holds. False when it never
  /// does.
  template <typename Condition>
  bool runUntil(Condition condition) {
    while (!condition()) {
      std::unique_lock lock(mutex_);
      if (!jobCame_.wait_for(lock, patience, [this] { return !jobs_.empty(); })) return false;
      runFirst(lock);
    }
    return true;
  }
  /// Moves the clock and runs what is there; a tick runs when it comes due.
  void advance(Duration time) {
    const Duration end = now_ + time;
    runAll();
    while (const std::shared_ptr<Repeat> next = nextDue(end)) {
      now_ = next->due;
      next->due += next->interval;
      async([next] {
        if (!next->cancelled) next->tick();
      });
      runAll();
    }
    now_ = end;
  }

  /// How many jobs have come from other threads.
  int broughtByOthers() const {
    const std::lock_guard lock(mutex_);
    return broughtByOthers_;
  }

  /// How many timers have not been cancelled.
  long timersRunning() const {
    return std::ranges::count_if(repeats, [](const auto &repeat) { return !repeat->cancelled; });
  }

  std::vector<std::shared_ptr<Repeat>> repeats;

 private:
  void runFirst(std::unique_lock<std::mutex> &lock) {
    Job job = std::move(jobs_.front());
    jobs_.pop_front();
    lock.unlock();
    isRunning_ = true;
    job();
    isRunning_ = false;
    job = nullptr;
    lock.lock();
  }

  std::shared_ptr<Repeat> nextDue(Duration end) const {
    std::shared_ptr<Repeat> next;
    for (const auto &repeat : repeats) {
      if (repeat->cancelled || repeat->due > end) continue;
      if (!next || repeat->due < next->due) next = repeat;
    }
    return next;
  }

  const QString label_;
  const std::thread::id thread_ = std::this_thread::get_id();
  mutable std::mutex mutex_;
  std::condition_variable jobCame_;
  std::deque<Job> jobs_;
  Duration now_{};
  int broughtByOthers_ = 0;
  bool isRunning_ = false;
};

}  // namespace tavril
