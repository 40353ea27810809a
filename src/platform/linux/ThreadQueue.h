#pragma once

#include "platform/Background.h"
#include "platform/linux/QueueTimer.h"

#include <QString>

#include <chrono>
#include <condition_variable>
#include <deque>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

namespace tavril {

class WorkerThreads;

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
