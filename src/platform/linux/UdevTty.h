#pragma once

#include "platform/linux/RegistryTable.h"

#include <QString>

#include <optional>

struct udev_device;

namespace tavril {

/// The node that a terminal is opened by, "/dev/ttyUSB0"; empty when it has none.
QString nodeOf(udev_device *terminal);

/// Whether hardware of its own stands behind this terminal: neither a pseudo-terminal nor a virtual console
/// nor one of the ports that a driver makes in advance for hardware that may not be there.
bool isSerialDevice(udev_device *terminal);

/// What the registry tells of a terminal that udev knows, named after what kind of device it is.
DeviceProperties describeTerminal(udev_device *terminal);

/// What the registry tells of a terminal that the user named by its node: "/dev/pts/5" is "usbport-pts-5".
/// What udev knows of it beyond the name, if anything, is in `known`.
DeviceProperties describeNamedTerminal(const QString &node, DeviceProperties known = {});

}  // namespace tavril
