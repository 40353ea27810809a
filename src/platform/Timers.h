#pragma once

#include <chrono>
#include <functional>
#include <memory>

namespace tavril {

/// A running timer. The service keeps it running, so dropping the reference does not stop it.
class Timer {
 public:
  virtual ~Timer() = default;

  /// Ends the timer for good; its job is not run again. Harmless when it has ended already.
  virtual void stop() = 0;
};

/// Timers of the main thread. Their jobs run in order with those of the main queue. While an alert is up none
/// runs; a timer that came due meanwhile, once or many times, runs once after the alert. Main thread only.
class Timers {
 public:
  using Job = std::function<void()>;
  using Interval = std::chrono::milliseconds;

  virtual ~Timers() = default;

  /// Runs the job every `interval`, the first time one interval from now.
  virtual std::shared_ptr<Timer> repeating(Interval interval, Job job) = 0;

  /// Runs the job once, `delay` from now.
  virtual std::shared_ptr<Timer> oneShot(Interval delay, Job job) = 0;
};

}  // namespace tavril
