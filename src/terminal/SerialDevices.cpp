#include "terminal/SerialDevices.h"

#include <libudev.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <string_view>
#include <system_error>
#include <utility>

#include <sys/stat.h>

namespace tavril {

namespace {

constexpr const char *terminalClass = "/sys/class/tty";

std::string textOf(const char *text) {
  return text == nullptr ? std::string() : text;
}

std::string propertyOf(udev_device *device, const char *name) {
  return textOf(udev_device_get_property_value(device, name));
}

/// The driver of the nearest ancestor that has one. Newer kernels put two devices of their own between a
/// built-in port and its hardware; the drivers of those say nothing.
std::string driverOf(udev_device *terminal) {
  for (udev_device *parent = udev_device_get_parent(terminal); parent != nullptr;
       parent = udev_device_get_parent(parent)) {
    std::string driver = textOf(udev_device_get_driver(parent));
    if (!driver.empty() && textOf(udev_device_get_subsystem(parent)) != "serial-base") return driver;
  }
  return {};
}

/// The 8250 driver makes ports under a platform device of its own for the addresses where older machines had
/// them; the kernel gives the type 0 to those at whose address nothing answered.
bool isPhantom(udev_device *terminal) {
  udev_device *platform = udev_device_get_parent_with_subsystem_devtype(terminal, "platform", nullptr);
  if (platform == nullptr || textOf(udev_device_get_driver(platform)) != "serial8250") return false;
  const std::string type = textOf(udev_device_get_sysattr_value(terminal, "type"));
  return type.find_first_of("123456789") == std::string::npos;
}

/// A terminal that the user named by its node: "/dev/pts/5" is "usbport-pts-5". `known`: what udev knows of
/// it beyond the name.
SerialDevice describeNamedTerminal(const std::string &node, SerialDevice known = {}) {
  constexpr std::string_view devices = "/dev/";
  known.node = node;
  known.baseName = "usbport-";
  known.suffix = node.substr(node.starts_with(devices) ? devices.size() : 1);
  std::ranges::replace(known.suffix, '/', '-');
  return known;
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
std::string nodeNamed(std::string name) {
  std::ranges::replace(name, '!', '/');
  return "/dev/" + name;
}

}  // namespace

void UdevRelease::operator()(udev *object) const {
  udev_unref(object);
}

void UdevRelease::operator()(udev_device *object) const {
  udev_device_unref(object);
}

void UdevRelease::operator()(udev_monitor *object) const {
  udev_monitor_unref(object);
}

std::string nodeOf(udev_device *terminal) {
  return textOf(udev_device_get_devnode(terminal));
}

bool isSerialDevice(udev_device *terminal) {
  // What exists in software only hangs under no other device.
  return !nodeOf(terminal).empty() && udev_device_get_parent(terminal) != nullptr && !isPhantom(terminal);
}

SerialDevice describeTerminal(udev_device *terminal) {
  SerialDevice device;
  device.node = nodeOf(terminal);
  device.suffix = textOf(udev_device_get_sysname(terminal));
  device.driver = driverOf(terminal);
  if (udev_device_get_parent_with_subsystem_devtype(terminal, "usb", "usb_device") == nullptr) {
    const std::string number = textOf(udev_device_get_sysnum(terminal));
    device.baseName = device.suffix.substr(0, device.suffix.size() - number.size());
    device.suffix = number;
    return device;
  }
  device.baseName = device.driver == "cdc_acm" ? "usbmodem-" : "usbserial-";
  device.product = propertyOf(terminal, "ID_MODEL");
  if (device.product.empty()) device.product = propertyOf(terminal, "ID_MODEL_FROM_DATABASE");
  device.serialNumber = propertyOf(terminal, "ID_SERIAL_SHORT");
  device.vendorId = propertyOf(terminal, "ID_VENDOR_ID");
  device.productId = propertyOf(terminal, "ID_MODEL_ID");
  return device;
}

SerialDevices::SerialDevices() : udev_(udev_new()) {}

std::optional<std::string> SerialDevices::addTerminal(const std::string &path) {
  const std::unique_ptr<char, decltype(&std::free)> real(realpath(path.c_str(), nullptr), &std::free);
  struct stat status {};
  if (!real || stat(real.get(), &status) != 0) {
    return path + ": " + std::generic_category().message(errno);
  }
  if (!S_ISCHR(status.st_mode)) return path + ": is not a terminal: not a character device";
  // Pseudo-terminals are unknown to udev; of all else it says what it is without our opening it.
  if (udev_) {
    const UdevDevice device(udev_device_new_from_devnum(udev_.get(), 'c', status.st_rdev));
    const char *subsystem = device ? udev_device_get_subsystem(device.get()) : nullptr;
    if (subsystem != nullptr && std::string_view(subsystem) != "tty") {
      return path + ": is not a terminal but a device of kind \"" + subsystem + "\"";
    }
  }
  if (!isNamed(real.get())) namedNodes_.emplace_back(real.get());
  return std::nullopt;
}

bool SerialDevices::isNamed(const std::string &node) const {
  return std::ranges::find(namedNodes_, node) != namedNodes_.end();
}

std::optional<SerialDevice> SerialDevices::describe(udev_device *device) const {
  const std::string node = nodeOf(device);
  if (isNamed(node)) return describeNamedTerminal(node, describeTerminal(device));
  if (!isSerialDevice(device)) return std::nullopt;
  return describeTerminal(device);
}

/// Where in sysfs the terminals are that may be listed, sorted. Nothing when it cannot be read.
// Not by an enumeration of libudev's, which looks into each of the kernel's sixty-odd consoles for a hundred
// system calls' worth before it can be told that nobody wants them.
std::optional<std::vector<std::filesystem::path>> SerialDevices::places() const {
  std::vector<std::filesystem::path> places;
  const std::filesystem::path folder(terminalClass);
  std::error_code error;
  for (std::filesystem::directory_iterator entry(folder, error), end; !error && entry != end;
       entry.increment(error)) {
    std::error_code gone;
    const auto target = std::filesystem::read_symlink(entry->path(), gone);
    if (gone) continue;
    auto place = (folder / target).lexically_normal();
    if (isInSoftwareOnly(place) && !isNamed(nodeNamed(entry->path().filename()))) continue;
    places.push_back(std::move(place));
  }
  if (error) return std::nullopt;
  std::sort(places.begin(), places.end());
  return places;
}

std::optional<std::vector<SerialDevices::Present>> SerialDevices::present() const {
  const auto places = udev_ ? this->places() : std::nullopt;
  if (!places) return std::nullopt;
  std::vector<Present> devices;
  for (const std::filesystem::path &place : *places) {
    const UdevDevice device(udev_device_new_from_syspath(udev_.get(), place.c_str()));
    // A device may go between the two calls. One whose rules have not run yet has no permissions set; its
    // event follows.
    if (!device || udev_device_get_is_initialized(device.get()) == 0) continue;
    if (auto described = describe(device.get())) {
      devices.push_back({udev_device_get_syspath(device.get()), *std::move(described)});
    }
  }
  return devices;
}

std::vector<SerialDevice> SerialDevices::list() const {
  return listOf(present().value_or(std::vector<Present>()));
}

std::vector<SerialDevice> SerialDevices::listOf(const std::vector<Present> &devices) const {
  std::vector<SerialDevice> all;
  for (const std::string &node : namedNodes_) {
    const auto known =
        std::ranges::find_if(devices, [&](const Present &present) { return present.device.node == node; });
    if (known != devices.end()) {
      all.push_back(known->device);
    } else if (isCharacterDevice(node)) {
      all.push_back(describeNamedTerminal(node));
    }
  }
  for (const Present &present : devices) {
    if (!isNamed(present.device.node)) all.push_back(present.device);
  }
  return all;
}

}  // namespace tavril
