#pragma once

#include "platform/Background.h"

#include <condition_variable>
#include <deque>
#include <mutex>
#include <thread>

namespace tavril {

class WorkerThreads;

/// A serial queue with a thread only while there is work: it ends when nothing has come for the idle time.
/// When the threads have been closed, the caller that brings a job runs it. Thread-safe; made shared.
class ThreadQueue final : public SerialQueue, public std::enable_shared_from_this<ThreadQueue> {
 public:
  ThreadQueue(std::shared_ptr<WorkerThreads> threads, const QString &label,
              std::chrono::milliseconds idleTime);

  void async(Job job) override;
  void sync(Job job) override;
  QString label() const override { return label_; }

 private:
  void work();
  bool waitForJob(std::unique_lock<std::mutex> &lock);

  const std::shared_ptr<WorkerThreads> threads_;
  const QString label_;
  const std::chrono::milliseconds idleTime_;
  std::mutex mutex_;
  std::condition_variable_any jobCame_;
  std::condition_variable jobRan_;
  std::deque<Job> jobs_;
  std::thread::id worker_;
  bool working_ = false;
};

}  // namespace tavril
