#pragma once

#include <QHash>
#include <QString>

#include <any>
#include <functional>
#include <vector>

namespace tavril {

/// A notification inside the process. `sender` is who posted it, for comparison only.
struct Notification {
  QString name;
  const void *sender = nullptr;
  QHash<QString, std::any> userInfo;
};

/// Hands notifications to those who registered for their name, in the order of registration, before post()
/// returns. An observer may add or remove observers, itself included, while it is called. Main thread only.
class NotificationCenter {
 public:
  using Handler = std::function<void(const Notification &)>;

  /// `observer` names the registration for removeObserver() and is not owned.
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
