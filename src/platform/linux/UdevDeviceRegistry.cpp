#include "platform/linux/UdevDeviceRegistry.h"

#include "platform/Error.h"
#include "platform/linux/UdevTty.h"

#include <QFile>
#include <QObject>
#include <QSocketNotifier>

#include <libudev.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdlib>
#include <set>
#include <string_view>
#include <utility>

#include <sys/stat.h>

namespace tavril {
namespace {

constexpr int receiveBufferBytes = 1024 * 1024;
constexpr const char *terminalClass = "/sys/class/tty";

/// Serial stream devices are all that is kept here; of any other kind there are none.
bool isServed(const DeviceMatch &match) {
  const DeviceMatch served;
  return match.serviceClass == served.serviceClass && match.clientType == served.clientType;
}

bool isCharacterDevice(const std::string &path) {
  struct stat status {};
  return stat(path.c_str(), &status) == 0 && S_ISCHR(status.st_mode);
}

/// What hangs under no other device; what hangs under a virtual one is not there.
bool isInSoftwareOnly(const std::filesystem::path &place) {
  return place.parent_path() == "/sys/devices/virtual/tty";
}

/// The node of a device of this name, in which an exclamation mark stands for a slash.
QString nodeNamed(const std::filesystem::path &name) {
  return QStringLiteral("/dev/") + QFile::decodeName(name.c_str()).replace(u'!', u'/');
}

/// By what a device keeps as long as it is there.
bool isSameDevice(const DeviceProperties &one, const DeviceProperties &other) {
  constexpr std::array keys{+DeviceKey::calloutDevice, +DeviceKey::vendorId, +DeviceKey::productId,
                            +DeviceKey::serialNumber};
  return std::ranges::all_of(keys, [&](const char16_t *key) {
    return one.value(QString::fromUtf16(key)) == other.value(QString::fromUtf16(key));
  });
}

bool isIn(const std::map<std::string, DeviceProperties> &devices, const std::string &place,
          const DeviceProperties &properties) {
  const auto found = devices.find(place);
  return found != devices.end() && isSameDevice(found->second, properties);
}

QString nodeIn(const DeviceProperties &properties) {
  return properties.value(QString::fromUtf16(DeviceKey::calloutDevice));
}

QString because(const QString &path, const QString &reason) {
  return QStringLiteral("%1: %2").arg(path, reason);
}

}  // namespace

void UdevDeviceRegistry::UdevRelease::operator()(udev *object) const {
  udev_unref(object);
}

void UdevDeviceRegistry::UdevRelease::operator()(udev_device *object) const {
  udev_device_unref(object);
}

void UdevDeviceRegistry::UdevRelease::operator()(udev_monitor *object) const {
  udev_monitor_unref(object);
}

UdevDeviceRegistry::UdevDeviceRegistry() : udev_(udev_new()) {}

UdevDeviceRegistry::~UdevDeviceRegistry() = default;

std::optional<QString> UdevDeviceRegistry::addTerminal(const QString &path) {
  const std::unique_ptr<char, decltype(&std::free)> real(
      realpath(QFile::encodeName(path).constData(), nullptr), &std::free);
  struct stat status {};
  if (!real || stat(real.get(), &status) != 0) {
    return because(path, systemErrorText(errno));
  }
  if (!S_ISCHR(status.st_mode)) {
    return because(path, QStringLiteral("is not a terminal: not a character device"));
  }
  // Pseudo-terminals are unknown to udev; of all else it says what it is without our opening it.
  if (udev_) {
    const DevicePointer device(udev_device_new_from_devnum(udev_.get(), 'c', status.st_rdev));
    const char *subsystem = device ? udev_device_get_subsystem(device.get()) : nullptr;
    if (subsystem != nullptr && std::string_view(subsystem) != "tty") {
      return because(
          path,
          QStringLiteral("is not a terminal but a device of kind \"%1\"").arg(QString::fromUtf8(subsystem)));
    }
  }
  const QString node = QFile::decodeName(real.get());
  if (!namedNodes_.contains(node)) {
    namedNodes_.append(node);
    isListed_ = false;
  }
  return std::nullopt;
}

std::optional<DeviceProperties> UdevDeviceRegistry::describe(udev_device *device) const {
  const QString node = nodeOf(device);
  if (namedNodes_.contains(node)) return describeNamedTerminal(node, describeTerminal(device));
  if (!isSerialDevice(device)) return std::nullopt;
  return describeTerminal(device);
}

// Not by an enumeration of libudev's, which looks into each of the kernel's sixty-odd consoles for a hundred
// system calls' worth before it can be told that nobody wants them.
std::optional<std::vector<std::filesystem::path>> UdevDeviceRegistry::places() const {
  std::vector<std::filesystem::path> places;
  const std::filesystem::path folder(terminalClass);
  std::error_code error;
  for (std::filesystem::directory_iterator entry(folder, error), end; !error && entry != end;
       entry.increment(error)) {
    std::error_code gone;
    const auto target = std::filesystem::read_symlink(entry->path(), gone);
    if (gone) continue;
    auto place = (folder / target).lexically_normal();
    if (isInSoftwareOnly(place) && !namedNodes_.contains(nodeNamed(entry->path().filename()))) continue;
    places.push_back(std::move(place));
  }
  if (error) return std::nullopt;
  std::sort(places.begin(), places.end());
  return places;
}

std::optional<std::vector<UdevDeviceRegistry::Listed>> UdevDeviceRegistry::present() const {
  const auto places = udev_ ? this->places() : std::nullopt;
  if (!places) return std::nullopt;
  std::vector<Listed> devices;
  for (const std::filesystem::path &place : *places) {
    const DevicePointer device(udev_device_new_from_syspath(udev_.get(), place.c_str()));
    // A device may go between the two calls. One whose rules have not run yet has no permissions set; its
    // event follows.
    if (!device || udev_device_get_is_initialized(device.get()) == 0) continue;
    if (auto properties = describe(device.get())) {
      devices.push_back({udev_device_get_syspath(device.get()), *std::move(properties)});
    }
  }
  return devices;
}

std::vector<DeviceProperties> UdevDeviceRegistry::listing() {
  std::map<QString, DeviceProperties> named;
  std::vector<DeviceProperties> others;
  const auto devices = present();
  isListed_ = devices.has_value();
  for (const Listed &device : devices.value_or(std::vector<Listed>())) {
    // Only added to, never emptied here: a device that has just gone is needed until its event is read.
    known_.insert_or_assign(device.place, device.properties);
    const QString node = device.properties.value(QString::fromUtf16(DeviceKey::calloutDevice));
    if (namedNodes_.contains(node)) {
      named.emplace(node, device.properties);
    } else {
      others.push_back(device.properties);
    }
  }
  std::vector<DeviceProperties> all;
  for (const QString &node : namedNodes_) {
    if (const auto found = named.find(node); found != named.end()) {
      all.push_back(found->second);
    } else if (isCharacterDevice(QFile::encodeName(node).toStdString())) {
      all.push_back(describeNamedTerminal(node));
    }
  }
  all.insert(all.end(), others.begin(), others.end());
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
  if (!udev_) return false;
  // The kernel's own events come before the rules have set the node's permissions.
  std::unique_ptr<udev_monitor, UdevRelease> monitor(udev_monitor_new_from_netlink(udev_.get(), "udev"));
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
    const DevicePointer device(udev_monitor_receive_device(monitor_.get()));
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
    if (auto properties = describe(device)) {
      known_.insert_or_assign(place, *properties);
      table_.announce(DeviceEvent::Published, *properties);
    }
  } else if (action == "remove") {
    // The device's ancestors are gone by now, so that only memory tells what it was.
    if (const auto gone = known_.extract(place)) table_.announce(DeviceEvent::Terminated, gone.mapped());
  }
}

void UdevDeviceRegistry::reportDifferences() {
  auto devices = present();
  if (!devices) return;
  std::map<std::string, DeviceProperties> now;
  for (Listed &device : *devices) now.emplace(std::move(device.place), std::move(device.properties));
  const auto before = std::exchange(known_, now);
  // Those gone first: a device that came may have taken over the node of one that went.
  // And another adapter in the same socket has the place of the one before.
  std::set<QString> nodesGone;
  for (const auto &[place, properties] : before) {
    if (isIn(now, place, properties)) continue;
    table_.announce(DeviceEvent::Terminated, properties);
    nodesGone.insert(nodeIn(properties));
  }
  // A device may be known already that came to the node of one whose going was lost.
  for (const auto &[place, properties] : now) {
    if (isIn(before, place, properties) && !nodesGone.contains(nodeIn(properties))) continue;
    table_.announce(DeviceEvent::Published, properties);
  }
}

}  // namespace tavril
