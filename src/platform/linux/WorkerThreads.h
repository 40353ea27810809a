#pragma once

#include <condition_variable>
#include <functional>
#include <list>
#include <mutex>
#include <stop_token>
#include <string>
#include <thread>

namespace tavril {

/// Threads that end by themselves, every one of which is joined: at most one that has finished is waiting for
/// it. Thread-safe, but for close().
class WorkerThreads {
 public:
  WorkerThreads() = default;
  ~WorkerThreads();
  WorkerThreads(const WorkerThreads &) = delete;
  WorkerThreads &operator=(const WorkerThreads &) = delete;

  /// Runs the work on a thread of its own, which shows up under the name's first 15 bytes. False after
  /// close(). The program ends when the system has no thread left to give.
  bool start(const std::string &name, std::function<void()> work);

  /// Requests the stop and returns when all threads have ended. Must not be called on one of them.
  void close();

  /// Requested when close() begins: whoever waits for more to do shall wait no longer.
  std::stop_token closing() const { return closing_.get_token(); }

 private:
  using Threads = std::list<std::thread>;

  void finish(Threads::iterator thread);

  std::stop_source closing_;
  std::mutex mutex_;
  std::condition_variable noneLeft_;
  Threads running_;
  std::thread finished_;
  bool closed_ = false;
};

}  // namespace tavril
