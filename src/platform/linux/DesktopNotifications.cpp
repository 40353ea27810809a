#include "platform/linux/DesktopNotifications.h"

#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusPendingCall>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusReply>
#include <QString>
#include <QVariantMap>

#include <utility>

namespace tavril {
namespace {

const QString service = QStringLiteral("org.freedesktop.Notifications");

/// The time that the service may choose for showing a notification.
constexpr int serviceChoosesTime = -1;

QDBusMessage callOf(const QString &method) {
  return QDBusMessage::createMethodCall(service, QStringLiteral("/org/freedesktop/Notifications"), service,
                                        method);
}

}  // namespace

DesktopNotifications::DesktopNotifications(QDBusConnection bus) : bus_(std::move(bus)) {}

template <typename Handler>
void DesktopNotifications::whenAnswered(const QDBusPendingCall &call, Handler handle) {
  auto *watcher = new QDBusPendingCallWatcher(call, &pendingAnswers_);
  QObject::connect(watcher, &QDBusPendingCallWatcher::finished, watcher,
                   [handle = std::move(handle)](QDBusPendingCallWatcher *finished) {
                     finished->deleteLater();
                     handle(*finished);
                   });
}

bool DesktopNotifications::isAvailable() const {
  if (!bus_.isConnected()) return false;
  QDBusConnectionInterface *const names = bus_.interface();
  return names->isServiceRegistered(service).value() ||
         names->activatableServiceNames().value().contains(service);
}

void DesktopNotifications::setDelegate(std::weak_ptr<UserNotificationCenterDelegate> delegate) {
  delegate_ = std::move(delegate);
}

void DesktopNotifications::deliver(const UserNotification &notification) {
  if (const auto delegate = delegate_.lock();
      delegate && !delegate->shouldPresentNotification(*this, notification)) {
    return;
  }
  if (!bus_.isConnected()) return;
  // Asked each time: notifications are rare, and the service may be replaced while the program runs.
  whenAnswered(bus_.asyncCall(callOf(QStringLiteral("GetCapabilities"))),
               [this, notification](const QDBusPendingReply<QStringList> &capabilities) {
                 if (capabilities.isError()) return;
                 notify(notification, capabilities.value());
               });
}

void DesktopNotifications::notify(UserNotification notification, const QStringList &capabilities) {
  const bool readsMarkup = capabilities.contains(QStringLiteral("body-markup"));
  const QString body =
      readsMarkup ? notification.informativeText.toHtmlEscaped() : notification.informativeText;
  QVariantMap hints;
  if (!notification.soundName) hints.insert(QStringLiteral("suppress-sound"), true);

  constexpr uint replacesNone = 0;
  QDBusMessage call = callOf(QStringLiteral("Notify"));
  call << QStringLiteral("Tavril") << replacesNone << QStringLiteral("tavril") << notification.title << body
       << QStringList() << hints << serviceChoosesTime;
  whenAnswered(bus_.asyncCall(call),
               [this, notification = std::move(notification)](const QDBusPendingReply<uint> &identifier) {
                 if (identifier.isError()) return;
                 UserNotification delivered = notification;
                 delivered.identifier = identifier.value();
                 if (const auto delegate = delegate_.lock())
                   delegate->didDeliverNotification(*this, delivered);
               });
}

void DesktopNotifications::removeDeliveredNotification(const UserNotification &notification) {
  if (notification.identifier == 0 || !bus_.isConnected()) return;
  QDBusMessage call = callOf(QStringLiteral("CloseNotification"));
  call << notification.identifier;
  // A service started only now would not know the notification.
  call.setAutoStartService(false);
  bus_.send(call);
}

}  // namespace tavril
