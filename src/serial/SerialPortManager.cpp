#include "serial/SerialPortManager.h"

#include "platform/Log.h"
#include "platform/MainQueue.h"
#include "platform/NotificationCenter.h"
#include "platform/ProcessExit.h"
#include "serial/SerialEnvironment.h"
#include "serial/SerialPort.h"

#include <algorithm>
#include <any>
#include <utility>

namespace tavril {

namespace {

const QString availablePortsKey = QStringLiteral("availablePorts");

/// The one manager. Not owned here, so that it goes with the application that holds it.
std::weak_ptr<SerialPortManager> &sharedInstance() {
  static std::weak_ptr<SerialPortManager> instance;
  return instance;
}

// Kept: C45.
void logUnexpectedContext(const SerialEnvironment &environment, const DeviceRegistry::Context *context,
                          const QString &function) {
  environment.log.warn(QStringLiteral("Unexpected context object %1 in %2. Context object should be an "
                                      "instance of SerialPortManager")
                           .arg(context ? context->description() : QStringLiteral("(null)"), function));
}

}  // namespace

std::shared_ptr<SerialPortManager> SerialPortManager::sharedSerialPortManager(
    const SerialEnvironment &environment) {
  if (auto existing = sharedInstance().lock()) return existing;
  auto manager = std::make_shared<SerialPortManager>(Token{}, environment);
  sharedInstance() = manager;
  manager->self_ = manager;
  manager->retrieveAvailablePortsAndRegisterForChangeNotifications();
  manager->registerForNotifications();
  return manager;
}

std::shared_ptr<SerialPortManager> SerialPortManager::alloc(const SerialEnvironment &environment) {
  return sharedSerialPortManager(environment);
}

std::shared_ptr<SerialPortManager> SerialPortManager::copy() {
  return self_.lock();
}

SerialPortManager::SerialPortManager(Token, const SerialEnvironment &environment)
    : environment_(environment) {}

SerialPortManager::~SerialPortManager() {
  environment_.notifications.removeObserver(this);
  for (const RegistryHandle iterator :
       {portPublishedNotificationIterator_, portTerminatedNotificationIterator_}) {
    if (iterator != 0) environment_.devices.release(iterator);
  }
}

// ------------------------------------------------------------------------------------ listing and watching

void SerialPortManager::retrieveAvailablePortsAndRegisterForChangeNotifications() {
  if (!arm(DeviceEvent::Published, portPublishedNotificationIterator_)) return;
  SerialPortList ports;
  while (const RegistryHandle device = environment_.devices.next(portPublishedNotificationIterator_)) {
    if (auto port = SerialPort::serialPortWithDevice(environment_, device)) ports.push_back(std::move(port));
    environment_.devices.release(device);
  }
  setAvailablePorts(ports);

  if (!arm(DeviceEvent::Terminated, portTerminatedNotificationIterator_)) return;
  while (const RegistryHandle device = environment_.devices.next(portTerminatedNotificationIterator_)) {
    environment_.devices.release(device);  // walked only to arm the watch
  }
}

bool SerialPortManager::arm(DeviceEvent event, RegistryHandle &iterator) {
  // The registry speaks from Qt's event loop, which runs on while an alert is up; the main queue does not.
  const auto callback = [&environment = environment_, weak = self_, event](DeviceRegistry::Context *context,
                                                                           RegistryHandle walk) {
    environment.mainQueue.async([&environment, weak, event, context, walk] {
      if (weak.expired()) return;
      if (event == DeviceEvent::Published) {
        SerialPortManagerPortsPublishedNotificationCallback(environment, context, walk);
      } else {
        SerialPortManagerPortsTerminatedNotificationCallback(environment, context, walk);
      }
    });
  };
  RegistryHandle armed = 0;
  if (!environment_.devices.addMatchingNotification(event, DeviceMatch{}, callback, this, armed)) {
    if (armed != 0) environment_.devices.release(armed);
    return false;
  }
  iterator = armed;
  return true;
}

void SerialPortManagerPortsPublishedNotificationCallback(const SerialEnvironment &environment,
                                                         DeviceRegistry::Context *context,
                                                         RegistryHandle iterator) {
  if (auto *manager = dynamic_cast<SerialPortManager *>(context)) {
    manager->serialPortsWerePublished(iterator);
    return;
  }
  logUnexpectedContext(
      environment, context,
      QStringLiteral("void SerialPortManagerPortsPublishedNotificationCallback(void *, io_iterator_t)"));
}

void SerialPortManagerPortsTerminatedNotificationCallback(const SerialEnvironment &environment,
                                                          DeviceRegistry::Context *context,
                                                          RegistryHandle iterator) {
  if (auto *manager = dynamic_cast<SerialPortManager *>(context)) {
    manager->serialPortsWereTerminated(iterator);
    return;
  }
  logUnexpectedContext(
      environment, context,
      QStringLiteral("void SerialPortManagerPortsTerminatedNotificationCallback(void *, io_iterator_t)"));
}

void SerialPortManager::serialPortsWerePublished(RegistryHandle iterator) {
  SerialPortList ports;
  while (const RegistryHandle device = environment_.devices.next(iterator)) {
    auto port = SerialPort::initWithDevice(environment_, device);
    const auto isThisPort = [&](const auto &other) { return other->isEqual(port.get()); };
    if (port) port->deviceWasPublished(device);
    if (port && !isAvailable(*port) && !std::ranges::any_of(ports, isThisPort)) ports.push_back(port);
    environment_.devices.release(device);
  }
  std::vector<std::size_t> indexes;
  for (std::size_t i = 0; i < ports.size(); ++i) indexes.push_back(availablePorts_.size() + i);
  insertAvailablePorts(ports, indexes);
  // Kept: C44.
  post(SerialPortsWereConnectedNotification, ConnectedSerialPortsKey, ports);
}

void SerialPortManager::serialPortsWereTerminated(RegistryHandle iterator) {
  SerialPortList ports;
  while (const RegistryHandle device = environment_.devices.next(iterator)) {
    if (auto port = SerialPort::initWithDevice(environment_, device)) ports.push_back(std::move(port));
    environment_.devices.release(device);
  }
  for (const auto &port : ports) port->deviceWasTerminated();

  std::vector<std::size_t> indexes;
  for (std::size_t i = 0; i < availablePorts_.size(); ++i) {
    const auto isThisPort = [&](const auto &gone) { return gone->isEqual(availablePorts_[i].get()); };
    if (std::ranges::any_of(ports, isThisPort)) indexes.push_back(i);
  }
  removeAvailablePortsAtIndexes(indexes);
  post(SerialPortsWereDisconnectedNotification, DisconnectedSerialPortsKey, ports);
}

bool SerialPortManager::isAvailable(const SerialPort &port) const {
  return std::ranges::any_of(availablePorts_, [&](const auto &other) { return other->isEqual(&port); });
}

void SerialPortManager::post(const char16_t *name, const char16_t *key, const SerialPortList &ports) {
  environment_.notifications.post(
      {QString::fromUtf16(name), this, {{QString::fromUtf16(key), std::any(ports)}}});
}

// ------------------------------------------------------------------------------------------- exit and sleep

void SerialPortManager::registerForNotifications() {
  const int error = environment_.processExit.registerHandler([weak = self_] {
    if (const auto manager = weak.lock()) manager->closeAllAtExit();
  });
  if (error != 0) {
    environment_.log.warn(
        QStringLiteral(
            "SerialPort was unable to register its termination handler for serial port cleanup: %1")
            .arg(error));
  }
}

void SerialPortManager::closeAllAtExit() {
  const SerialPortList ports = availablePorts_;
  for (const auto &port : ports) port->cleanupAfterSystemRemoval();
  setAvailablePorts({});
}

void SerialPortManager::systemWillSleep(const Notification &) {
  const SerialPortList ports = availablePorts_;  // which the delegates may change when they hear of it
  for (const auto &port : ports) {
    if (port->isOpen() && port->close()) portsToReopenAfterSleep_.push_back(port);
  }
}

void SerialPortManager::systemDidWake(const Notification &) {
  const SerialPortList ports = portsToReopenAfterSleep_;
  for (const auto &port : ports) {
    port->open();
    std::erase(portsToReopenAfterSleep_, port);
  }
}

// ---------------------------------------------------------------------------------------- list of the ports

KeyValueObservers::Token SerialPortManager::observe(const QString &key, KeyValueObservers::Handler handler) {
  return observers_.observe(key, std::move(handler));
}

void SerialPortManager::setAvailablePorts(const SerialPortList &ports) {
  if (ports == availablePorts_) return;
  availablePorts_ = ports;
  observers_.tell(availablePortsKey);
}

std::shared_ptr<SerialPort> SerialPortManager::objectInAvailablePortsAtIndex(std::size_t index) const {
  return index < availablePorts_.size() ? availablePorts_[index] : nullptr;
}

void SerialPortManager::insertAvailablePorts(const SerialPortList &ports,
                                             const std::vector<std::size_t> &indexes) {
  if (ports.empty()) return;
  for (std::size_t i = 0; i < ports.size(); ++i) {
    const auto at = static_cast<std::ptrdiff_t>(std::min(indexes.at(i), availablePorts_.size()));
    availablePorts_.insert(availablePorts_.begin() + at, ports[i]);
  }
  observers_.tell(availablePortsKey, {Change::Kind::Insertion, indexes});
}

void SerialPortManager::insertObjectInAvailablePortsAtIndex(const std::shared_ptr<SerialPort> &port,
                                                            std::size_t index) {
  insertAvailablePorts({port}, {index});
}

void SerialPortManager::removeAvailablePortsAtIndexes(const std::vector<std::size_t> &indexes) {
  if (indexes.empty()) return;
  SerialPortList kept;
  for (std::size_t i = 0; i < availablePorts_.size(); ++i) {
    if (std::ranges::find(indexes, i) == indexes.end()) kept.push_back(availablePorts_[i]);
  }
  availablePorts_ = std::move(kept);
  observers_.tell(availablePortsKey, {Change::Kind::Removal, indexes});
}

void SerialPortManager::removeObjectFromAvailablePortsAtIndex(std::size_t index) {
  removeAvailablePortsAtIndexes({index});
}

}  // namespace tavril
