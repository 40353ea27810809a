#pragma once

#include <functional>
#include <memory>
#include <mutex>
#include <utility>

namespace tavril {

/// What a test wants done at a certain point, on the thread that gets there. It may be set while other
/// threads get there; a call that has begun then ends with what was set before. Thread-safe.
template <typename... Arguments>
class Hook {
 public:
  using Action = std::function<void(Arguments...)>;

  Hook &operator=(Action action) {
    auto kept = std::make_shared<const Action>(std::move(action));
    const std::lock_guard lock(mutex_);
    action_.swap(kept);
    return *this;
  }

  void operator()(Arguments... arguments) const {
    std::shared_ptr<const Action> action;
    {
      const std::lock_guard lock(mutex_);
      action = action_;
    }
    if (action && *action) (*action)(arguments...);
  }

 private:
  mutable std::mutex mutex_;
  std::shared_ptr<const Action> action_;
};

}  // namespace tavril
