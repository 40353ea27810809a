#include "serial/SerialPort.h"

// The class-level look-ups of a port's device, apart from the port's own life.

#include "serial/SerialEnvironment.h"

#include <QString>

namespace tavril {

RegistryHandle SerialPort::deviceFromBSDPath(const SerialEnvironment &environment, const QString &path) {
  if (path.isEmpty()) return 0;
  DeviceRegistry &devices = environment.devices;
  const RegistryHandle iterator = devices.matchingServices(DeviceMatch{});
  if (iterator == 0) return 0;
  RegistryHandle found = 0;
  while (const RegistryHandle device = devices.next(iterator)) {
    const bool matches = found == 0 && (bsdCalloutPathFromDevice(environment, device) == path ||
                                        bsdDialinPathFromDevice(environment, device) == path);
    if (matches) {
      found = device;
    } else {
      devices.release(device);
    }
  }
  devices.release(iterator);
  return found;
}

QString SerialPort::stringPropertyOf(const SerialEnvironment &environment, RegistryHandle device,
                                     const QString &key) {
  return environment.devices.stringProperty(device, key);
}

QString SerialPort::bsdCalloutPathFromDevice(const SerialEnvironment &environment, RegistryHandle device) {
  return stringPropertyOf(environment, device, QString::fromUtf16(DeviceKey::calloutDevice));
}

QString SerialPort::bsdDialinPathFromDevice(const SerialEnvironment &environment, RegistryHandle device) {
  return stringPropertyOf(environment, device, QString::fromUtf16(DeviceKey::dialinDevice));
}

QString SerialPort::baseNameFromDevice(const SerialEnvironment &environment, RegistryHandle device) {
  return stringPropertyOf(environment, device, QString::fromUtf16(DeviceKey::ttyBaseName));
}

QString SerialPort::serviceTypeFromDevice(const SerialEnvironment &environment, RegistryHandle device) {
  return stringPropertyOf(environment, device, QString::fromUtf16(DeviceKey::clientType));
}

QString SerialPort::modemNameFromDevice(const SerialEnvironment &environment, RegistryHandle device) {
  return stringPropertyOf(environment, device, QString::fromUtf16(DeviceKey::ttyDevice));
}

QString SerialPort::suffixFromDevice(const SerialEnvironment &environment, RegistryHandle device) {
  return stringPropertyOf(environment, device, QString::fromUtf16(DeviceKey::ttySuffix));
}

}  // namespace tavril
