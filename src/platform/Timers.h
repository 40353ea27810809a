#pragma once

#include <chrono>
#include <functional>
#include <memory>

namespace tavril {

/// A running timer. Dropping the reference does not stop it.
class Timer {
 public:
  virtual ~Timer() = default;

  /// Ends the timer; its job does not run again. May be called more than once.
  virtual void stop() = 0;
};

/// Timers of the main thread. Their jobs run in order with those of the main queue. While an alert is shown,
/// none runs; a timer that was due meanwhile, once or several times, runs once after it.
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
