#include "platform/linux/PaintingWait.h"

#include "platform/MainQueue.h"

#include <QApplication>
#include <QCoreApplication>
#include <QEvent>
#include <QWidget>

#include <cerrno>
#include <ctime>
#include <thread>
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

void paintPendingWidgets() {
  const auto windows = QApplication::topLevelWidgets();
  for (QWidget *window : windows) {
    if (!window->isVisible()) continue;
    // What was just shown has to be laid out before it is painted; both would wait for the event loop.
    QCoreApplication::sendPostedEvents(window, QEvent::LayoutRequest);
    const auto children = window->findChildren<QWidget *>();
    for (QWidget *child : children) QCoreApplication::sendPostedEvents(child, QEvent::LayoutRequest);
    window->repaint();
  }
}

std::function<void(std::chrono::milliseconds)> anyThreadPause(const MainQueue &mainQueue,
                                                              BlockingWait &blockingWait) {
  return [&mainQueue, &blockingWait](std::chrono::milliseconds duration) {
    if (mainQueue.isMainThread()) {
      blockingWait.wait(duration);
    } else {
      std::this_thread::sleep_for(duration);
    }
  };
}

}  // namespace tavril
