#pragma once

#include "platform/MainQueue.h"
#include "posix/Descriptor.h"

#include <QSocketNotifier>

#include <condition_variable>
#include <deque>
#include <mutex>
#include <thread>

namespace tavril {

/// The main queue on Qt's event loop. The thread that makes it is the main thread and destroys it.
/// One job runs at a time: a job that runs an event loop of its own keeps the others waiting until it is
/// done.
class QtMainQueue final : public MainQueue {
 public:
  /// Holds the queue for as long as it lives.
  class Hold {
   public:
    explicit Hold(QtMainQueue &queue) : queue_(queue) { queue_.hold(); }
    ~Hold() { queue_.release(); }
    Hold(const Hold &) = delete;
    Hold &operator=(const Hold &) = delete;

   private:
    QtMainQueue &queue_;
  };

  QtMainQueue();
  /// Shuts down. Returns when the threads that wait in sync() have left it; none may enter later.
  ~QtMainQueue() override;

  void async(Job job) override;
  bool sync(Job job) override;
  bool isMainThread() const override;
  void shutDown() override;

  /// As async(), but begins with the jobs at once unless one is running or the queue is held. For what the
  /// event loop itself calls, which need not be woken up once more. Main thread only.
  void asyncAndBegin(Job job);

  /// While held, no job runs and other threads wait in sync(). Counted: each hold() needs its release().
  void hold();
  void release();
  bool isHeld() const;

 private:
  /// A thread that waits in sync(); it lives on that thread's stack.
  struct Caller {
    enum class State { Waiting, Ran, Dropped };
    State state = State::Waiting;
  };
  struct Entry {
    Job job;
    Caller *caller = nullptr;
  };

  void drain();
  void runFirst(std::unique_lock<std::mutex> &lock);
  void wake();

  const std::thread::id mainThread_ = std::this_thread::get_id();
  const posix::Descriptor wakeUps_;
  QSocketNotifier notifier_;
  mutable std::mutex mutex_;
  std::condition_variable callersChanged_;
  std::deque<Entry> entries_;
  int holds_ = 0;
  int callers_ = 0;
  bool running_ = false;
  bool awake_ = false;
  bool shutDown_ = false;
};

}  // namespace tavril
