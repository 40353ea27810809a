#include "program/tavril/AppObjects.h"

#include "platform/linux/StringTables.h"
#include "protocol/HelpTables.h"

namespace tavril {

AppObjects::AppObjects(const AppServices &given, std::chrono::milliseconds startUp)
    : services(given),
      bridgeStartUp(startUp),
      language(services.strings, services.preferences, notifications, services.log, services.systemLanguages),
      desktop{services.mainQueue, services.timers, services.blockingWait,      services.alert,
              services.strings,   notifications,   services.userNotifications, services.log},
      errors(services.alert),
      store(services.files, desktop, errors),
      serial(services.mainQueue, services.terminal, services.devices, notifications, services.log,
             state.allSerialPortsInfo),
      application(AppDelegate::make(state, desktop, serial.environment, store, bridgeStartUp)) {
  buildHelpTables(state, services.log);
}

AppObjects::~AppObjects() {
  serial.closePorts();
  application.reset();
  serial.letPortsGo();
  state.SelectSerial.reset();
}

}  // namespace tavril
