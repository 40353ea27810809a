#include "platform/linux/EndOfProcess.h"

#include <utility>

namespace tavril {

EndOfProcess::EndOfProcess(Time putBackAfter, Time endAfter, End end)
    : putBackAfter_(putBackAfter), endAfter_(endAfter), end_(std::move(end)) {}

EndOfProcess::~EndOfProcess() = default;

void EndOfProcess::begin(int status, std::function<void()> putBack) {
  std::call_once(begun_, [&] {
    ending_ = later(endAfter_, [this, status] { end_(status); });
    puttingBack_ = later(putBackAfter_, std::move(putBack));
  });
}

std::jthread EndOfProcess::later(Time time, std::function<void()> act) {
  return std::jthread([this, time, act = std::move(act)](const std::stop_token &stop) {
    {
      std::unique_lock lock(mutex_);
      never_.wait_for(lock, stop, time, [] { return false; });
    }
    if (!stop.stop_requested()) act();
  });
}

}  // namespace tavril
