#pragma once

#include "platform/MainQueue.h"
#include "serial/SerialPortDelegate.h"

#include <functional>
#include <memory>
#include <mutex>
#include <utility>

namespace tavril {

/// Who hears of a port, and how a call gets to the main thread. Thread-safe.
class DelegateCalls {
 public:
  using Delegate = std::shared_ptr<SerialPortDelegate>;

  explicit DelegateCalls(MainQueue &mainQueue) : mainQueue_(mainQueue) {}

  Delegate delegate() const {
    const std::lock_guard lock(mutex_);
    return delegate_.lock();
  }
  void setDelegate(std::weak_ptr<SerialPortDelegate> delegate) {
    const std::lock_guard lock(mutex_);
    delegate_ = std::move(delegate);
  }
  /// The delegate, if it wants this callback now.
  Delegate whoHears(SerialPortCallback callback) const {
    Delegate present = delegate();
    return present && present->respondsTo(callback) ? present : nullptr;
  }

  /// At once on the main thread; other threads wait for it.
  void onMainThreadAndWait(const std::function<void()> &call) const {
    if (mainQueue_.isMainThread()) {
      call();
    } else {
      mainQueue_.sync(call);
    }
  }
  /// At once on the main thread; other threads go on meanwhile.
  void onMainThread(const std::function<void()> &call) const {
    if (mainQueue_.isMainThread()) {
      call();
    } else {
      mainQueue_.async(call);
    }
  }

 private:
  MainQueue &mainQueue_;
  mutable std::mutex mutex_;
  std::weak_ptr<SerialPortDelegate> delegate_;
};

}  // namespace tavril
