#pragma once

#include "serial/SerialPortManager.h"

#include <QString>

#include <cstddef>

namespace tavril {

struct Desktop;
struct Notification;
struct SharedState;
struct UserNotification;
class SerialPort;
class UserNotificationCenter;

/// What happens when ports come and go: the user is told, and the list of known ports follows.
class PortAnnouncements {
 public:
  PortAnnouncements(SharedState &state, const Desktop &desktop) : state_(state), desktop_(desktop) {}

  /// Asks whether a USB port is to be taken into the list.
  void serialPortsWereConnected(const Notification &notification);
  void serialPortsWereDisconnected(const Notification &notification);
  /// Do nothing on a desktop that has no user notifications.
  void postUserNotificationForConnectedPorts(const SerialPortList &ports);
  void postUserNotificationForDisconnectedPorts(const SerialPortList &ports);
  /// Withdraws the notification after three seconds.
  void didDeliverNotification(UserNotificationCenter &center, const UserNotification &notification);

  /// The link's port was pulled out.
  void serialPortWasRemoved();

 private:
  void forgetDisconnected(const SerialPort &port, std::size_t position);
  void deliver(const QString &titleKey, const QString &formatKey, const SerialPort &port);
  int alertUser(const QString &informativeText);

  SharedState &state_;
  const Desktop &desktop_;
};

}  // namespace tavril
