#pragma once

#include "serial/SerialPortManager.h"
#include "tests/support/SerialBench.h"

#include <gtest/gtest.h>

#include <any>
#include <memory>
#include <vector>

namespace tavril {

/// The manager over fake devices, and what it posts. Devices that are there from the beginning are added
/// before start().
class SerialPortManagerOnBench : public testing::Test {
 protected:
  void start() {
    manager = SerialPortManager::sharedSerialPortManager(bench.environment);
    for (const char16_t *name :
         {SerialPortsWereConnectedNotification, SerialPortsWereDisconnectedNotification}) {
      bench.notifications.addObserver(this, QString::fromUtf16(name),
                                      [this](const Notification &notification) {
                                        posted.append(notification.name);
                                        lastPosted = notification;
                                        delegateEventsAtPost = delegate->events;
                                      });
    }
    token = manager->observe("availablePorts", [this](const Change &change) { changes.push_back(change); });
  }
  ~SerialPortManagerOnBench() override {
    bench.notifications.removeObserver(this);
    for (const auto &port : bench.allSerialPortsInfo) {
      port->setDelegate({});
      port->close();
    }
    manager.reset();
  }

  SerialPortList postedPorts(const char *key) const {
    return std::any_cast<SerialPortList>(lastPosted.userInfo.value(QString::fromLatin1(key)));
  }
  QStringList available() const {
    QStringList names;
    for (const auto &port : manager->availablePorts()) names.append(port->name());
    return names;
  }

  SerialBench<> bench;
  std::shared_ptr<SerialPortManager> manager;
  std::shared_ptr<RecordingDelegate> delegate = std::make_shared<RecordingDelegate>();
  QStringList posted;
  Notification lastPosted;
  QStringList delegateEventsAtPost;
  std::vector<Change> changes;
  KeyValueObservers::Token token;
};

}  // namespace tavril
