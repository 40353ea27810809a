#pragma once

#include <QString>

#include <chrono>
#include <functional>
#include <memory>

namespace tavril {

/// A job that is repeated until it is cancelled, on a thread of its own or on a serial queue.
class RepeatingWork {
 public:
  virtual ~RepeatingWork() = default;

  /// No further tick begins. A running tick is not waited for, so that it may wait for the caller.
  /// Thread-safe; may be called from the tick, and more than once.
  virtual void cancel() = 0;
};

/// A queue that runs its jobs in order, not on the main thread. When it is destroyed, the jobs already in it
/// still run. Thread-safe.
class SerialQueue {
 public:
  using Job = std::function<void()>;

  virtual ~SerialQueue() = default;

  virtual void async(Job job) = 0;
  /// Returns when the job has run. Must not be called from a job of this queue.
  virtual void sync(Job job) = 0;
  /// Runs the tick as a job of this queue every `interval` until it is cancelled, the first time one interval
  /// from now. Ticks that are due while one waits for its turn are left out. Each may be late by `leeway`, so
  /// that the system can wake up for several things at once. After cancel() was called on this queue, no tick
  /// begins.
  virtual std::shared_ptr<RepeatingWork> repeat(std::chrono::nanoseconds interval,
                                                std::chrono::nanoseconds leeway, Job tick) = 0;
  /// Whether the caller is a job of this queue.
  virtual bool isCurrent() const = 0;
  virtual QString label() const = 0;
};

/// Runs work on other threads than the main thread. Thread-safe.
class Background {
 public:
  using Job = std::function<void()>;

  virtual ~Background() = default;

  /// Runs the job, which may be long, on a thread of its own.
  virtual void run(Job job) = 0;
  /// Ticks at once and then every `interval`. Ticks that are due while one runs are left out.
  virtual std::shared_ptr<RepeatingWork> repeat(std::chrono::milliseconds interval, Job tick) = 0;
  virtual std::shared_ptr<SerialQueue> serialQueue(const QString &label) = 0;
};

}  // namespace tavril
