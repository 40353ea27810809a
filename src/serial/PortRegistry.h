#pragma once

#include <QString>

#include <memory>
#include <mutex>
#include <vector>

namespace tavril {

class SerialPort;

/// Every live port by path, and the application's list of USB ports. Only ports whose name begins with "usb"
/// are registered. Adding and looking up belong to the main thread; removing may happen on any.
class PortRegistry {
 public:
  using PortList = std::vector<std::shared_ptr<SerialPort>>;

  /// `allSerialPortsInfo` is the application's list: it owns its ports. Kept: C40.
  explicit PortRegistry(PortList &allSerialPortsInfo) : allSerialPortsInfo_(allSerialPortsInfo) {}

  /// Registers the port, and lists it for the application unless a port of the same name stands there
  /// already. True when it was registered.
  bool addSerialPort(const std::shared_ptr<SerialPort> &port);
  void removeSerialPort(const SerialPort *port);
  /// The first live port with exactly this path, or nothing.
  std::shared_ptr<SerialPort> existingPortWithPath(const QString &path) const;

 private:
  struct Entry {
    const SerialPort *identity;
    std::weak_ptr<SerialPort> port;
  };
  mutable std::mutex mutex_;
  std::vector<Entry> allSerialPorts_;  // does not keep a port alive
  PortList &allSerialPortsInfo_;
};

}  // namespace tavril
