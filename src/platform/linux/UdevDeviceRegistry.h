#pragma once

#include "platform/DeviceRegistry.h"
#include "platform/linux/RegistryTable.h"
#include "terminal/SerialDevices.h"

#include <QString>

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

class QSocketNotifier;
struct udev_device;
struct udev_monitor;

namespace tavril {

/// The serial devices of terminal/SerialDevices as a registry that tells of changes, for which it needs an
/// event loop.
class UdevDeviceRegistry : public DeviceRegistry {
 public:
  UdevDeviceRegistry();
  ~UdevDeviceRegistry() override;
  UdevDeviceRegistry(const UdevDeviceRegistry &) = delete;
  UdevDeviceRegistry &operator=(const UdevDeviceRegistry &) = delete;

  /// As SerialDevices::addTerminal(), for every walk made from now on.
  [[nodiscard]] std::optional<QString> addTerminal(const QString &path);

  RegistryHandle matchingServices(const DeviceMatch &match) override;
  RegistryHandle next(RegistryHandle iterator) override;
  QString stringProperty(RegistryHandle device, const QString &key) const override;
  /// Comings and goings of terminals that udev does not know (pseudo-terminals) are not told.
  bool addMatchingNotification(DeviceEvent event, const DeviceMatch &match, Callback callback,
                               Context *context, RegistryHandle &iterator) override;
  void retain(RegistryHandle handle) override;
  void release(RegistryHandle handle) override;

 private:
  /// What a walk over all devices holds.
  std::vector<DeviceProperties> listing();
  bool startMonitor();
  void receiveEvents();
  void handleEvent(udev_device *device);
  void reportDifferences();

  SerialDevices devices_;
  std::unique_ptr<udev_monitor, UdevRelease> monitor_;
  std::unique_ptr<QSocketNotifier> notifier_;
  std::map<std::string, SerialDevice> known_;
  /// Whether known_ has all that was there when the monitor began.
  bool isListed_ = false;
  RegistryTable table_;
};

}  // namespace tavril
