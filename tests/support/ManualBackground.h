#pragma once

#include "platform/Background.h"
#include "tests/support/ManualSerialQueue.h"
#include "tests/support/ManualTimers.h"

#include <memory>
#include <utility>
#include <vector>

namespace tavril {

/// Background work that only runs when the test says so, on the test's thread: loops and pollers are kept
/// and can be looked at and ticked.
class ManualBackground final : public Background {
 public:
  void run(Job job) override { jobs.push_back(std::move(job)); }
  std::shared_ptr<RepeatingWork> repeat(std::chrono::milliseconds interval, Job tick) override {
    return timers_.start(interval, true, std::move(tick));
  }
  std::shared_ptr<SerialQueue> serialQueue(const QString &label) override {
    queues_.push_back(std::make_shared<ManualSerialQueue>(label));
    return queues_.back();
  }

  /// One tick of everything that repeats and is not cancelled.
  void tick() {
    const auto all = repeats();
    for (const auto &repeat : all) {
      if (!repeat->stopped) repeat->job();
    }
  }

  const ManualTimers::Entries &repeats() const { return timers_.entries(); }

  std::vector<Job> jobs;

 private:
  ManualTimers timers_;
  std::vector<std::shared_ptr<ManualSerialQueue>> queues_;
};

}  // namespace tavril
