#include "platform/linux/QtMainQueue.h"

#include "platform/Error.h"

#include <QObject>

#include <cerrno>
#include <cstdint>
#include <utility>

#include <sys/eventfd.h>
#include <unistd.h>

namespace tavril {

namespace {

posix::Descriptor openWakeUps() {
  posix::Descriptor descriptor(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK));
  if (!descriptor.isOpen()) {
    qFatal("The main queue has no descriptor to wake up by: %s", qUtf8Printable(systemErrorText(errno)));
  }
  return descriptor;
}

}  // namespace

// The main thread is woken through a descriptor and not by a posted event: an event would be handed over
// behind locks that a thread sanitizer cannot see, and would cost an allocation for every job.
QtMainQueue::QtMainQueue() : wakeUps_(openWakeUps()), notifier_(wakeUps_.get(), QSocketNotifier::Read) {
  QObject::connect(&notifier_, &QSocketNotifier::activated, &notifier_, [this] { drain(); });
}

QtMainQueue::~QtMainQueue() {
  shutDown();
  std::unique_lock lock(mutex_);
  callersChanged_.wait(lock, [this] { return callers_ == 0; });
  lock.unlock();
  notifier_.setEnabled(false);
}

bool QtMainQueue::isMainThread() const {
  return std::this_thread::get_id() == mainThread_;
}

void QtMainQueue::async(Job job) {
  const std::lock_guard lock(mutex_);
  if (shutDown_) return;
  entries_.push_back({std::move(job), nullptr});
  wake();
}

void QtMainQueue::asyncAndBegin(Job job) {
  {
    const std::lock_guard lock(mutex_);
    if (shutDown_) return;
    entries_.push_back({std::move(job), nullptr});
  }
  drain();
}

bool QtMainQueue::sync(Job job) {
  std::unique_lock lock(mutex_);
  if (shutDown_) return false;
  if (isMainThread()) {
    lock.unlock();
    job();
    return true;
  }
  Caller caller;
  entries_.push_back({std::move(job), &caller});
  ++callers_;
  wake();
  callersChanged_.wait(lock, [&caller] { return caller.state != Caller::State::Waiting; });
  --callers_;
  callersChanged_.notify_all();
  return caller.state == Caller::State::Ran;
}

void QtMainQueue::hold() {
  const std::lock_guard lock(mutex_);
  ++holds_;
}

void QtMainQueue::release() {
  const std::lock_guard lock(mutex_);
  Q_ASSERT(holds_ > 0);
  --holds_;
  wake();
}

bool QtMainQueue::isHeld() const {
  const std::lock_guard lock(mutex_);
  return holds_ > 0;
}

void QtMainQueue::shutDown() {
  std::deque<Entry> dropped;
  {
    const std::lock_guard lock(mutex_);
    shutDown_ = true;
    dropped.swap(entries_);
  }
  // What a job holds may call back into the queue when it goes, so it goes without the lock, and it goes
  // before the thread that waits for the job is told that it need not wait.
  for (Entry &entry : dropped) entry.job = nullptr;
  const std::lock_guard lock(mutex_);
  for (const Entry &entry : dropped) {
    if (entry.caller) entry.caller->state = Caller::State::Dropped;
  }
  callersChanged_.notify_all();
}

// Expects the lock. One wake-up is enough for any number of jobs, and none is needed while a drain is going
// on, which looks for more when it ends, or while the queue is held, whose release wakes again.
void QtMainQueue::wake() {
  if (awake_ || running_ || holds_ > 0 || entries_.empty()) return;
  awake_ = true;
  const std::uint64_t one = 1;
  posix::uninterrupted([&] { return ::write(wakeUps_.get(), &one, sizeof one); });
}

// Only as many jobs as are there at the beginning: jobs that keep queueing jobs would otherwise keep the
// event loop from everything else.
void QtMainQueue::drain() {
  std::unique_lock lock(mutex_);
  if (std::exchange(awake_, false)) {
    std::uint64_t count = 0;
    posix::uninterrupted([&] { return ::read(wakeUps_.get(), &count, sizeof count); });
  }
  if (running_) return;
  running_ = true;
  for (std::size_t left = entries_.size(); left > 0 && holds_ == 0 && !entries_.empty(); --left)
    runFirst(lock);
  running_ = false;
  wake();
}

void QtMainQueue::runFirst(std::unique_lock<std::mutex> &lock) {
  Entry entry = std::move(entries_.front());
  entries_.pop_front();
  lock.unlock();
  entry.job();
  entry.job = nullptr;
  lock.lock();
  if (!entry.caller) return;
  entry.caller->state = Caller::State::Ran;
  callersChanged_.notify_all();
}

}  // namespace tavril
