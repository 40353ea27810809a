#pragma once

#include <QString>
#include <QStringList>

#include <functional>
#include <vector>

namespace tavril {
class DeviceRegistry;
class Processes;
}  // namespace tavril

namespace tavril::cli {

/// A serial device as `tavrilctl ports` shows it. Texts that are not known are empty.
struct PortInfo {
  QString name;  ///< such as "usbserial-ttyUSB0"
  QString path;
  QString product;
  QString serialNumber;
  QString vendorId;  ///< four hexadecimal digits, as the product's
  QString productId;
  QString driver;
  QString access;   ///< "yes", or why not
  QString inUseBy;  ///< "modem-manager (1234)", as far as the user may see that

  QString vidPid() const;
  bool isUsb() const { return name.startsWith(u"usb"); }
};

/// All serial devices, in the registry's order.
std::vector<PortInfo> listPorts(DeviceRegistry &devices, const Processes &processes);

/// The path of the port to use. `wanted` may be a path, a name as it is printed ("usbserial-ttyUSB0",
/// "usbport-pts-5"), the name of a node ("ttyUSB0") or one of /dev/serial/by-id. Empty: the USB port, if
/// exactly one is present. A path that is not listed is taken as it stands. Throws a Failure that lists the
/// ports where there is no choice, or no such name.
QString choosePort(const std::vector<PortInfo> &ports, const QString &wanted,
                   const std::function<bool(const QString &path)> &exists);

/// The names, one per line.
QString portNames(const std::vector<PortInfo> &ports);
QString portsTable(const std::vector<PortInfo> &ports);
QString portsJson(const std::vector<PortInfo> &ports);

}  // namespace tavril::cli
