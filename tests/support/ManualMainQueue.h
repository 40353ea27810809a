#pragma once

#include "platform/MainQueue.h"
#include "tests/support/Hook.h"
#include "tests/support/ManualJobs.h"

#include <future>
#include <memory>
#include <utility>

namespace tavril {

/// A main queue without an event loop: jobs run when the test says so, on the thread that made the queue.
class ManualMainQueue final : public MainQueue {
 public:
  ~ManualMainQueue() override { shutDown(); }

  /// Called at the beginning of each sync() of another thread, on that thread.
  Hook<> atSync;

  void async(Job job) override { jobs_.add(std::move(job)); }
  bool sync(Job job) override {
    if (isMainThread()) {
      if (jobs_.isDropped()) return false;
      job();
      return true;
    }
    atSync();
    auto call = std::make_shared<Call>();
    call->job = std::move(job);
    std::future<bool> hasRun = call->told.get_future();
    jobs_.add([call = std::move(call)] {
      call->job();
      call->hasRun = true;
    });
    return hasRun.get();
  }
  bool isMainThread() const override { return jobs_.isOwnThread(); }

  std::size_t pending() const { return jobs_.pending(); }
  std::size_t runAll() { return jobs_.runAll(); }
  bool runNext() { return jobs_.runNext(); }
  template <typename Condition>
  bool runUntil(Condition condition) {
    return jobs_.runUntil(condition);
  }
  /// Lets go whoever waits in sync(). No job runs any more.
  void shutDown() override { jobs_.drop(); }

 private:
  /// A job for which another thread waits; it is told when the job goes, run or dropped.
  struct Call {
    Job job;
    bool hasRun = false;
    std::promise<bool> told;
    ~Call() {
      job = nullptr;
      told.set_value(hasRun);
    }
  };

  ManualJobs jobs_;
};

}  // namespace tavril
