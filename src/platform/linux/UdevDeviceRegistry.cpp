#include "platform/linux/UdevDeviceRegistry.h"

#include "platform/PrintableText.h"

#include <QFile>
#include <QObject>
#include <QSocketNotifier>

#include <libudev.h>

#include <cerrno>
#include <set>
#include <string_view>
#include <utility>

namespace tavril {
namespace {

constexpr int receiveBufferBytes = 1024 * 1024;

/// Serial stream devices are all that is kept here; of any other kind there are none.
bool isServed(const DeviceMatch &match) {
  const DeviceMatch served;
  return match.serviceClass == served.serviceClass && match.clientType == served.clientType;
}

/// By what a device keeps as long as it is there.
bool isSameDevice(const SerialDevice &one, const SerialDevice &other) {
  return one.node == other.node && one.vendorId == other.vendorId && one.productId == other.productId &&
         one.serialNumber == other.serialNumber;
}

bool isIn(const std::map<std::string, SerialDevice> &devices, const std::string &place,
          const SerialDevice &device) {
  const auto found = devices.find(place);
  return found != devices.end() && isSameDevice(found->second, device);
}

DeviceProperties propertiesOf(const SerialDevice &device) {
  DeviceProperties properties;
  const auto set = [&](const char16_t *key, const std::string &value) {
    if (!value.empty()) {
      properties.insert(QString::fromUtf16(key), printableText(QString::fromStdString(value)));
    }
  };
  set(DeviceKey::product, device.product);
  set(DeviceKey::serialNumber, device.serialNumber);
  set(DeviceKey::vendorId, device.vendorId);
  set(DeviceKey::productId, device.productId);
  set(DeviceKey::driver, device.driver);
  // These are there even if they are empty, and a path is not changed.
  const auto setName = [&](const char16_t *key, const std::string &value) {
    properties.insert(QString::fromUtf16(key), QString::fromStdString(value));
  };
  setName(DeviceKey::calloutDevice, device.node);
  setName(DeviceKey::dialinDevice, device.node);
  setName(DeviceKey::ttyDevice, device.name());
  setName(DeviceKey::ttyBaseName, device.baseName);
  setName(DeviceKey::ttySuffix, device.suffix);
  setName(DeviceKey::clientType, "IOSerialStream");
  return properties;
}

}  // namespace

UdevDeviceRegistry::UdevDeviceRegistry() = default;

UdevDeviceRegistry::~UdevDeviceRegistry() = default;

std::optional<QString> UdevDeviceRegistry::addTerminal(const QString &path) {
  const auto reason = devices_.addTerminal(QFile::encodeName(path).toStdString());
  if (reason) return QString::fromStdString(*reason);
  isListed_ = false;
  return std::nullopt;
}

std::vector<DeviceProperties> UdevDeviceRegistry::listing() {
  const auto devices = devices_.present();
  isListed_ = devices.has_value();
  // Only added to, never emptied here: a device that has just gone is needed until its event is read.
  if (devices) {
    for (const auto &[place, device] : *devices) known_.insert_or_assign(place, device);
  }
  std::vector<DeviceProperties> all;
  for (const SerialDevice &device :
       devices_.listOf(devices.value_or(std::vector<SerialDevices::Present>()))) {
    all.push_back(propertiesOf(device));
  }
  return all;
}

RegistryHandle UdevDeviceRegistry::matchingServices(const DeviceMatch &match) {
  return table_.addWalk(isServed(match) ? listing() : std::vector<DeviceProperties>());
}

RegistryHandle UdevDeviceRegistry::next(RegistryHandle iterator) {
  return table_.next(iterator);
}

QString UdevDeviceRegistry::stringProperty(RegistryHandle device, const QString &key) const {
  return table_.property(device, key);
}

bool UdevDeviceRegistry::addMatchingNotification(DeviceEvent event, const DeviceMatch &match,
                                                 Callback callback, Context *context,
                                                 RegistryHandle &iterator) {
  iterator = 0;
  // Before the listing, so that a device that comes in between is told rather than missed.
  if (!startMonitor()) return false;
  if (!isServed(match)) {
    iterator = table_.addWalk({});
    return true;
  }
  // Who waits for devices to go needs them known, and any listing since the monitor began has seen to that.
  const bool tellsPresent = event == DeviceEvent::Published;
  const auto devices = tellsPresent || !isListed_ ? listing() : std::vector<DeviceProperties>();
  iterator = table_.addWatch(event, tellsPresent ? devices : std::vector<DeviceProperties>(),
                             std::move(callback), context);
  return true;
}

void UdevDeviceRegistry::retain(RegistryHandle handle) {
  table_.retain(handle);
}

void UdevDeviceRegistry::release(RegistryHandle handle) {
  table_.release(handle);
}

bool UdevDeviceRegistry::startMonitor() {
  if (monitor_) return true;
  if (!devices_.context()) return false;
  // The kernel's own events come before the rules have set the node's permissions.
  std::unique_ptr<udev_monitor, UdevRelease> monitor(
      udev_monitor_new_from_netlink(devices_.context(), "udev"));
  if (!monitor || udev_monitor_filter_add_match_subsystem_devtype(monitor.get(), "tty", nullptr) < 0) {
    return false;
  }
  // Without the right to a large buffer the system's default serves: an overflow is made good anyway.
  udev_monitor_set_receive_buffer_size(monitor.get(), receiveBufferBytes);
  if (udev_monitor_enable_receiving(monitor.get()) < 0) return false;
  // What was listed while nobody watched may have gone unseen.
  known_.clear();
  isListed_ = false;
  monitor_ = std::move(monitor);
  notifier_ = std::make_unique<QSocketNotifier>(udev_monitor_get_fd(monitor_.get()), QSocketNotifier::Read);
  QObject::connect(notifier_.get(), &QSocketNotifier::activated, [this] { receiveEvents(); });
  return true;
}

void UdevDeviceRegistry::receiveEvents() {
  bool haveSomeBeenLost = false;
  for (;;) {
    errno = 0;
    const UdevDevice device(udev_monitor_receive_device(monitor_.get()));
    if (device) {
      handleEvent(device.get());
    } else if (errno == ENOBUFS) {
      // The kernel says so before it hands over what is still queued, which is older than what was lost.
      haveSomeBeenLost = true;
    } else if (errno != EINTR) {
      break;
    }
  }
  if (haveSomeBeenLost) reportDifferences();
}

void UdevDeviceRegistry::handleEvent(udev_device *device) {
  const char *const actionText = udev_device_get_action(device);
  const std::string_view action = actionText == nullptr ? "" : actionText;
  const std::string place = udev_device_get_syspath(device);
  if (action == "add") {
    if (const auto come = devices_.describe(device)) {
      known_.insert_or_assign(place, *come);
      table_.announce(DeviceEvent::Published, propertiesOf(*come));
    }
  } else if (action == "remove") {
    // The device's ancestors are gone by now, so that only memory tells what it was.
    if (const auto gone = known_.extract(place)) {
      table_.announce(DeviceEvent::Terminated, propertiesOf(gone.mapped()));
    }
  }
}

void UdevDeviceRegistry::reportDifferences() {
  auto devices = devices_.present();
  if (!devices) return;
  std::map<std::string, SerialDevice> now;
  for (auto &[place, device] : *devices) now.emplace(std::move(place), std::move(device));
  const auto before = std::exchange(known_, now);
  // Those gone first: a device that came may have taken over the node of one that went.
  // And another adapter in the same socket has the place of the one before.
  std::set<std::string> nodesGone;
  for (const auto &[place, device] : before) {
    if (isIn(now, place, device)) continue;
    table_.announce(DeviceEvent::Terminated, propertiesOf(device));
    nodesGone.insert(device.node);
  }
  // A device may be known already that came to the node of one whose going was lost.
  for (const auto &[place, device] : now) {
    if (isIn(before, place, device) && !nodesGone.contains(device.node)) continue;
    table_.announce(DeviceEvent::Published, propertiesOf(device));
  }
}

}  // namespace tavril
