#pragma once

#include "platform/Timers.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace tavril {

/// Timers on a clock that moves only when it is told to: those that come due run in due order, those due at
/// the same time in the order in which they were started.
class ManualTimers final : public Timers {
 public:
  std::shared_ptr<Timer> repeating(Interval interval, Job job) override {
    return start(std::max(interval, Interval(1)), true, std::move(job));
  }

  std::shared_ptr<Timer> oneShot(Interval delay, Job job) override {
    return start(std::max(delay, Interval(0)), false, std::move(job));
  }

  /// Moves the clock; a job sees the clock at the time for which it was due.
  void advance(Interval time) {
    const Interval end = now_ + time;
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
    std::erase_if(entries_, [](const std::shared_ptr<Entry> &entry) { return entry->stopped; });
  }

  Interval now() const { return now_; }

  /// How many timers have neither ended nor been stopped.
  std::size_t running() const {
    return static_cast<std::size_t>(
        std::count_if(entries_.begin(), entries_.end(), [](const auto &entry) { return !entry->stopped; }));
  }

 private:
  struct Entry final : Timer {
    void stop() override { stopped = true; }

    Interval interval{};
    Interval due{};
    bool repeats = false;
    bool stopped = false;
    Job job;
  };

  std::shared_ptr<Timer> start(Interval interval, bool repeats, Job job) {
    auto entry = std::make_shared<Entry>();
    entry->interval = interval;
    entry->due = now_ + interval;
    entry->repeats = repeats;
    entry->job = std::move(job);
    entries_.push_back(entry);
    return entry;
  }

  std::shared_ptr<Entry> nextDue(Interval end) const {
    std::shared_ptr<Entry> next;
    for (const std::shared_ptr<Entry> &entry : entries_) {
      if (entry->stopped || entry->due > end) continue;
      if (!next || entry->due < next->due) next = entry;
    }
    return next;
  }

  Interval now_{};
  std::vector<std::shared_ptr<Entry>> entries_;
};

}  // namespace tavril
