#pragma once

#include "platform/Background.h"
#include "platform/Timers.h"

#include <algorithm>
#include <atomic>
#include <utility>
#include <vector>

namespace tavril {

/// Timers on a clock that moves only when it is told to: those that come due run in due order, those due at
/// the same time in the order in which they were started.
class ManualTimers final : public Timers {
 public:
  using Duration = std::chrono::nanoseconds;

  struct Entry final : Timer, RepeatingWork {
    void stop() override { stopped = true; }
    void cancel() override { stopped = true; }

    Duration interval{};
    Duration leeway{};
    Duration due{};
    bool repeats = false;
    std::atomic<bool> stopped = false;
    Job job;
  };
  using Entries = std::vector<std::shared_ptr<Entry>>;

  std::shared_ptr<Timer> repeating(Interval interval, Job job) override {
    return start(std::max(interval, Interval(1)), true, std::move(job));
  }

  std::shared_ptr<Timer> oneShot(Interval delay, Job job) override {
    return start(std::max(delay, Interval(0)), false, std::move(job));
  }

  std::shared_ptr<Entry> start(Duration interval, bool repeats, Job job) {
    auto entry = std::make_shared<Entry>();
    entry->interval = interval;
    entry->due = now_ + interval;
    entry->repeats = repeats;
    entry->job = std::move(job);
    entries_.push_back(entry);
    return entry;
  }

  /// Moves the clock; a job sees the clock at the time for which it was due.
  void advance(Duration time) {
    const Duration end = now_ + time;
    while (const std::shared_ptr<Entry> next = nextDue(end)) {
      now_ = std::max(now_, next->due);
      if (next->repeats) {
        next->due += next->interval;
      } else {
        next->stop();
      }
      const Job job = next->job;
      job();
    }
    now_ = end;
    std::erase_if(entries_, [](const std::shared_ptr<Entry> &entry) { return entry->stopped.load(); });
  }

  Interval now() const { return std::chrono::duration_cast<Interval>(now_); }

  /// The timers in the order in which they were started; those that have stopped go when the clock moves.
  const Entries &entries() const { return entries_; }
  /// How many timers have neither ended nor been stopped.
  std::size_t running() const {
    return static_cast<std::size_t>(
        std::ranges::count_if(entries_, [](const auto &entry) { return !entry->stopped; }));
  }

 private:
  std::shared_ptr<Entry> nextDue(Duration end) const {
    std::shared_ptr<Entry> next;
    for (const std::shared_ptr<Entry> &entry : entries_) {
      if (entry->stopped || entry->due > end) continue;
      if (!next || entry->due < next->due) next = entry;
    }
    return next;
  }

  Duration now_{};
  Entries entries_;
};

}  // namespace tavril
