#pragma once

#include <QString>

#include <chrono>
#include <functional>
#include <memory>

namespace tavril {

/// A job that is repeated, on a thread of its own or on a serial queue, until it is cancelled.
class RepeatingWork {
 public:
  virtual ~RepeatingWork() = default;

  /// No further tick begins. Does not wait for one that is running, so that a tick may wait for the caller.
  /// Thread-safe, callable from the tick itself, harmless when repeated.
  virtual void cancel() = 0;
};

/// A queue that runs its jobs one after the other, in order, off the main thread. Dropping the queue lets the
/// jobs already in it run. Thread-safe.
class SerialQueue {
 public:
  using Job = std::function<void()>;

  virtual ~SerialQueue() = default;

  virtual void async(Job job) = 0;
  /// Returns when the job has run. Must not be called from a job of this queue.
  virtual void sync(Job job) = 0;
  /// Runs the tick as a job of this queue every `interval`, first one interval from now, until it is
  /// cancelled; ticks that come due while one waits for its turn are left out. Each may be late by `leeway`,
  /// which lets the system wake up for several things at once. No tick begins after cancel() was called on
  /// this queue.
  virtual std::shared_ptr<RepeatingWork> repeat(std::chrono::nanoseconds interval,
                                                std::chrono::nanoseconds leeway, Job tick) = 0;
  /// Whether the caller is a job of this queue.
  virtual bool isCurrent() const = 0;
  virtual QString label() const = 0;
};

/// Work off the main thread. Thread-safe.
class Background {
 public:
  using Job = std::function<void()>;

  virtual ~Background() = default;

  /// Runs the job, which may be long, on a thread of its own.
  virtual void run(Job job) = 0;
  /// Ticks at once and then every `interval`; ticks that come due while one runs are left out.
  virtual std::shared_ptr<RepeatingWork> repeat(std::chrono::milliseconds interval, Job tick) = 0;
  virtual std::shared_ptr<SerialQueue> serialQueue(const QString &label) = 0;
};

}  // namespace tavril
