#pragma once

#include "app/AppDelegate.h"
#include "bench/PortHouse.h"
#include "platform/AlertErrorPresenter.h"
#include "platform/Desktop.h"
#include "platform/PlainElement.h"
#include "platform/linux/PosixPrivateFiles.h"
#include "platform/linux/QtTimers.h"
#include "protocol/Function.h"
#include "protocol/RegisterCatalogue.h"
#include "protocol/SharedState.h"
#include "tests/support/AnsweringAlert.h"
#include "tests/support/KeyTable.h"
#include "tests/support/RecordingWait.h"

#include <map>

namespace tavril::bench {

/// The link without a window: real queue, timers, threads and terminal. Waits are left out, for a bridge that
/// needs none.
struct LinkHouse {
  explicit LinkHouse(const QString &path, TerminalCalls *emulated = nullptr) : ports(emulated) {
    for (const RegisterRow &row : registerCatalogue()) elements[row.valueKey.toString()];
    for (const char *key : {"TXcmd", "RXcmd", "errormsg", "ConnectStatus", "ContrainerView_WaitView"}) {
      elements[QString::fromLatin1(key)];
    }
    for (auto &[key, element] : elements) state.ObjectDictionaryArray.set(key, element);
    if (!path.isEmpty()) ports.devices.add(QStringLiteral("usbport-bench"), path);
    application->applicationDidFinishLaunching();
  }
  ~LinkHouse() {
    if (const auto port = application->serialPort()) {
      port->setDelegate({});
      port->close();
    }
    application.reset();
    ports.mainQueue.shutDown();
    state.SelectSerial.reset();
    state.allSerialPortsInfo.clear();
  }

  PortHouse ports;
  SharedState state;
  PortRegistry registry{state.allSerialPortsInfo};
  SerialEnvironment serial{ports.mainQueue,     ports.background,  ports.terminal, ports.devices,
                           ports.notifications, ports.processExit, ports.log,      registry};
  std::map<QString, PlainElement> elements;
  QtTimers timers{ports.mainQueue};
  RecordingWait wait;
  AnsweringAlert alert;
  KeyTable strings;
  Desktop desktop{ports.mainQueue, timers, wait, alert, strings, ports.notifications, nullptr, ports.log};
  PosixPrivateFiles files;
  AlertErrorPresenter errors{alert};
  StoreController store{files, desktop, errors};
  std::shared_ptr<AppDelegate> application =
      AppDelegate::make(state, desktop, serial, store, std::chrono::milliseconds(0));
};

}  // namespace tavril::bench
