#include "serial/config/PortSight.h"

#include "platform/DeviceNodes.h"
#include "platform/DeviceRegistry.h"
#include "platform/Processes.h"
#include "platform/StringTable.h"
#include "serial/SerialPort.h"

#include <algorithm>

namespace tavril {

PortSight PortSight::of(const SerialPort &port, const SerialEnvironment &serial, const DeviceNodes &nodes,
                        const Processes &processes) {
  const auto property = [&](const char16_t *key) {
    return SerialPort::stringPropertyOf(serial, port.IOKitDevice(), QString::fromUtf16(key));
  };
  PortSight sight;
  sight.name = port.name();
  sight.path = port.path();
  sight.product = property(DeviceKey::product);
  sight.serialNumber = property(DeviceKey::serialNumber);
  if (port.isOpen()) {
    sight.state = State::Open;
    return sight;
  }
  const DeviceNode node = nodes.look(sight.path);
  if (!node.exists) {
    sight.state = State::Gone;
    return sight;
  }
  if (!node.mayUse) {
    sight.state = State::Denied;
    return sight;
  }
  QStringList holders;
  for (const RunningProcess &process : processes.holding(sight.path)) {
    if (process.id != processes.own()) holders.append(process.label());
  }
  if (!holders.isEmpty()) {
    sight.state = State::InUse;
    sight.holder = holders.join(QStringLiteral(", "));
  }
  return sight;
}

QString PortSight::stateText(const StringTable &strings) const {
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

QString PortSight::details(const StringTable &strings) const {
  QStringList parts{product, serialNumber, path, stateText(strings)};
  parts.removeAll(QString());
  return parts.join(QStringLiteral(" · "));
}

}  // namespace tavril
