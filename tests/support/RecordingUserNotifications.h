#pragma once

#include "platform/UserNotifications.h"

#include <utility>
#include <vector>

namespace tavril {

/// Keeps the notifications instead of showing them. The delegate hears of each when acceptAll() is called, as
/// from a service that takes its time, or at once if `acceptsAtOnce`.
class RecordingUserNotifications final : public UserNotificationCenter {
 public:
  bool isAvailable() const override { return available; }

  void setDelegate(std::weak_ptr<UserNotificationCenterDelegate> delegate) override {
    delegate_ = std::move(delegate);
  }

  void deliver(const UserNotification &notification) override {
    if (!available) return;
    delivered.push_back(notification);
    delivered.back().identifier = nextIdentifier_++;
    if (acceptsAtOnce) acceptAll();
  }

  void removeDeliveredNotification(const UserNotification &notification) override {
    removed.push_back(notification.identifier);
  }

  /// Tells the delegate of the deliveries that it has not heard of.
  void acceptAll() {
    while (accepted_ < delivered.size()) {
      const UserNotification notification = delivered[accepted_++];
      const auto delegate = delegate_.lock();
      if (!delegate) continue;
      if (delegate->shouldPresentNotification(*this, notification))
        presented.push_back(notification.identifier);
      delegate->didDeliverNotification(*this, notification);
    }
  }

  bool available = true;
  bool acceptsAtOnce = true;
  std::vector<UserNotification> delivered;
  std::vector<quint32> presented;
  std::vector<quint32> removed;

 private:
  std::weak_ptr<UserNotificationCenterDelegate> delegate_;
  std::size_t accepted_ = 0;
  quint32 nextIdentifier_ = 1;
};

}  // namespace tavril
