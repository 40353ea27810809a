#pragma once

#include "platform/MainQueue.h"
#include "tests/support/Hook.h"
#include "tests/support/ManualQueue.h"

#include <future>
#include <memory>
#include <utility>

namespace tavril {

/// A main queue without an event loop.
class ManualMainQueue final : public MainQueue, public ManualQueue {
 public:
  ~ManualMainQueue() override { shutDown(); }

  /// Called at the beginning of each sync() of another thread, on that thread.
  Hook<> atSync;

  void async(Job job) override { add(std::move(job)); }
  bool sync(Job job) override {
    if (isMainThread()) {
      if (isDropped()) return false;
      job();
      return true;
    }
    atSync();
    auto call = std::make_shared<Call>();
    call->job = std::move(job);
    std::future<bool> hasRun = call->told.get_future();
    add([call = std::move(call)] {
      call->job();
      call->hasRun = true;
    });
    return hasRun.get();
  }
  bool isMainThread() const override { return isOwnThread(); }

  /// Lets go whoever waits in sync(). No job runs any more.
  void shutDown() override { drop(); }

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
};

}  // namespace tavril
