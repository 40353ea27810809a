#pragma once

#include "platform/Background.h"
#include "tests/support/ManualQueue.h"
#include "tests/support/ManualTimers.h"

#include <atomic>
#include <memory>
#include <utility>

namespace tavril {

/// A serial queue without a thread, whose timers go by a clock that moves only when it is told to.
class ManualSerialQueue final : public SerialQueue, public ManualQueue {
 public:
  using Duration = ManualTimers::Duration;

  explicit ManualSerialQueue(QString label) : label_(std::move(label)) {}

  void async(Job job) override {
    add(std::move(job));
    if (!isOwnThread()) ++broughtByOthers_;
  }
  /// Only on the thread that made the queue: runs what came before as well.
  void sync(Job job) override {
    async(std::move(job));
    runAll();
  }
  std::shared_ptr<RepeatingWork> repeat(Duration interval, Duration leeway, Job tick) override {
    const auto timer = timers_.start(interval, true, {});
    timer->leeway = leeway;
    timer->job = [this, timer = timer.get(), tick = std::move(tick)] {
      async([timer, &tick] {
        if (!timer->stopped) tick();
      });
      runAll();
    };
    return timer;
  }
  bool isCurrent() const override { return isOwnThread() && isRunning(); }
  QString label() const override { return label_; }

  /// Moves the clock and runs what is there; a tick runs when it comes due.
  void advance(Duration time) {
    runAll();
    timers_.advance(time);
  }
  const ManualTimers &timers() const { return timers_; }

  /// How many jobs have come from other threads.
  int broughtByOthers() const { return broughtByOthers_; }

 private:
  const QString label_;
  std::atomic<int> broughtByOthers_ = 0;
  ManualTimers timers_;
};

}  // namespace tavril
