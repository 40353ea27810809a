#pragma once

#include <QString>

#include <memory>
#include <optional>

namespace tavril {

class UserNotificationCenter;

/// A notification to the user, in plain text. Without a sound name it is silent.
struct UserNotification {
  QString title;
  QString informativeText;
  std::optional<QString> soundName;
  /// Set by the centre on delivery, for the removal. 0 means not delivered.
  quint32 identifier = 0;
};

/// Is told of deliveries and decides on presentation.
class UserNotificationCenterDelegate {
 public:
  virtual ~UserNotificationCenterDelegate() = default;

  virtual void didDeliverNotification(UserNotificationCenter &center,
                                      const UserNotification &notification) = 0;
  /// Whether the notification shows while the application is in front.
  virtual bool shouldPresentNotification(UserNotificationCenter &center,
                                         const UserNotification &notification) = 0;
};

/// The desktop's notifications. Without a notification service, nothing happens.
class UserNotificationCenter {
 public:
  virtual ~UserNotificationCenter() = default;

  /// Whether there is a notification service.
  virtual bool isAvailable() const = 0;
  virtual void setDelegate(std::weak_ptr<UserNotificationCenterDelegate> delegate) = 0;
  /// Sends the notification. The delegate is told when the service has accepted it.
  virtual void deliver(const UserNotification &notification) = 0;
  virtual void removeDeliveredNotification(const UserNotification &notification) = 0;
};

}  // namespace tavril
