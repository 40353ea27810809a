#pragma once

#include <functional>

namespace tavril {

/// Carries jobs to the main thread, which runs them one after the other in the order in which they came.
/// All decoding, delegate calls and screen work travel this way. Thread-safe.
class MainQueue {
 public:
  using Job = std::function<void()>;

  virtual ~MainQueue() = default;

  /// Runs the job later on the main thread, also when called there. While an alert is up nothing runs.
  virtual void async(Job job) = 0;

  /// Runs the job on the main thread and returns when it has run; at once when called there.
  /// False when the queue was shut down before the job could run: the caller is then not kept waiting.
  virtual bool sync(Job job) = 0;

  virtual bool isMainThread() const = 0;

  /// Drops the jobs that have not begun; every waiting and later sync() returns false. Main thread only.
  virtual void shutDown() = 0;
};

}  // namespace tavril
