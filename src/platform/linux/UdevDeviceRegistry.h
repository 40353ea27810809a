#pragma once

#include "platform/DeviceRegistry.h"
#include "platform/linux/RegistryTable.h"

#include <QString>
#include <QStringList>

#include <filesystem>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

class QSocketNotifier;
struct udev;
struct udev_device;
struct udev_monitor;

namespace tavril {

/// The machine's serial devices as udev knows them, and the terminals that the user named. No device is ever
/// opened here: opening raises DTR, which resets many bridges. Needs an event loop for word of changes.
class UdevDeviceRegistry : public DeviceRegistry {
 public:
  UdevDeviceRegistry();
  ~UdevDeviceRegistry() override;
  UdevDeviceRegistry(const UdevDeviceRegistry &) = delete;
  UdevDeviceRegistry &operator=(const UdevDeviceRegistry &) = delete;

  /// Puts a terminal of any kind (links are followed) behind those added before and in front of all others,
  /// in every walk made from now on, as long as it exists. Gives the reason, for the user to read, when there
  /// is no terminal at this path. Naming one twice is no error.
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
  struct UdevRelease {
    void operator()(udev *object) const;
    void operator()(udev_device *object) const;
    void operator()(udev_monitor *object) const;
  };
  using DevicePointer = std::unique_ptr<udev_device, UdevRelease>;
  /// Devices by their place in the kernel's tree, in udev's order.
  struct Listed {
    std::string place;
    DeviceProperties properties;
  };

  /// Where in sysfs the terminals are that may be listed, sorted. Nothing when it cannot be read.
  std::optional<std::vector<std::filesystem::path>> places() const;
  /// The devices present now that udev knows. Nothing when that cannot be found out.
  std::optional<std::vector<Listed>> present() const;
  /// What a walk over all devices holds.
  std::vector<DeviceProperties> listing();
  /// Nothing for a device that is not to be listed.
  std::optional<DeviceProperties> describe(udev_device *device) const;
  bool startMonitor();
  void receiveEvents();
  void handleEvent(udev_device *device);
  void reportDifferences();

  std::unique_ptr<udev, UdevRelease> udev_;
  std::unique_ptr<udev_monitor, UdevRelease> monitor_;
  std::unique_ptr<QSocketNotifier> notifier_;
  QStringList namedNodes_;
  std::map<std::string, DeviceProperties> known_;
  /// Whether known_ has all that was there when the monitor began.
  bool isListed_ = false;
  RegistryTable table_;
};

}  // namespace tavril
