#pragma once

#include "platform/Background.h"
#include "tests/support/ManualJobs.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <memory>
#include <utility>
#include <vector>

namespace tavril {

/// A serial queue without a thread: its jobs run when the test says so, on the thread that made the queue,
/// and its timers go by a clock that moves only when it is told to. Any thread may bring a job.
class ManualQueue final : public SerialQueue {
 public:
  using Duration = std::chrono::nanoseconds;

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
    jobs_.add(std::move(job));
    if (!jobs_.isOwnThread()) ++broughtByOthers_;
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
  bool isCurrent() const override { return jobs_.isOwnThread() && jobs_.isRunning(); }
  QString label() const override { return label_; }

  void runAll() { jobs_.runAll(); }
  template <typename Condition>
  bool runUntil(Condition condition) {
    return jobs_.runUntil(condition);
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
  int broughtByOthers() const { return broughtByOthers_; }

  /// How many timers have not been cancelled.
  long timersRunning() const {
    return std::ranges::count_if(repeats, [](const auto &repeat) { return !repeat->cancelled; });
  }

  std::vector<std::shared_ptr<Repeat>> repeats;

 private:
  std::shared_ptr<Repeat> nextDue(Duration end) const {
    std::shared_ptr<Repeat> next;
    for (const auto &repeat : repeats) {
      if (repeat->cancelled || repeat->due > end) continue;
      if (!next || repeat->due < next->due) next = repeat;
    }
    return next;
  }

  const QString label_;
  ManualJobs jobs_;
  std::atomic<int> broughtByOthers_ = 0;
  Duration now_{};
};

}  // namespace tavril
