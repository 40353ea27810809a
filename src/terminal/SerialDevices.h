#pragma once

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

struct udev;
struct udev_device;
struct udev_monitor;

namespace tavril {

struct UdevRelease {
  void operator()(udev *object) const;
  void operator()(udev_device *object) const;
  void operator()(udev_monitor *object) const;
};
using UdevDevice = std::unique_ptr<udev_device, UdevRelease>;

/// A terminal with what the system tells of it, as UTF-8; empty where it tells nothing. The device itself may
/// have chosen its texts, control characters included.
struct SerialDevice {
  std::string node;      ///< the path by which it is opened, "/dev/ttyUSB0"
  std::string baseName;  ///< the beginning of its name, which says what kind it is: "usbserial-"
  std::string suffix;    ///< the end of its name, "ttyUSB0"
  std::string product;
  std::string serialNumber;
  std::string vendorId;   ///< four hexadecimal digits
  std::string productId;  ///< four hexadecimal digits
  std::string driver;     ///< the kernel driver, "ftdi_sio"

  std::string name() const { return baseName + suffix; }
};

/// The node that a terminal is opened by, "/dev/ttyUSB0"; empty when it has none.
std::string nodeOf(udev_device *terminal);

/// Whether hardware of its own stands behind this terminal: neither a pseudo-terminal nor a virtual console
/// nor one of the ports that a driver makes in advance for hardware that may not be there.
bool isSerialDevice(udev_device *terminal);

/// What udev knows of a terminal, named after what kind of device it is.
SerialDevice describeTerminal(udev_device *terminal);

/// The machine's serial devices as udev knows them, and the terminals that the user named. No device is ever
/// opened here: opening raises DTR, which resets many bridges. For one thread.
class SerialDevices {
 public:
  SerialDevices();

  /// Puts a terminal of any kind (links are followed) behind those added before and in front of all others,
  /// as long as it exists. Gives the reason, for the user to read, when there is no terminal at this path.
  /// Naming one twice is no error.
  [[nodiscard]] std::optional<std::string> addTerminal(const std::string &path);

  /// The devices present now.
  std::vector<SerialDevice> list() const;

  /// A device and its place in the kernel's tree.
  struct Present {
    std::string place;
    SerialDevice device;
  };
  /// The devices present now that udev knows, by their places. Nothing when that cannot be found out.
  std::optional<std::vector<Present>> present() const;
  /// What list() makes of these: those that the user named come first, and some that udev does not know.
  std::vector<SerialDevice> listOf(const std::vector<Present> &devices) const;
  /// Nothing for a device that is not to be listed.
  std::optional<SerialDevice> describe(udev_device *device) const;

  /// Null when there is none.
  udev *context() const { return udev_.get(); }

 private:
  std::optional<std::vector<std::filesystem::path>> places() const;
  bool isNamed(const std::string &node) const;

  std::unique_ptr<udev, UdevRelease> udev_;
  std::vector<std::string> namedNodes_;
};

}  // namespace tavril
