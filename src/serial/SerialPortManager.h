#pragma once

#include "platform/DeviceRegistry.h"
#include "platform/KeyValueObservers.h"

#include <QString>

#include <cstddef>
#include <memory>
#include <vector>

namespace tavril {

class SerialPort;
struct Notification;
struct SerialEnvironment;

using SerialPortList = std::vector<std::shared_ptr<SerialPort>>;

// Kept: C41.
inline constexpr char16_t SerialPortsWereConnectedNotification[] = u"SerialPortWasConnectedNotification";
inline constexpr char16_t SerialPortsWereDisconnectedNotification[] =
    u"SerialPortWasDisconnectedNotification";
inline constexpr char16_t ConnectedSerialPortsKey[] = u"ConnectedSerialPortsKey";
inline constexpr char16_t DisconnectedSerialPortsKey[] = u"DisconnectedSerialPortsKey";

/// Knows which serial devices are present, keeps that list current as they come and go, announces each change
/// through the notification centre, and closes every port when the process exits. One per process. Main
/// thread.
class SerialPortManager final : public DeviceRegistry::Context {
  struct Token {};

 public:
  /// The one manager; made on first use, and anew only when nobody held the last one any more.
  static std::shared_ptr<SerialPortManager> sharedSerialPortManager(const SerialEnvironment &environment);
  /// Both give the shared manager. Kept: C43.
  static std::shared_ptr<SerialPortManager> alloc(const SerialEnvironment &environment);
  std::shared_ptr<SerialPortManager> copy();

  SerialPortManager(Token, const SerialEnvironment &environment);
  ~SerialPortManager() override;
  SerialPortManager(const SerialPortManager &) = delete;
  SerialPortManager &operator=(const SerialPortManager &) = delete;

  /// Every device present, equal ports (by path) only once. Observable as "availablePorts".
  const SerialPortList &availablePorts() const { return availablePorts_; }
  void setAvailablePorts(const SerialPortList &ports);
  std::size_t countOfAvailablePorts() const { return availablePorts_.size(); }
  /// Nothing for an index past the end.
  std::shared_ptr<SerialPort> objectInAvailablePortsAtIndex(std::size_t index) const;
  /// `indexes` are those of the ports once inserted, ascending.
  void insertAvailablePorts(const SerialPortList &ports, const std::vector<std::size_t> &indexes);
  void insertObjectInAvailablePortsAtIndex(const std::shared_ptr<SerialPort> &port, std::size_t index);
  void removeAvailablePortsAtIndexes(const std::vector<std::size_t> &indexes);
  void removeObjectFromAvailablePortsAtIndex(std::size_t index);
  [[nodiscard]] KeyValueObservers::Token observe(const QString &key, KeyValueObservers::Handler handler);

  /// Handle the devices in the walk: they have just come, or just gone.
  void serialPortsWerePublished(RegistryHandle iterator);
  void serialPortsWereTerminated(RegistryHandle iterator);

  /// Close the open ports, and open those again. Kept: C42.
  void systemWillSleep(const Notification &notification);
  void systemDidWake(const Notification &notification);

  QString description() const override { return QStringLiteral("<SerialPortManager>"); }

 private:
  void retrieveAvailablePortsAndRegisterForChangeNotifications();
  bool arm(DeviceEvent event, RegistryHandle &iterator);
  void registerForNotifications();
  void closeAllAtExit();
  bool isAvailable(const SerialPort &port) const;
  void post(const char16_t *name, const char16_t *key, const SerialPortList &ports);

  const SerialEnvironment &environment_;
  SerialPortList availablePorts_;
  SerialPortList portsToReopenAfterSleep_;
  RegistryHandle portPublishedNotificationIterator_ = 0;
  RegistryHandle portTerminatedNotificationIterator_ = 0;
  std::weak_ptr<SerialPortManager> self_;
  KeyValueObservers observers_;
};

/// Called by the device registry; a context that is no manager is logged and ignored.
void SerialPortManagerPortsPublishedNotificationCallback(const SerialEnvironment &environment,
                                                         DeviceRegistry::Context *context,
                                                         RegistryHandle iterator);
void SerialPortManagerPortsTerminatedNotificationCallback(const SerialEnvironment &environment,
                                                          DeviceRegistry::Context *context,
                                                          RegistryHandle iterator);

}  // namespace tavril
