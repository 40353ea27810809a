#include "cli/Ports.h"

#include "cli/Failure.h"
#include "cli/Files.h"
#include "cli/Table.h"
#include "platform/DeviceRegistry.h"
#include "platform/JsonText.h"
#include "platform/Processes.h"

#include <QFileInfo>

#include <algorithm>
#include <iterator>
#include <utility>

namespace tavril::cli {

namespace {

QString accessTo(const QString &path) {
  const QFileInfo file(path);
  if (!file.exists()) return QStringLiteral("gone");
  if (file.isReadable() && file.isWritable()) return QStringLiteral("yes");
  const QString group = file.group();
  return group.isEmpty() || group == u"root" ? QStringLiteral("denied")
                                             : QStringLiteral("denied (group %1)").arg(group);
}

QString named(const std::vector<PortInfo> &ports) {
  QStringList lines;
  for (const PortInfo &port : ports) lines.append(QStringLiteral("%1 (%2)").arg(port.name, port.path));
  return lines.join(QStringLiteral(", "));
}

/// Where a terminal with this name may be.
QStringList pathsOf(const QString &name) {
  QStringList paths{QStringLiteral("/dev/") + name, QStringLiteral("/dev/serial/by-id/") + name};
  // A terminal that the user has named is called by its path below /dev, with hyphens for the slashes.
  const QString prefix = QStringLiteral("usbport-");
  if (name.startsWith(prefix)) {
    const QString below = name.mid(prefix.size());
    paths.append(QStringLiteral("/dev/") + below);
    paths.append(QStringLiteral("/dev/") + QString(below).replace(u'-', u'/'));
  }
  return paths;
}

constexpr std::pair<const char *, QString (*)(const PortInfo &)> columns[] = {
    {"name", [](const PortInfo &port) { return port.name; }},
    {"path", [](const PortInfo &port) { return port.path; }},
    {"product", [](const PortInfo &port) { return port.product; }},
    {"serial_number", [](const PortInfo &port) { return port.serialNumber; }},
    {"vid_pid", [](const PortInfo &port) { return port.vidPid(); }},
    {"driver", [](const PortInfo &port) { return port.driver; }},
    {"access", [](const PortInfo &port) { return port.access; }},
    {"in_use_by", [](const PortInfo &port) { return port.inUseBy; }},
};

}  // namespace

QString PortInfo::vidPid() const {
  return vendorId.isEmpty() && productId.isEmpty() ? QString() : vendorId + u':' + productId;
}

std::vector<PortInfo> listPorts(DeviceRegistry &devices, const Processes &processes) {
  std::vector<PortInfo> ports;
  const RegistryHandle walk = devices.matchingServices({});
  while (const RegistryHandle device = devices.next(walk)) {
    const auto property = [&](const char16_t *key) {
      return devices.stringProperty(device, QString::fromUtf16(key));
    };
    PortInfo port;
    port.name = property(DeviceKey::ttyDevice);
    port.path = property(DeviceKey::calloutDevice);
    port.product = property(DeviceKey::product);
    port.serialNumber = property(DeviceKey::serialNumber);
    port.vendorId = property(DeviceKey::vendorId);
    port.productId = property(DeviceKey::productId);
    port.driver = property(DeviceKey::driver);
    port.access = accessTo(port.path);
    QStringList holders;
    for (const RunningProcess &process : processes.holding(port.path)) holders.append(process.label());
    port.inUseBy = holders.join(QStringLiteral(", "));
    devices.release(device);
    ports.push_back(port);
  }
  devices.release(walk);
  return ports;
}

QString choosePort(const std::vector<PortInfo> &ports, const QString &wanted,
                   const std::function<bool(const QString &path)> &exists) {
  if (!wanted.isEmpty()) {
    const auto found = std::ranges::find_if(ports, [&](const PortInfo &port) {
      return port.name == wanted || port.path == wanted || port.path == QStringLiteral("/dev/") + wanted;
    });
    if (found != ports.end()) return found->path;
    if (wanted.contains(u'/')) return wanted;
    for (const QString &path : pathsOf(wanted)) {
      if (exists(path)) return path;
    }
    throw Failure{
        ExitCode::NoPort,
        ports.empty()
            ? QStringLiteral("there is no port \"%1\", and no other. Plug the adapter in.").arg(shown(wanted))
            : QStringLiteral("there is no port \"%1\". The ports are: %2.").arg(shown(wanted), named(ports))};
  }
  std::vector<PortInfo> usb;
  std::ranges::copy_if(ports, std::back_inserter(usb), &PortInfo::isUsb);
  if (usb.size() == 1) return usb.front().path;
  if (usb.empty()) {
    throw Failure{
        ExitCode::NoPort,
        QStringLiteral("there is no USB serial port. Plug in the servo's adapter, name a terminal with "
                       "--port PATH, or try --demo.")};
  }
  throw Failure{
      ExitCode::NoPort,
      QStringLiteral("there are several ports. Choose one with --port. The ports are: %1.").arg(named(usb))};
}

QString portNames(const std::vector<PortInfo> &ports) {
  QString text;
  for (const PortInfo &port : ports) text += port.name + u'\n';
  return text;
}

QString portsTable(const std::vector<PortInfo> &ports) {
  Table table;
  QStringList titles;
  for (const auto &[title, value] : columns) titles.append(QString::fromLatin1(title).toUpper());
  table.addRow(titles);
  for (const PortInfo &port : ports) {
    QStringList cells;
    for (const auto &[title, value] : columns) {
      const QString text = value(port);
      cells.append(text.isEmpty() ? QStringLiteral("-") : text);
    }
    table.addRow(cells);
  }
  return table.text();
}

QString portsJson(const std::vector<PortInfo> &ports) {
  QStringList rows;
  for (const PortInfo &port : ports) {
    QStringList members;
    for (const auto &[title, value] : columns) {
      members.append(jsonText(QString::fromLatin1(title)) + QStringLiteral(": ") + jsonText(value(port)));
    }
    rows.append(QStringLiteral("  {") + members.join(QStringLiteral(", ")) + u'}');
  }
  if (rows.isEmpty()) return QStringLiteral("[]\n");
  return QStringLiteral("[\n") + rows.join(QStringLiteral(",\n")) + QStringLiteral("\n]\n");
}

}  // namespace tavril::cli
