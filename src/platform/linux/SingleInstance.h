#pragma once

#include <QDBusConnection>
#include <QString>

#include <functional>
#include <memory>

namespace tavril {

/// Sees to it that a user has one window of the program: the first start takes a name on the session bus, a
/// second one finds it taken and asks the first to come to the front, by the call that desktops use for this
/// (org.freedesktop.Application). Without a bus every start is the first. Main thread only; gives the name
/// back when it goes.
class SingleInstance {
 public:
  /// Brings the window to the front. `token`: the desktop's permission to do so, may be empty.
  using Raise = std::function<void(const QString &token)>;

  explicit SingleInstance(QDBusConnection bus = QDBusConnection::sessionBus());
  ~SingleInstance();
  SingleInstance(const SingleInstance &) = delete;
  SingleInstance &operator=(const SingleInstance &) = delete;

  /// Takes the name. False when another process has it.
  bool claim();
  /// What to do when another start asks for the window. Until it is set nothing happens.
  void setRaise(Raise raise);
  /// Asks the process that has the name; false when it does not answer within some seconds.
  bool raiseOther(const QString &token) const;

 private:
  class Object;

  QDBusConnection bus_;
  std::unique_ptr<Object> object_;
};

}  // namespace tavril
