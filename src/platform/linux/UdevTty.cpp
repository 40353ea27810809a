#include "platform/linux/UdevTty.h"

#include "platform/PrintableText.h"

#include <QStringView>

#include <libudev.h>

#include <utility>

namespace tavril {
namespace {

QString key(const char16_t *name) {
  return QString::fromUtf16(name);
}

QString propertyOf(udev_device *device, const char *name) {
  return QString::fromUtf8(udev_device_get_property_value(device, name));
}

/// The driver of the nearest ancestor that has one. Newer kernels put two devices of their own between a
/// built-in port and its hardware; the drivers of those say nothing.
QString driverOf(udev_device *terminal) {
  for (udev_device *parent = udev_device_get_parent(terminal); parent != nullptr;
       parent = udev_device_get_parent(parent)) {
    QString driver = QString::fromUtf8(udev_device_get_driver(parent));
    if (!driver.isEmpty() && QString::fromUtf8(udev_device_get_subsystem(parent)) != u"serial-base")
      return driver;
  }
  return {};
}

/// The 8250 driver makes ports under a platform device of its own for the addresses where older machines had
/// them; the kernel gives the type 0 to those at whose address nothing answered.
bool isPhantom(udev_device *terminal) {
  udev_device *platform = udev_device_get_parent_with_subsystem_devtype(terminal, "platform", nullptr);
  if (platform == nullptr || QString::fromUtf8(udev_device_get_driver(platform)) != u"serial8250")
    return false;
  const QString type = QString::fromUtf8(udev_device_get_sysattr_value(terminal, "type")).trimmed();
  return type.isEmpty() || type == u"0";
}

void setNames(DeviceProperties &properties, const QString &node, const QString &base, const QString &suffix) {
  properties.insert(key(DeviceKey::calloutDevice), node);
  properties.insert(key(DeviceKey::dialinDevice), node);
  properties.insert(key(DeviceKey::ttyDevice), base + suffix);
  properties.insert(key(DeviceKey::ttyBaseName), base);
  properties.insert(key(DeviceKey::ttySuffix), suffix);
  properties.insert(key(DeviceKey::clientType), QStringLiteral("IOSerialStream"));
}

void setIfThere(DeviceProperties &properties, const char16_t *name, const QString &value) {
  if (!value.isEmpty()) properties.insert(key(name), value);
}

}  // namespace

QString nodeOf(udev_device *terminal) {
  return QString::fromUtf8(udev_device_get_devnode(terminal));
}

bool isSerialDevice(udev_device *terminal) {
  // What exists in software only hangs under no other device.
  return !nodeOf(terminal).isEmpty() && udev_device_get_parent(terminal) != nullptr && !isPhantom(terminal);
}

DeviceProperties describeTerminal(udev_device *terminal) {
  DeviceProperties properties;
  const QString kernelName = QString::fromUtf8(udev_device_get_sysname(terminal));
  const QString driver = driverOf(terminal);
  setIfThere(properties, DeviceKey::driver, driver);
  if (udev_device_get_parent_with_subsystem_devtype(terminal, "usb", "usb_device") == nullptr) {
    const QString number = QString::fromUtf8(udev_device_get_sysnum(terminal));
    setNames(properties, nodeOf(terminal), kernelName.chopped(number.size()), number);
    return properties;
  }
  const bool isModem = driver == u"cdc_acm";
  setNames(properties, nodeOf(terminal), isModem ? QStringLiteral("usbmodem-") : QStringLiteral("usbserial-"),
           kernelName);
  const QString model = propertyOf(terminal, "ID_MODEL");
  setIfThere(properties, DeviceKey::product,
             printableText(model.isEmpty() ? propertyOf(terminal, "ID_MODEL_FROM_DATABASE") : model));
  setIfThere(properties, DeviceKey::serialNumber, printableText(propertyOf(terminal, "ID_SERIAL_SHORT")));
  setIfThere(properties, DeviceKey::vendorId, propertyOf(terminal, "ID_VENDOR_ID"));
  setIfThere(properties, DeviceKey::productId, propertyOf(terminal, "ID_MODEL_ID"));
  return properties;
}

DeviceProperties describeNamedTerminal(const QString &node, DeviceProperties known) {
  QStringView below(node);
  if (below.startsWith(u"/dev/")) {
    below = below.mid(5);
  } else if (below.startsWith(u'/')) {
    below = below.mid(1);
  }
  setNames(known, node, QStringLiteral("usbport-"), below.toString().replace(u'/', u'-'));
  return known;
}

}  // namespace tavril
