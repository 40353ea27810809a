#pragma once

#include "platform/ProcessExit.h"

#include <functional>
#include <mutex>
#include <vector>

namespace tavril {

/// Runs the handlers when it is destroyed, which is the end of main, or when exit() is called before that.
/// At most one lives at a time. Registering is thread-safe; the object belongs to the main thread.
class AtExit final : public ProcessExit {
 public:
  AtExit();
  ~AtExit() override;
  AtExit(const AtExit &) = delete;
  AtExit &operator=(const AtExit &) = delete;

  /// EINVAL for an empty handler, ENOMEM when exit() has no room for another. A handler that is registered by
  /// a handler runs as well.
  int registerHandler(std::function<void()> handler) override;

 private:
  void runHandlers();

  std::mutex mutex_;
  std::vector<std::function<void()>> handlers_;
};

}  // namespace tavril
