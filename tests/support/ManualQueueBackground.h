#pragma once

#include "platform/linux/ThreadBackground.h"
#include "tests/support/ManualQueue.h"

#include <memory>

namespace tavril {

/// Loops and pollers run on real threads; the jobs and timers of serial queues only when the test says so.
class ManualQueueBackground final : public Background {
 public:
  void run(Job job) override { threads_.run(std::move(job)); }
  std::shared_ptr<RepeatingWork> repeat(std::chrono::milliseconds interval, Job tick) override {
    return threads_.repeat(interval, std::move(tick));
  }
  std::shared_ptr<SerialQueue> serialQueue(const QString &label) override {
    queue = std::make_shared<ManualQueue>(label);
    return queue;
  }

  /// The one that was made last.
  std::shared_ptr<ManualQueue> queue;

 private:
  ThreadBackground threads_;
};

}  // namespace tavril
