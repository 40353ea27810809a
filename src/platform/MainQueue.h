#pragma once

#include <functional>

namespace tavril {

/// Brings jobs to the main thread, which runs them in their order. Decoding, delegate calls and screen work
/// use it. Thread-safe.
class MainQueue {
 public:
  using Job = std::function<void()>;

  virtual ~MainQueue() = default;

  /// Runs the job later on the main thread, also if it is called there. While an alert is shown, no job runs.
  virtual void async(Job job) = 0;

  /// Runs the job on the main thread and returns after it; at once if it is called there. False if the queue
  /// was shut down before the job could run.
  virtual bool sync(Job job) = 0;

  virtual bool isMainThread() const = 0;

  /// Drops the jobs that have not begun; every waiting and later sync() returns false. Main thread only.
  virtual void shutDown() = 0;
};

}  // namespace tavril
