#pragma once

#include <QString>
#include <QStringList>

#include <vector>

namespace tavril {
class DeviceRegistry;
}

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
  QString access;  ///< "yes", or why not
  QString inUseBy;

  QString vidPid() const;
  bool isUsb() const { return name.startsWith(u"usb"); }
};

/// All serial devices, in the registry's order. `procFolder` tells who has them open.
std::vector<PortInfo> listPorts(DeviceRegistry &devices, const QString &procFolder = QStringLiteral("/proc"));

/// The path of the one to use: that of the given name or path, or else the only USB port there is. A path
/// that is not listed is taken as it stands. Throws a Failure that lists the ports where there is no choice,
/// or no such name.
QString choosePort(const std::vector<PortInfo> &ports, const QString &wanted);

QString portsTable(const std::vector<PortInfo> &ports);
QString portsJson(const std::vector<PortInfo> &ports);

/// Who has the terminal open: "modem-manager (1234)", several with commas between. Sees all programs only
/// when run by root, otherwise the user's own.
QString holdersOf(const QString &path, const QString &procFolder);

}  // namespace tavril::cli
