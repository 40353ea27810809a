#include "platform/linux/UdevUsbBus.h"

#include "platform/PrintableText.h"
#include "terminal/SerialDevices.h"

#include <QString>
#include <QStringList>
#include <QStringView>

#include <libudev.h>

#include <algorithm>
#include <functional>
#include <iterator>
#include <map>
#include <memory>
#include <string>
#include <utility>

namespace tavril {

namespace {

/// Makers of the chips in serial adapters, and the module that drives them.
constexpr std::pair<const char16_t *, const char16_t *> makers[] = {
    {u"0403", u"ftdi_sio"}, {u"10c4", u"cp210x"}, {u"1a86", u"ch341"}, {u"067b", u"pl2303"}};

QString usualDriverOf(const QString &vendorId) {
  const auto *maker =
      std::ranges::find_if(makers, [&](const auto &entry) { return vendorId == QStringView(entry.first); });
  return maker == std::end(makers) ? QString() : QString::fromUtf16(maker->second);
}

void eachOf(udev *udev, const char *subsystem, const std::function<void(udev_device *)> &visit) {
  const std::unique_ptr<udev_enumerate, decltype(&udev_enumerate_unref)> enumeration(udev_enumerate_new(udev),
                                                                                     &udev_enumerate_unref);
  if (!enumeration || udev_enumerate_add_match_subsystem(enumeration.get(), subsystem) < 0 ||
      udev_enumerate_scan_devices(enumeration.get()) < 0) {
    return;
  }
  udev_list_entry *entry = nullptr;
  udev_list_entry_foreach(entry, udev_enumerate_get_list_entry(enumeration.get())) {
    const UdevDevice device(udev_device_new_from_syspath(udev, udev_list_entry_get_name(entry)));
    if (device) visit(device.get());
  }
}

std::string placeOf(udev_device *usbDevice) {
  return usbDevice ? udev_device_get_syspath(usbDevice) : std::string();
}

QString lastingNameOf(udev_device *terminal) {
  const QString links = QString::fromUtf8(udev_device_get_property_value(terminal, "DEVLINKS"));
  for (const QString &link : links.split(u' ', Qt::SkipEmptyParts)) {
    if (link.startsWith(u"/dev/serial/by-id/")) return link;
  }
  return {};
}

UsbAdapter adapterOf(udev_device *terminal) {
  const SerialDevice device = describeTerminal(terminal);
  const auto text = [](const std::string &value) { return printableText(QString::fromStdString(value)); };
  UsbAdapter adapter;
  adapter.product = text(device.product);
  adapter.serialNumber = text(device.serialNumber);
  adapter.vendorId = text(device.vendorId);
  adapter.productId = text(device.productId);
  adapter.driver = text(device.driver);
  adapter.usualDriver = adapter.driver;
  adapter.node = QString::fromStdString(device.node);
  adapter.lastingName = lastingNameOf(terminal);
  return adapter;
}

/// The adapter of an interface that has no terminal; nothing of it is known when it is none for serial lines.
UsbAdapter adapterWithoutTerminal(udev_device *interface, udev_device *usbDevice) {
  UsbAdapter adapter;
  const auto attribute = [](udev_device *device, const char *name) {
    return printableText(QString::fromUtf8(udev_device_get_sysattr_value(device, name)).trimmed());
  };
  const QString vendorId = attribute(usbDevice, "idVendor");
  const bool isModem =
      attribute(interface, "bInterfaceClass") == u"02" && attribute(interface, "bInterfaceSubClass") == u"02";
  adapter.usualDriver = isModem ? QStringLiteral("cdc_acm") : usualDriverOf(vendorId);
  if (adapter.usualDriver.isEmpty()) return {};
  adapter.product = attribute(usbDevice, "product");
  adapter.serialNumber = attribute(usbDevice, "serial");
  adapter.vendorId = vendorId;
  adapter.productId = attribute(usbDevice, "idProduct");
  adapter.driver = QString::fromUtf8(udev_device_get_driver(interface));
  return adapter;
}

}  // namespace

std::vector<UsbAdapter> UdevUsbBus::serialAdapters() const {
  std::vector<UsbAdapter> adapters;
  const std::unique_ptr<udev, UdevRelease> udev(udev_new());
  if (!udev) return adapters;
  std::map<std::string, bool> shown;
  eachOf(udev.get(), "tty", [&](udev_device *terminal) {
    const std::string place =
        placeOf(udev_device_get_parent_with_subsystem_devtype(terminal, "usb", "usb_device"));
    if (place.empty() || !isSerialDevice(terminal)) return;
    shown[place] = true;
    adapters.push_back(adapterOf(terminal));
  });
  eachOf(udev.get(), "usb", [&](udev_device *device) {
    if (QString::fromUtf8(udev_device_get_devtype(device)) != u"usb_interface") return;
    udev_device *usbDevice = udev_device_get_parent_with_subsystem_devtype(device, "usb", "usb_device");
    const std::string place = placeOf(usbDevice);
    if (place.empty() || shown.contains(place)) return;
    const UsbAdapter adapter = adapterWithoutTerminal(device, usbDevice);
    if (adapter.usualDriver.isEmpty()) return;
    shown[place] = true;
    adapters.push_back(adapter);
  });
  return adapters;
}

}  // namespace tavril
