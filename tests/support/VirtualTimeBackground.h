#pragma once

#include "platform/Timers.h"
#include "platform/linux/ThreadBackground.h"

#include <memory>
#include <utility>

namespace tavril {

/// Background work for tests on a virtual clock: what repeats ticks on that clock and on the clock's thread,
/// all else has real threads.
class VirtualTimeBackground final : public Background {
 public:
  explicit VirtualTimeBackground(Timers &timers) : timers_(timers) {}

  void run(Job job) override { threads_.run(std::move(job)); }
  std::shared_ptr<RepeatingWork> repeat(std::chrono::milliseconds interval, Job tick) override {
    auto repeat = std::make_shared<Repeat>();
    repeat->timer = timers_.repeating(interval, tick);
    tick();
    return repeat;
  }
  std::shared_ptr<SerialQueue> serialQueue(const QString &label) override {
    return threads_.serialQueue(label);
  }

 private:
  struct Repeat final : RepeatingWork {
    void cancel() override { timer->stop(); }
    std::shared_ptr<Timer> timer;
  };

  Timers &timers_;
  // No thread of a queue is left over from before, as far as that time is concerned.
  ThreadBackground threads_{std::chrono::milliseconds(0)};
};

}  // namespace tavril
