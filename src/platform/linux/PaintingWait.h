#pragma once

#include "platform/BlockingWait.h"

#include <chrono>
#include <functional>

namespace tavril {

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

}  // namespace tavril
