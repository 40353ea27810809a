#include "serial/PortIdentity.h"

#include "serial/SerialEnvironment.h"

#include <utility>

namespace tavril {

RegistryHandle PortIdentity::deviceFromBSDPath(const SerialEnvironment &environment, const QString &path) {
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

QString PortIdentity::stringPropertyOf(const SerialEnvironment &environment, RegistryHandle device,
                                       const QString &key) {
  return environment.devices.stringProperty(device, key);
}

QString PortIdentity::bsdCalloutPathFromDevice(const SerialEnvironment &environment, RegistryHandle device) {
  return stringPropertyOf(environment, device, QString::fromUtf16(DeviceKey::calloutDevice));
}

QString PortIdentity::bsdDialinPathFromDevice(const SerialEnvironment &environment, RegistryHandle device) {
  return stringPropertyOf(environment, device, QString::fromUtf16(DeviceKey::dialinDevice));
}

QString PortIdentity::baseNameFromDevice(const SerialEnvironment &environment, RegistryHandle device) {
  return stringPropertyOf(environment, device, QString::fromUtf16(DeviceKey::ttyBaseName));
}

QString PortIdentity::serviceTypeFromDevice(const SerialEnvironment &environment, RegistryHandle device) {
  return stringPropertyOf(environment, device, QString::fromUtf16(DeviceKey::clientType));
}

QString PortIdentity::modemNameFromDevice(const SerialEnvironment &environment, RegistryHandle device) {
  return stringPropertyOf(environment, device, QString::fromUtf16(DeviceKey::ttyDevice));
}

QString PortIdentity::suffixFromDevice(const SerialEnvironment &environment, RegistryHandle device) {
  return stringPropertyOf(environment, device, QString::fromUtf16(DeviceKey::ttySuffix));
}

PortIdentity::PortIdentity(const SerialEnvironment &environment, RegistryHandle device, QString path)
    : devices_(environment.devices), path_(std::move(path)), name_(modemNameFromDevice(environment, device)) {
  setIOKitDevice(device);
}

PortIdentity::~PortIdentity() {
  setIOKitDevice(0);
}

QString PortIdentity::path() const {
  const std::lock_guard lock(mutex_);
  return path_;
}

void PortIdentity::setPath(const QString &path) {
  const std::lock_guard lock(mutex_);
  path_ = path;
}

QString PortIdentity::name() const {
  const std::lock_guard lock(mutex_);
  return name_;
}

void PortIdentity::setName(const QString &name) {
  const std::lock_guard lock(mutex_);
  name_ = name;
}

RegistryHandle PortIdentity::IOKitDevice() const {
  const std::lock_guard lock(mutex_);
  return IOKitDevice_;
}

void PortIdentity::setIOKitDevice(RegistryHandle device) {
  if (device != 0) devices_.retain(device);  // first: it may be the one that is released
  RegistryHandle old = 0;
  {
    const std::lock_guard lock(mutex_);
    old = std::exchange(IOKitDevice_, device);
  }
  if (old != 0) devices_.release(old);
}

}  // namespace tavril
