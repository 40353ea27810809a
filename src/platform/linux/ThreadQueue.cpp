#include "platform/linux/ThreadQueue.h"

#include "platform/linux/WorkerThreads.h"

#include <algorithm>
#include <utility>

#include <sys/prctl.h>

namespace tavril {

namespace {

/// How late the kernel may wake this thread, so that one wake-up serves several sleepers; 0: as by default.
void setTimerSlack(QueueTimer::Duration slack) {
  ::prctl(PR_SET_TIMERSLACK, static_cast<unsigned long>(slack.count()));
}

}  // namespace

ThreadQueue::ThreadQueue(std::shared_ptr<WorkerThreads> threads, const QString &label,
                         std::chrono::milliseconds idleTime)
    : threads_(std::move(threads)), label_(label), idleTime_(idleTime) {}

void ThreadQueue::async(Job job) {
  {
    const std::lock_guard lock(mutex_);
    jobs_.push_back(std::move(job));
    if (!needsThread()) return;
  }
  startThread();
}

void ThreadQueue::sync(Job job) {
  Q_ASSERT_X(!isCurrent(), "ThreadQueue", "a job waits for its own queue");
  bool ran = false;
  async([this, &job, &ran] {
    job();
    const std::lock_guard lock(mutex_);
    ran = true;
    jobRan_.notify_all();
  });
  std::unique_lock lock(mutex_);
  jobRan_.wait(lock, [&ran] { return ran; });
}

std::shared_ptr<RepeatingWork> ThreadQueue::repeat(std::chrono::nanoseconds interval,
                                                   std::chrono::nanoseconds leeway, Job tick) {
  const auto cancelled = [weak = weak_from_this()] {
    if (const auto self = weak.lock()) self->forgetCancelled();
  };
  auto timer =
      std::make_shared<QueueTimer>(QueueTimer::Clock::now(), interval, leeway, std::move(tick), cancelled);
  {
    const std::lock_guard lock(mutex_);
    timers_.push_back(timer);
    timersChanged_ = true;
    if (!needsThread()) return timer;
  }
  startThread();
  return timer;
}

bool ThreadQueue::isCurrent() const {
  const std::lock_guard lock(mutex_);
  return worker_ == std::this_thread::get_id();
}

/// Expects the lock, and that something has come. Returns true if the caller must start the thread.
bool ThreadQueue::needsThread() {
  jobCame_.notify_one();
  return !std::exchange(working_, true);
}

void ThreadQueue::startThread() {
  // The thread keeps the queue alive, so that a queue that is dropped still runs what it was given.
  const auto worker = [self = shared_from_this()] { self->work(); };
  if (!threads_->start(label_.toStdString(), worker)) work();
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
  using Clock = QueueTimer::Clock;
  const std::stop_token closing = threads_->closing();
  const Clock::time_point idleEnd = Clock::now() + idleTime_;
  for (;;) {
    const Clock::time_point now = Clock::now();
    if (!closing.stop_requested()) queueTicks(now);
    if (!jobs_.empty()) return true;
    if (closing.stop_requested() || (timers_.empty() && now >= idleEnd)) return false;
    const auto first = std::ranges::min_element(timers_, {}, [](const auto &timer) { return timer->due(); });
    const bool isIdle = first == timers_.end();
    setTimerSlack(isIdle ? QueueTimer::Duration(0) : (*first)->leeway());
    timersChanged_ = false;
    jobCame_.wait_until(lock, closing, isIdle ? idleEnd : (*first)->due(),
                        [this] { return timersChanged_ || !jobs_.empty(); });
  }
}

/// Expects the lock.
void ThreadQueue::queueTicks(QueueTimer::Clock::time_point now) {
  for (const auto &timer : timers_) {
    if (timer->comesDue(now)) jobs_.emplace_back([timer] { timer->run(); });
  }
}

void ThreadQueue::forgetCancelled() {
  Timers cancelled;  // go without the lock: what their jobs hold may come back to the queue as it goes
  const std::lock_guard lock(mutex_);
  const auto gone = std::stable_partition(timers_.begin(), timers_.end(),
                                          [](const auto &timer) { return !timer->isCancelled(); });
  cancelled.assign(gone, timers_.end());
  timers_.erase(gone, timers_.end());
  timersChanged_ = true;
  jobCame_.notify_one();
}

namespace {

// So that a point in time can be added to it without leaving what the clock can count.
constexpr QueueTimer::Duration longest = std::chrono::years(100);

}  // namespace

QueueTimer::QueueTimer(Clock::time_point start, Duration interval, Duration leeway, Job tick, Job cancelled)
    : interval_(std::clamp(interval, Duration(1), longest)),
      leeway_(std::clamp(leeway, Duration(0), longest)),
      tick_(std::move(tick)),
      cancelled_(std::move(cancelled)),
      due_(start + interval_) {}

void QueueTimer::cancel() {
  if (!isCancelled_.exchange(true)) cancelled_();
}

bool QueueTimer::comesDue(Clock::time_point now) {
  if (isCancelled_ || due_ > now) return false;
  due_ += ((now - due_) / interval_ + 1) * interval_;
  return !isQueued_.exchange(true);
}

void QueueTimer::run() {
  isQueued_ = false;
  if (!isCancelled_) tick_();
}

}  // namespace tavril
