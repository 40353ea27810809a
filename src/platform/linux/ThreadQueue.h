#pragma once

#include "platform/Background.h"

#include <QString>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

namespace tavril {

class WorkerThreads;

/// When a repeated job of a serial queue comes due. Cancelling is thread-safe; all else belongs to the queue.
class QueueTimer final : public RepeatingWork {
 public:
  using Clock = std::chrono::steady_clock;
  using Duration = std::chrono::nanoseconds;
  using Job = std::function<void()>;

  /// `cancelled` tells the queue, once, on the thread that cancels. The interval is taken for at least a
  /// nanosecond and at most a century.
  QueueTimer(Clock::time_point start, Duration interval, Duration leeway, Job tick, Job cancelled);

  void cancel() override;
  bool isCancelled() const { return isCancelled_; }

  Clock::time_point due() const { return due_; }
  Duration leeway() const { return leeway_; }
  /// Whether a tick is to be queued now. What came due several times, or while a tick waits, counts once.
  bool comesDue(Clock::time_point now);
  /// The tick that was queued; nothing when the timer was cancelled meanwhile.
  void run();

 private:
  const Duration interval_;
  const Duration leeway_;
  const Job tick_;
  const Job cancelled_;
  Clock::time_point due_;
  std::atomic<bool> isCancelled_ = false;
  std::atomic<bool> isQueued_ = false;
};

/// A serial queue with a thread only while there is work or a timer runs: it ends when nothing has come for
/// the idle time. When the threads have been closed, no timer ticks any more and the caller that brings a job
/// runs it. Thread-safe; made shared.
class ThreadQueue final : public SerialQueue, public std::enable_shared_from_this<ThreadQueue> {
 public:
  ThreadQueue(std::shared_ptr<WorkerThreads> threads, const QString &label,
              std::chrono::milliseconds idleTime);

  void async(Job job) override;
  void sync(Job job) override;
  std::shared_ptr<RepeatingWork> repeat(std::chrono::nanoseconds interval, std::chrono::nanoseconds leeway,
                                        Job tick) override;
  bool isCurrent() const override;
  QString label() const override { return label_; }

 private:
  using Timers = std::vector<std::shared_ptr<QueueTimer>>;

  bool needsThread();
  void startThread();
  void work();
  bool waitForJob(std::unique_lock<std::mutex> &lock);
  void queueTicks(QueueTimer::Clock::time_point now);
  void forgetCancelled();

  const std::shared_ptr<WorkerThreads> threads_;
  const QString label_;
  const std::chrono::milliseconds idleTime_;
  mutable std::mutex mutex_;
  std::condition_variable_any jobCame_;
  std::condition_variable jobRan_;
  std::deque<Job> jobs_;
  Timers timers_;
  bool timersChanged_ = false;
  std::thread::id worker_;
  bool working_ = false;
};

}  // namespace tavril
