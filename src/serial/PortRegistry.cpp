#include "serial/PortRegistry.h"

#include "serial/SerialPort.h"

#include <algorithm>
#include <utility>

namespace tavril {

bool PortRegistry::addSerialPort(const std::shared_ptr<SerialPort> &port) {
  // Kept: C39.
  if (port->name().first(std::min<qsizetype>(3, port->name().size())) != u"usb") return false;
  {
    const std::lock_guard lock(mutex_);
    allSerialPorts_.push_back({port.get(), port});
  }
  const bool listed = std::ranges::any_of(allSerialPortsInfo_,
                                          [&](const auto &other) { return other->name() == port->name(); });
  if (!listed) allSerialPortsInfo_.push_back(port);
  return true;
}

void PortRegistry::removeSerialPort(const SerialPort *port) {
  const std::lock_guard lock(mutex_);
  const auto found =
      std::ranges::find_if(allSerialPorts_, [port](const Entry &entry) { return entry.identity == port; });
  if (found != allSerialPorts_.end()) allSerialPorts_.erase(found);
}

std::shared_ptr<SerialPort> PortRegistry::existingPortWithPath(const QString &path) const {
  std::vector<std::shared_ptr<SerialPort>> alive;  // released after the lock: the last reference may be ours
  {
    const std::lock_guard lock(mutex_);
    for (const Entry &entry : allSerialPorts_) {
      if (auto port = entry.port.lock()) alive.push_back(std::move(port));
    }
  }
  for (const auto &port : alive) {
    if (port->path() == path) return port;
  }
  return nullptr;
}

}  // namespace tavril
