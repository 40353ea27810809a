#pragma once

#include "platform/ProcessExit.h"

#include <functional>
#include <utility>
#include <vector>

namespace tavril {

/// Keeps the exit handlers for the test to run.
class RecordingExit final : public ProcessExit {
 public:
  int registerHandler(std::function<void()> handler) override {
    if (error == 0) handlers.push_back(std::move(handler));
    return error;
  }
  /// As at the end of the process: the last one first.
  void runAll() {
    while (!handlers.empty()) {
      const auto handler = std::move(handlers.back());
      handlers.pop_back();
      handler();
    }
  }
  std::vector<std::function<void()>> handlers;
  int error = 0;
};

}  // namespace tavril
