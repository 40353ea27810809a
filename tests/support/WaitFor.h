#pragma once

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QTimer>

#include <chrono>

namespace tavril {

/// Runs the main thread's event loop until the condition holds; false when it does not within the time given,
/// which is only there to end a test that has failed.
template <typename Condition>
bool waitFor(Condition condition, std::chrono::milliseconds timeout = std::chrono::seconds(20)) {
  // The ticks wake the loop for conditions that change without an event in it, on another thread or in a
  // file.
  QTimer ticks;
  ticks.start(std::chrono::milliseconds(5));
  const QDeadlineTimer deadline(timeout);
  while (!condition()) {
    if (deadline.hasExpired()) return false;
    QCoreApplication::processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents);
  }
  return true;
}

}  // namespace tavril
