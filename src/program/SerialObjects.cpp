#include "program/SerialObjects.h"

#include "platform/MainQueue.h"

namespace tavril {

SerialObjects::SerialObjects(MainQueue &mainQueue, TerminalCalls &terminal, DeviceRegistry &devices,
                             NotificationCenter &notifications, Log &log, PortRegistry::PortList &list)
    : list_(list), ports_(list), environment{mainQueue,     background,    terminal, devices,
                                             notifications, *processExit_, log,      ports_} {}

SerialObjects::~SerialObjects() {
  closePorts();
  letPortsGo();
}

void SerialObjects::closePorts() {
  processExit_.reset();
}

void SerialObjects::letPortsGo() {
  environment.mainQueue.shutDown();
  list_.clear();
}

}  // namespace tavril
