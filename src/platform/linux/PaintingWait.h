#pragma once

#include "platform/BlockingWait.h"

#include <chrono>
#include <functional>

namespace tavril {

class MainQueue;

/// Paints what is pending and then really sleeps, measured on the steady clock; signals do not shorten it.
class PaintingWait final : public BlockingWait {
 public:
  /// `paint` brings what is pending to the screen; it may be empty.
  explicit PaintingWait(std::function<void()> paint);

  /// Zero or less only paints.
  void wait(std::chrono::milliseconds duration) override;

 private:
  std::function<void()> paint_;
};

/// Brings what has changed in the visible windows to the user's eyes, without letting anything else happen:
/// no input, timer or job is handled. Main thread of a program with windows; without any it does nothing.
void paintPendingWidgets();

/// Pauses the thread that calls it: the main thread through the one blocking wait, which paints first, any
/// other by sleeping. The function names both, which must outlive it.
std::function<void(std::chrono::milliseconds duration)> anyThreadPause(const MainQueue &mainQueue,
                                                                       BlockingWait &blockingWait);

}  // namespace tavril
