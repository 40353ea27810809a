#include "app/PortAnnouncements.h"

#include "platform/Desktop.h"
#include "platform/Log.h"
#include "platform/ModalAlert.h"
#include "platform/NotificationCenter.h"
#include "platform/ScreenElement.h"
#include "platform/StringTable.h"
#include "platform/Timers.h"
#include "platform/UserNotifications.h"
#include "protocol/RegisterCatalogue.h"
#include "protocol/SharedState.h"
#include "serial/SerialPort.h"

#include <QStringList>

#include <algorithm>
#include <any>
#include <chrono>
#include <optional>

namespace tavril {

namespace {

constexpr std::chrono::seconds notificationStays{3};

QString portsText(const SerialPortList &ports) {
  QStringList names;
  for (const auto &port : ports) names.append(port->description());
  return listText(names);
}

SerialPortList portsOf(const Notification &notification, const char16_t *key) {
  const std::any value = notification.userInfo.value(QString::fromUtf16(key));
  const auto *ports = std::any_cast<SerialPortList>(&value);
  return ports ? *ports : SerialPortList();
}

}  // namespace

void PortAnnouncements::serialPortsWereConnected(const Notification &notification) {
  const SerialPortList ports = portsOf(notification, ConnectedSerialPortsKey);
  desktop_.log.write(QStringLiteral("Ports were connected: ") + portsText(ports));
  postUserNotificationForConnectedPorts(ports);
  // Kept: C31.
  if (ports.empty() || !ports.front()->name().startsWith(u"usb")) return;

  if (alertUser(QStringLiteral("Serial Port Was Connected From PC.")) != ModalAlert::firstButton) return;
  const auto &port = ports.front();
  auto &known = state_.allSerialPortsInfo;
  if (std::ranges::none_of(known, [&](const auto &other) { return other->isEqual(port.get()); })) {
    known.push_back(port);
  }
  desktop_.log.write(QStringLiteral("Find Serial port ") + port->description());
}

void PortAnnouncements::serialPortsWereDisconnected(const Notification &notification) {
  const SerialPortList ports = portsOf(notification, DisconnectedSerialPortsKey);
  desktop_.log.write(QStringLiteral("Ports were disconnected: ") + portsText(ports));
  postUserNotificationForDisconnectedPorts(ports);
}

void PortAnnouncements::postUserNotificationForConnectedPorts(const SerialPortList &ports) {
  if (!desktop_.userNotifications) return;
  for (const auto &port : ports) {
    // Kept: C34.
    deliver(QStringLiteral("Serial Port Connected"),
            QStringLiteral("Serial Port %@ was connected to your Mac."), *port);
  }
}

void PortAnnouncements::postUserNotificationForDisconnectedPorts(const SerialPortList &ports) {
  if (!desktop_.userNotifications) return;
  for (std::size_t k = 0; k < ports.size(); ++k) {
    deliver(QStringLiteral("Serial Port Disconnected"),
            QStringLiteral("Serial Port %@ was disconnected from your Mac."), *ports[k]);
    forgetDisconnected(*ports[k], k);
  }
}

void PortAnnouncements::forgetDisconnected(const SerialPort &port, std::size_t position) {
  auto &known = state_.allSerialPortsInfo;
  // Kept: C30.
  if (position >= known.size() || !known[position]->isEqual(&port)) return;
  known.erase(known.begin() + static_cast<std::ptrdiff_t>(position));
  for (const RegisterRow &row : settingRegisters()) {
    ScreenElement &element = state_.ObjectDictionaryArray.element(row.valueKey);
    element.setText(QString());
    element.setEnabled(false);
  }
}

void PortAnnouncements::deliver(const QString &titleKey, const QString &formatKey, const SerialPort &port) {
  UserNotification notification;
  notification.title = desktop_.strings.text(titleKey);
  notification.informativeText = desktop_.strings.text(formatKey).replace(QStringLiteral("%@"), port.name());
  notification.soundName = std::nullopt;
  desktop_.userNotifications->deliver(notification);
}

void PortAnnouncements::didDeliverNotification(UserNotificationCenter &center,
                                               const UserNotification &notification) {
  desktop_.timers.oneShot(notificationStays,
                          [&center, notification] { center.removeDeliveredNotification(notification); });
}

void PortAnnouncements::serialPortWasRemoved() {
  alertUser(QStringLiteral("Serial Port Was Removed From PC."));
}

// Kept: C33.
int PortAnnouncements::alertUser(const QString &informativeText) {
  const int answer =
      desktop_.alert.run({QStringLiteral("Serial Notice"), informativeText, {QStringLiteral("OK")}});
  if (answer == ModalAlert::firstButton) desktop_.log.write(QStringLiteral("OK"));
  return answer;
}

}  // namespace tavril
