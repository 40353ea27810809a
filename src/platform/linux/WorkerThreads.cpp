#include "platform/linux/WorkerThreads.h"

#include <pthread.h>
#include <utility>

namespace tavril {

namespace {

void nameThisThread(const std::string &name) {
  constexpr std::size_t longestName = 15;
  ::pthread_setname_np(::pthread_self(), name.substr(0, longestName).c_str());
}

}  // namespace

WorkerThreads::~WorkerThreads() {
  close();
}

bool WorkerThreads::start(const std::string &name, std::function<void()> work) {
  const std::lock_guard lock(mutex_);
  if (closed_) return false;
  const Threads::iterator thread = running_.emplace(running_.end());
  *thread = std::thread([this, thread, name, work = std::move(work)]() mutable {
    nameThisThread(name);
    work();
    work = nullptr;
    finish(thread);
  });
  return true;
}

// Each thread that finishes joins the one that finished before it, which is at its very end, and leaves
// itself to the next: so none piles up, and nobody else has to come by to collect them.
void WorkerThreads::finish(Threads::iterator thread) {
  std::thread previous;
  {
    const std::lock_guard lock(mutex_);
    previous = std::exchange(finished_, std::move(*thread));
    running_.erase(thread);
    if (running_.empty()) noneLeft_.notify_all();
  }
  if (previous.joinable()) previous.join();
}

void WorkerThreads::close() {
  closing_.request_stop();
  std::thread last;
  {
    std::unique_lock lock(mutex_);
    noneLeft_.wait(lock, [this] { return running_.empty(); });
    closed_ = true;
    last = std::move(finished_);
  }
  if (last.joinable()) last.join();
}

}  // namespace tavril
