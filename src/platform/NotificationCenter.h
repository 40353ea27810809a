#pragma once

#include <QHash>
#include <QString>

#include <any>
#include <functional>
#include <vector>

namespace tavril {

/// A notification within the process. `sender` is for comparison only.
struct Notification {
  QString name;
  const void *sender = nullptr;
  QHash<QString, std::any> userInfo;
};

/// Calls those who registered for the name of a notification, in the order of registration, before post()
/// returns. While an observer is called, it may add and remove observers, also itself.
class NotificationCenter {
 public:
  using Handler = std::function<void(const Notification &)>;

  /// `observer` identifies the registration for removeObserver().
  void addObserver(const void *observer, const QString &name, Handler handler);
  /// Ends every registration of this observer.
  void removeObserver(const void *observer);
  void post(const Notification &notification);

 private:
  struct Registration {
    const void *observer;
    QString name;
    Handler handler;
    quint64 serial;
  };
  std::vector<Registration> registrations_;
  quint64 nextSerial_ = 1;
};

}  // namespace tavril
