#pragma once

#include "platform/Background.h"
#include "tests/support/ManualQueue.h"

#include <memory>
#include <vector>

namespace tavril {

/// Background work that only runs when the test says so, on the test's thread: loops and pollers are kept
/// and can be looked at and ticked.
class ManualBackground final : public Background {
 public:
  struct Repeat final : RepeatingWork {
    void cancel() override { cancelled = true; }
    bool cancelled = false;
    std::chrono::milliseconds interval{};
    Job job;
  };

  void run(Job job) override { jobs.push_back(std::move(job)); }
  std::shared_ptr<RepeatingWork> repeat(std::chrono::milliseconds interval, Job tick) override {
    auto made = std::make_shared<Repeat>();
    made->interval = interval;
    made->job = std::move(tick);
    repeats.push_back(made);
    return made;
  }
  std::shared_ptr<SerialQueue> serialQueue(const QString &label) override {
    queues.push_back(std::make_shared<ManualQueue>(label));
    return queues.back();
  }

  /// One tick of everything that repeats and is not cancelled.
  void tick() {
    const auto all = repeats;
    for (const auto &repeat : all) {
      if (!repeat->cancelled) repeat->job();
    }
  }

  std::vector<Job> jobs;
  std::vector<std::shared_ptr<Repeat>> repeats;
  std::vector<std::shared_ptr<ManualQueue>> queues;
};

}  // namespace tavril
