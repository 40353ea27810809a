#pragma once

#include "platform/Timers.h"

#include <memory>
#include <vector>

namespace tavril {

class QtMainQueue;

/// Timers of Qt's event loop whose jobs travel through the main queue: so they run in order with its other
/// jobs, wait while it is held, and never run inside one another. At most one job of a timer is queued at a
/// time. Main thread only. Destroying the service stops all its timers.
class QtTimers final : public Timers {
 public:
  /// `queue` carries the timers' jobs and must outlive the service.
  explicit QtTimers(QtMainQueue &queue);
  ~QtTimers() override;
  QtTimers(const QtTimers &) = delete;
  QtTimers &operator=(const QtTimers &) = delete;

  std::shared_ptr<Timer> repeating(Interval interval, Job job) override;
  std::shared_ptr<Timer> oneShot(Interval delay, Job job) override;

 private:
  class Running;

  std::shared_ptr<Timer> start(Interval interval, bool once, Job job);
  void forget(const Running *timer);

  QtMainQueue &queue_;
  std::vector<std::shared_ptr<Running>> timers_;
};

}  // namespace tavril
