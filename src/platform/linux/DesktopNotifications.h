#pragma once

#include "platform/UserNotifications.h"

#include <QDBusConnection>
#include <QObject>
#include <QStringList>

#include <memory>

class QDBusMessage;
class QDBusPendingCall;

namespace tavril {

/// Notifications through the desktop's notification service on the session bus. Delivery is asynchronous; a
/// bus or service that is missing, or a service that answers with an error, is passed over in silence.
class DesktopNotifications : public UserNotificationCenter {
 public:
  explicit DesktopNotifications(QDBusConnection bus = QDBusConnection::sessionBus());

  /// Asks the bus, not the service, so that a service that hangs cannot hold up the caller.
  bool isAvailable() const override;
  void setDelegate(std::weak_ptr<UserNotificationCenterDelegate> delegate) override;
  void deliver(const UserNotification &notification) override;
  void removeDeliveredNotification(const UserNotification &notification) override;

 private:
  void notify(UserNotification notification, const QStringList &capabilities);
  /// Runs `handle` with the answer, error or not, unless this object is gone by then.
  template <typename Handler>
  void whenAnswered(const QDBusPendingCall &call, Handler handle);

  QDBusConnection bus_;
  std::weak_ptr<UserNotificationCenterDelegate> delegate_;
  QObject pendingAnswers_;  // their owner: what is still unanswered at the end is dropped
};

}  // namespace tavril
