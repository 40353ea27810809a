#include "serial/config/PortStatus.h"

#include "platform/DeviceNodes.h"
#include "platform/DeviceRegistry.h"
#include "platform/Processes.h"
#include "platform/StringTable.h"
#include "serial/SerialPort.h"

#include <algorithm>

namespace tavril {

PortStatus PortStatus::of(const SerialPort &port, const SerialEnvironment &serial, const DeviceNodes &nodes,
                          const Processes &processes) {
  const auto property = [&](const char16_t *key) {
    return SerialPort::stringPropertyOf(serial, port.IOKitDevice(), QString::fromUtf16(key));
  };
  PortStatus status;
  status.name = port.name();
  status.path = port.path();
  status.product = property(DeviceKey::product);
  status.serialNumber = property(DeviceKey::serialNumber);
  if (port.isOpen()) {
    status.state = State::Open;
    return status;
  }
  const DeviceNode node = nodes.look(status.path);
  if (!node.exists) {
    status.state = State::Gone;
    return status;
  }
  if (!node.mayUse) {
    status.state = State::Denied;
    return status;
  }
  QStringList holders;
  for (const RunningProcess &process : processes.holding(status.path)) {
    if (process.id != processes.own()) holders.append(process.label());
  }
  if (!holders.isEmpty()) {
    status.state = State::InUse;
    status.holder = holders.join(QStringLiteral(", "));
  }
  return status;
}

QString PortStatus::stateText(const StringTable &strings) const {
  switch (state) {
    case State::Open:
      return strings.text(u"port_open");
    case State::Gone:
      return strings.text(u"port_gone");
    case State::Denied:
      return strings.text(u"port_denied");
    case State::InUse:
      return strings.text(u"port_in_use").replace(QStringLiteral("%@"), holder);
    case State::Ready:
      break;
  }
  return strings.text(u"port_ready");
}

QString PortStatus::details(const StringTable &strings) const {
  QStringList parts{product, serialNumber, path, stateText(strings)};
  parts.removeAll(QString());
  return parts.join(QStringLiteral(" · "));
}

}  // namespace tavril
