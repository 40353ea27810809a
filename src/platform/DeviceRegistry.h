#pragma once

#include <QString>

#include <cstdint>
#include <functional>

namespace tavril {

/// Names a device, or a walk over devices, in the registry. The registry counts references: whoever receives
/// a handle releases it. 0 means none.
using RegistryHandle = std::uint32_t;

/// Keys of a serial device's properties. Kept: C38.
namespace DeviceKey {
inline constexpr char16_t calloutDevice[] = u"IOCalloutDevice";  ///< path of the node that is opened
inline constexpr char16_t dialinDevice[] = u"IODialinDevice";    ///< path of the dial-in node
inline constexpr char16_t ttyDevice[] = u"IOTTYDevice";          ///< name, such as "usbserial-ttyUSB0"
inline constexpr char16_t ttyBaseName[] = u"IOTTYBaseName";      ///< the name's beginning, "usbserial-"
inline constexpr char16_t ttySuffix[] = u"IOTTYSuffix";          ///< the name's end, "ttyUSB0"
inline constexpr char16_t clientType[] = u"IOSerialBSDClientType";
inline constexpr char16_t product[] = u"USB Product Name";
inline constexpr char16_t serialNumber[] = u"USB Serial Number";
inline constexpr char16_t vendorId[] = u"idVendor";    ///< four hexadecimal digits
inline constexpr char16_t productId[] = u"idProduct";  ///< four hexadecimal digits
inline constexpr char16_t driver[] = u"IOClass";       ///< the kernel driver, "ftdi_sio"
}  // namespace DeviceKey

/// The kind of devices: serial ones, the only kind that this program uses.
struct DeviceMatch {
  QString serviceClass = QStringLiteral("IOSerialBSDClient");
  QString clientType = QStringLiteral("IOSerialStream");
};

enum class DeviceEvent { Published, Terminated };

/// The machine's serial devices and their properties, and notifications of devices that come and go. Any
/// thread may call retain() and release().
class DeviceRegistry {
 public:
  /// Tells a callback for whom it is.
  class Context {
   public:
    virtual ~Context() = default;
    virtual QString description() const = 0;
  };
  using Callback = std::function<void(Context *context, RegistryHandle iterator)>;

  virtual ~DeviceRegistry() = default;

  /// A walk over the devices that are present; the caller releases it.
  virtual RegistryHandle matchingServices(const DeviceMatch &match) = 0;
  /// The next device of the walk, which the caller releases, or 0 at its end.
  virtual RegistryHandle next(RegistryHandle iterator) = 0;
  /// Null if the device has no such property.
  virtual QString stringProperty(RegistryHandle device, const QString &key) const = 0;

  /// Watches for devices that come (Published) or go (Terminated). The walk in `iterator` has those that are
  /// present (Published) or none (Terminated). Walking it to its end arms the watch. After that, the callback
  /// is called on the main thread with the same walk, filled again, and has to walk it to its end. The calls
  /// have the order in which devices came and went. Releasing the walk ends the watch. False if watching is
  /// not possible; `iterator` may then still need to be released.
  virtual bool addMatchingNotification(DeviceEvent event, const DeviceMatch &match, Callback callback,
                                       Context *context, RegistryHandle &iterator) = 0;

  virtual void retain(RegistryHandle handle) = 0;
  virtual void release(RegistryHandle handle) = 0;
};

}  // namespace tavril
