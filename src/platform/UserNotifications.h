#pragma once

#include <QString>

#include <memory>
#include <optional>

namespace tavril {

class UserNotificationCenter;

/// A notification to the user, in plain text. No sound name means a silent one.
struct UserNotification {
  QString title;
  QString informativeText;
  std::optional<QString> soundName;
  /// Set by the centre on delivery; names the notification for its removal. 0: not delivered.
  quint32 identifier = 0;
};

/// Hears of deliveries and decides on presentation. Called on the main thread.
class UserNotificationCenterDelegate {
 public:
  virtual ~UserNotificationCenterDelegate() = default;

  virtual void didDeliverNotification(UserNotificationCenter &center,
                                      const UserNotification &notification) = 0;
  /// Whether the notification shows while the application is in front.
  virtual bool shouldPresentNotification(UserNotificationCenter &center,
                                         const UserNotification &notification) = 0;
};

/// The desktop's notifications. Nothing happens where no such service is there. Main thread only.
class UserNotificationCenter {
 public:
  virtual ~UserNotificationCenter() = default;

  /// Whether there is a notification service at all.
  virtual bool isAvailable() const = 0;
  virtual void setDelegate(std::weak_ptr<UserNotificationCenterDelegate> delegate) = 0;
  /// Hands the notification to the service; the delegate hears of it when the service has taken it.
  virtual void deliver(const UserNotification &notification) = 0;
  virtual void removeDeliveredNotification(const UserNotification &notification) = 0;
};

}  // namespace tavril
