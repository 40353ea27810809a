#pragma once

#include "platform/DeviceRegistry.h"
#include "platform/linux/RegistryTable.h"

#include <QString>

#include <algorithm>
#include <vector>

namespace tavril {

/// A device registry whose devices come and go as the test says.
class FakeDevices final : public DeviceRegistry {
 public:
  static DeviceProperties describe(const QString &name, const QString &path) {
    return {{QString::fromUtf16(DeviceKey::calloutDevice), path},
            {QString::fromUtf16(DeviceKey::dialinDevice), path + QStringLiteral(".dialin")},
            {QString::fromUtf16(DeviceKey::ttyDevice), name},
            {QString::fromUtf16(DeviceKey::ttyBaseName), QStringLiteral("usbserial-")},
            {QString::fromUtf16(DeviceKey::ttySuffix), name.section(u'-', 1)},
            {QString::fromUtf16(DeviceKey::clientType), QStringLiteral("IOSerialStream")}};
  }

  /// The device is there, without a word to those who watch.
  void add(const QString &name, const QString &path) { devices.push_back(describe(name, path)); }

  void plugIn(const QString &name, const QString &path) {
    add(name, path);
    table.announce(DeviceEvent::Published, devices.back());
  }

  /// With a name of the product.
  void plugIn(const QString &name, const QString &path, const QString &product) {
    add(name, path);
    devices.back().insert(QString::fromUtf16(DeviceKey::product), product);
    table.announce(DeviceEvent::Published, devices.back());
  }

  void pullOut(const QString &path) {
    const auto found = std::ranges::find_if(devices, [&](const DeviceProperties &device) {
      return device.value(QString::fromUtf16(DeviceKey::calloutDevice)) == path;
    });
    const DeviceProperties device = *found;
    devices.erase(found);
    table.announce(DeviceEvent::Terminated, device);
  }

  /// A device handle as it comes out of a walk, owned by the caller.
  RegistryHandle handleOf(const QString &name, const QString &path) {
    const RegistryHandle walk = table.addWalk({describe(name, path)});
    const RegistryHandle device = table.next(walk);
    table.release(walk);
    return device;
  }

  RegistryHandle matchingServices(const DeviceMatch &) override { return table.addWalk(devices); }
  RegistryHandle next(RegistryHandle iterator) override { return table.next(iterator); }
  QString stringProperty(RegistryHandle device, const QString &key) const override {
    return table.property(device, key);
  }
  bool addMatchingNotification(DeviceEvent event, const DeviceMatch &, Callback callback, Context *context,
                               RegistryHandle &iterator) override {
    const auto present = event == DeviceEvent::Published ? devices : std::vector<DeviceProperties>();
    iterator = table.addWatch(event, present, std::move(callback), context);
    return event == DeviceEvent::Published ? canWatchPublished : canWatchTerminated;
  }
  void retain(RegistryHandle handle) override { table.retain(handle); }
  void release(RegistryHandle handle) override { table.release(handle); }

  std::vector<DeviceProperties> devices;
  RegistryTable table;
  bool canWatchPublished = true;
  bool canWatchTerminated = true;
};

}  // namespace tavril
