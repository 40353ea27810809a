#pragma once

#include <QString>

#include <cstdint>
#include <functional>

namespace tavril {

/// Names one device, or one walk over devices, in the registry. Counted: what the registry hands out is owned
/// by the receiver, who releases it. 0 is none.
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

/// Which devices are wanted: serial stream devices, the only kind that this program knows.
struct DeviceMatch {
  QString serviceClass = QStringLiteral("IOSerialBSDClient");
  QString clientType = QStringLiteral("IOSerialStream");
};

enum class DeviceEvent { Published, Terminated };

/// The machine's serial devices, their properties, and word of those that come and go. Main thread only,
/// but for retain() and release(), which any thread may call.
class DeviceRegistry {
 public:
  /// What the callback is given back to tell whom it is for.
  class Context {
   public:
    virtual ~Context() = default;
    virtual QString description() const = 0;
  };
  using Callback = std::function<void(Context *context, RegistryHandle iterator)>;

  virtual ~DeviceRegistry() = default;

  /// A walk over the devices present now; the caller releases it.
  virtual RegistryHandle matchingServices(const DeviceMatch &match) = 0;
  /// The next device of the walk, owned by the caller, or 0 at its end.
  virtual RegistryHandle next(RegistryHandle iterator) = 0;
  /// Empty (null) when the device has no such property.
  virtual QString stringProperty(RegistryHandle device, const QString &key) const = 0;

  /// Watches for devices that come (Published) or go (Terminated). The walk that is handed out holds those
  /// present now (Published) or none (Terminated); walking it to its end arms the watch. From then on the
  /// callback is called on the main thread with the same walk, refilled; the walk is then walked to its end
  /// once for each call. Devices that come and go in turns are told in turns, so calls that are answered in
  /// their order, however late, tell all of it in order. Releasing the walk ends the watch. False when the
  /// watch cannot be had; `iterator` may then still need to be released.
  virtual bool addMatchingNotification(DeviceEvent event, const DeviceMatch &match, Callback callback,
                                       Context *context, RegistryHandle &iterator) = 0;

  virtual void retain(RegistryHandle handle) = 0;
  virtual void release(RegistryHandle handle) = 0;
};

}  // namespace tavril
