#pragma once

#include "platform/DeviceRegistry.h"
#include "platform/NamedDevice.h"

#include <QHashFunctions>
#include <QString>

#include <cstddef>
#include <mutex>

namespace tavril {

struct SerialEnvironment;

/// Which device a port is: its path, its name and its entry in the device registry, and how these are found.
/// Thread-safe.
class PortIdentity : public NamedDevice {
 public:
  /// The device with this call-out or dial-in path, owned by the caller; 0 when there is none.
  static RegistryHandle deviceFromBSDPath(const SerialEnvironment &environment, const QString &path);
  static QString stringPropertyOf(const SerialEnvironment &environment, RegistryHandle device,
                                  const QString &key);
  static QString bsdCalloutPathFromDevice(const SerialEnvironment &environment, RegistryHandle device);
  static QString bsdDialinPathFromDevice(const SerialEnvironment &environment, RegistryHandle device);
  static QString baseNameFromDevice(const SerialEnvironment &environment, RegistryHandle device);
  static QString serviceTypeFromDevice(const SerialEnvironment &environment, RegistryHandle device);
  static QString modemNameFromDevice(const SerialEnvironment &environment, RegistryHandle device);
  static QString suffixFromDevice(const SerialEnvironment &environment, RegistryHandle device);

  PortIdentity(const PortIdentity &) = delete;
  PortIdentity &operator=(const PortIdentity &) = delete;

  QString path() const;
  void setPath(const QString &path);
  QString name() const override;
  void setName(const QString &name);
  RegistryHandle IOKitDevice() const;
  /// Releases the old handle and retains the new one.
  void setIOKitDevice(RegistryHandle device);
  QString description() const { return name(); }
  std::size_t hash() const { return qHash(path()); }
  /// Ports of the same path are equal.
  bool isEqual(const PortIdentity *other) const { return other && other->path() == path(); }

 protected:
  PortIdentity(const SerialEnvironment &environment, RegistryHandle device, QString path);
  ~PortIdentity() override;

 private:
  DeviceRegistry &devices_;
  mutable std::mutex mutex_;
  QString path_;
  QString name_;
  RegistryHandle IOKitDevice_ = 0;
};

}  // namespace tavril
