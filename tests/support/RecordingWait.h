#pragma once

#include "platform/BlockingWait.h"

#include <functional>
#include <vector>

namespace tavril {

/// Does not wait but notes for how long it should have.
class RecordingWait final : public BlockingWait {
 public:
  void wait(std::chrono::milliseconds duration) override {
    waits.push_back(duration);
    if (during) during();
  }

  std::vector<std::chrono::milliseconds> waits;
  /// Called in every wait, if set: what the rest of the world does meanwhile.
  std::function<void()> during;
};

}  // namespace tavril
