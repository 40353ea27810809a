#include "platform/linux/ThreadQueue.h"

#include "platform/linux/WorkerThreads.h"

#include <utility>

namespace tavril {

ThreadQueue::ThreadQueue(std::shared_ptr<WorkerThreads> threads, const QString &label,
                         std::chrono::milliseconds idleTime)
    : threads_(std::move(threads)), label_(label), idleTime_(idleTime) {}

void ThreadQueue::async(Job job) {
  {
    const std::lock_guard lock(mutex_);
    jobs_.push_back(std::move(job));
    jobCame_.notify_one();
    if (std::exchange(working_, true)) return;
  }
  // The thread keeps the queue alive, so that a queue that is dropped still runs what it was given.
  const auto worker = [self = shared_from_this()] { self->work(); };
  if (!threads_->start(label_.toStdString(), worker)) work();
}

void ThreadQueue::sync(Job job) {
  bool ran = false;
  async([this, &job, &ran] {
    job();
    const std::lock_guard lock(mutex_);
    ran = true;
    jobRan_.notify_all();
  });
  std::unique_lock lock(mutex_);
  Q_ASSERT_X(ran || worker_ != std::this_thread::get_id(), "ThreadQueue", "a job waits for its own queue");
  jobRan_.wait(lock, [&ran] { return ran; });
}

void ThreadQueue::work() {
  std::unique_lock lock(mutex_);
  worker_ = std::this_thread::get_id();
  while (waitForJob(lock)) {
    Job job = std::move(jobs_.front());
    jobs_.pop_front();
    lock.unlock();
    job();
    job = nullptr;
    lock.lock();
  }
  worker_ = {};
  working_ = false;
}

/// Expects the lock. False when none has come and it is time to go.
bool ThreadQueue::waitForJob(std::unique_lock<std::mutex> &lock) {
  return jobCame_.wait_for(lock, threads_->closing(), idleTime_, [this] { return !jobs_.empty(); });
}

}  // namespace tavril
