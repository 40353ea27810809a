#pragma once

#include <QDBusConnection>
#include <QProcess>
#include <QString>
#include <QTemporaryDir>
#include <QVariantList>

#include <vector>

namespace tavril {

/// A session bus of the test's own with nothing on it, and on request a notification service (that of
/// python3-dbusmock) that notes how it was called. Both end with this object.
class SessionBus {
 public:
  SessionBus();
  ~SessionBus();
  SessionBus(const SessionBus &) = delete;
  SessionBus &operator=(const SessionBus &) = delete;

  QDBusConnection connection() const { return connection_; }
  QString address() const { return address_; }
  /// Starts the service and waits until it is there. The capabilities are separated by spaces.
  void startNotificationService(const QString &capabilities = QStringLiteral("body body-markup"));
  /// Lets the bus start the service by itself when it is first called.
  void offerNotificationService();
  /// Gives a method of the service, with these signatures, another body, in Python.
  void replaceMethod(const QString &method, const QString &in, const QString &out, const QString &code);
  /// The arguments of every call of this method of the service, in order.
  std::vector<QVariantList> callsOf(const QString &method) const;
  /// Ends the bus itself.
  void stop();

 private:
  QTemporaryDir folder_;
  QProcess bus_;
  QProcess service_;
  QString address_;
  QDBusConnection connection_;
};

}  // namespace tavril
