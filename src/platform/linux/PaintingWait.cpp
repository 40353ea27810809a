#include "platform/linux/PaintingWait.h"

#include <cerrno>
#include <ctime>
#include <utility>

namespace tavril {

PaintingWait::PaintingWait(std::function<void()> paint) : paint_(std::move(paint)) {}

void PaintingWait::wait(std::chrono::milliseconds duration) {
  if (paint_) paint_();
  if (duration <= std::chrono::milliseconds::zero()) return;

  // An absolute end, so that any number of interrupting signals adds nothing.
  timespec end{};
  ::clock_gettime(CLOCK_MONOTONIC, &end);
  const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(duration);
  end.tv_sec += static_cast<time_t>(seconds.count());
  end.tv_nsec += static_cast<long>(std::chrono::nanoseconds(duration - seconds).count());
  if (end.tv_nsec >= 1'000'000'000) {
    end.tv_sec += 1;
    end.tv_nsec -= 1'000'000'000;
  }
  while (::clock_nanosleep(CLOCK_MONOTONIC, TIMER_ABSTIME, &end, nullptr) == EINTR) {
  }
}

}  // namespace tavril
