#include "platform/linux/ThreadBackground.h"

#include "platform/linux/ThreadQueue.h"
#include "platform/linux/WorkerThreads.h"

#include <algorithm>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <stop_token>
#include <utility>

namespace tavril {

namespace {

/// A repeated job: run() is what its thread does until it is cancelled. Thread-safe.
class ThreadRepeat final : public RepeatingWork {
 public:
  /// An interval below a millisecond is taken for one.
  ThreadRepeat(std::chrono::milliseconds interval, std::function<void()> tick);

  void cancel() override;

  /// Ticks on the calling thread and returns when cancelled, which `closing` does as well.
  void run(const std::stop_token &closing);

 private:
  const std::chrono::milliseconds interval_;
  std::function<void()> tick_;
  std::stop_source cancelled_;
  std::mutex mutex_;
  std::condition_variable_any never_;
};

ThreadRepeat::ThreadRepeat(std::chrono::milliseconds interval, std::function<void()> tick)
    : interval_(std::max(interval, std::chrono::milliseconds(1))), tick_(std::move(tick)) {}

void ThreadRepeat::cancel() {
  cancelled_.request_stop();
}

void ThreadRepeat::run(const std::stop_token &closing) {
  using Clock = std::chrono::steady_clock;
  const std::stop_callback closed(closing, [this] { cancel(); });
  const std::stop_token cancelled = cancelled_.get_token();
  Clock::time_point due = Clock::now();
  while (!cancelled.stop_requested()) {
    tick_();
    due += interval_;
    // What came due while the tick ran is left out; the beat stays that of the first tick.
    const Clock::time_point now = Clock::now();
    if (due < now) due += ((now - due) / interval_ + 1) * interval_;
    std::unique_lock lock(mutex_);
    never_.wait_until(lock, cancelled, due, [] { return false; });
  }
  tick_ = nullptr;
}

}  // namespace

ThreadBackground::ThreadBackground(std::chrono::milliseconds idleTime)
    : idleTime_(idleTime), threads_(std::make_shared<WorkerThreads>()) {}

ThreadBackground::~ThreadBackground() {
  threads_->close();
}

void ThreadBackground::run(Job job) {
  threads_->start("tavril-run", std::move(job));
}

std::shared_ptr<RepeatingWork> ThreadBackground::repeat(std::chrono::milliseconds interval, Job tick) {
  auto repeat = std::make_shared<ThreadRepeat>(interval, std::move(tick));
  threads_->start("tavril-repeat", [repeat, closing = threads_->closing()] { repeat->run(closing); });
  return repeat;
}

std::shared_ptr<SerialQueue> ThreadBackground::serialQueue(const QString &label) {
  return std::make_shared<ThreadQueue>(threads_, label, idleTime_);
}

}  // namespace tavril
