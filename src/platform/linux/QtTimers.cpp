#include "platform/linux/QtTimers.h"

#include "platform/linux/QtMainQueue.h"

#include <QTimer>

#include <algorithm>
#include <limits>
#include <optional>
#include <utility>

namespace tavril {

class QtTimers::Running final : public Timer, public std::enable_shared_from_this<Running> {
 public:
  Running(QtTimers &service, bool once, Job job) : service_(&service), once_(once), job_(std::move(job)) {}

  void start(Interval interval) {
    // Qt counts in 32 bits and takes a negative interval for "never".
    interval = std::clamp(interval, Interval(0), Interval(std::numeric_limits<int>::max()));
    if (!once_) rate_.emplace(TimerRate::Clock::now(), interval);
    timer_.setTimerType(Qt::PreciseTimer);
    timer_.setSingleShot(true);
    timer_.callOnTimeout([this] { comeDue(); });
    timer_.start(interval);
  }

  void stop() override {
    const std::shared_ptr<Running> self = shared_from_this();
    timer_.stop();
    if (QtTimers *service = std::exchange(service_, nullptr)) service->forget(this);
    // A job that stops its own timer goes on to its end.
    if (!running_) const Job dropped = std::exchange(job_, nullptr);
  }

 private:
  // The job begins within this call, and Qt lets no timer come due whose event is being handled. A repeating
  // one is therefore started anew each time, so that it comes due in an event loop that the job opens, too.
  void comeDue() {
    if (rate_) timer_.start(rate_->untilNext(TimerRate::Clock::now()));
    if (std::exchange(queued_, true)) return;
    service_->queue_.asyncAndBegin([self = shared_from_this()] { self->run(); });
  }

  void run() {
    queued_ = false;
    if (!service_) return;
    running_ = true;
    job_();
    running_ = false;
    if (once_ || !service_) stop();
  }

  QtTimers *service_;
  const bool once_;
  std::optional<TimerRate> rate_;
  Job job_;
  bool queued_ = false;
  bool running_ = false;
  QTimer timer_;
};

QtTimers::QtTimers(QtMainQueue &queue) : queue_(queue) {}

QtTimers::~QtTimers() {
  while (!timers_.empty()) timers_.back()->stop();
}

std::shared_ptr<Timer> QtTimers::repeating(Interval interval, Job job) {
  return start(interval, false, std::move(job));
}

std::shared_ptr<Timer> QtTimers::oneShot(Interval delay, Job job) {
  return start(delay, true, std::move(job));
}

std::shared_ptr<Timer> QtTimers::start(Interval interval, bool once, Job job) {
  auto timer = std::make_shared<Running>(*this, once, std::move(job));
  timers_.push_back(timer);
  timer->start(interval);
  return timer;
}

void QtTimers::forget(const Running *timer) {
  std::erase_if(timers_, [timer](const std::shared_ptr<Running> &other) { return other.get() == timer; });
}

}  // namespace tavril
