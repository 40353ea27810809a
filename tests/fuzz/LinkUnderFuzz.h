#pragma once

#include "app/AppDelegate.h"
#include "protocol/SharedState.h"
#include "store/AlertErrorPresenter.h"
#include "store/StoreController.h"
#include "tests/fuzz/Invariant.h"
#include "tests/support/ManualBackground.h"
#include "tests/support/MemoryFiles.h"
#include "tests/support/MemoryTerminal.h"
#include "tests/support/PlainScreen.h"
#include "tests/support/SerialBench.h"
#include "tests/support/TestDesktop.h"

#include <QMap>

#include <memory>

namespace tavril {

/// The application delegate with an open port on a terminal in memory: connected, the detection command sent,
/// nothing answered yet. No thread runs; deliveries are handed over by deliver().
class LinkUnderFuzz {
 public:
  LinkUnderFuzz() {
    terminal.atWrite = [this](const QByteArray &bytes) { sent.push_back(bytes); };
    registerPlainScreen(state.ObjectDictionaryArray, elements);
    bench.devices.add(QStringLiteral("usbport-fuzz"), QStringLiteral("/dev/fuzz"));
    application->applicationDidFinishLaunching();
    application->serialFormat();
    bench.mainQueue.runAll();
    mustHold(sent.size() == 1, "the detection command is sent when the port has opened");
    sent.clear();
  }
  ~LinkUnderFuzz() {
    application->serialPort()->setDelegate({});
    application->serialPort()->close();
    application.reset();
    bench.mainQueue.shutDown();
    state.allSerialPortsInfo.clear();
  }
  LinkUnderFuzz(const LinkUnderFuzz &) = delete;
  LinkUnderFuzz &operator=(const LinkUnderFuzz &) = delete;

  void deliver(const QByteArray &bytes) { application->didReceiveData(application->serialPort(), bytes); }

  /// All that a delivery can change on the screen and in the shared state.
  QMap<QString, QString> everything() const {
    QMap<QString, QString> all;
    for (const auto &[key, element] : elements) {
      all[key] = element.text();
      all[key + QStringLiteral(" is")] =
          QString::number((element.isEnabled() ? 1 : 0) + (element.isHidden() ? 2 : 0)) + element.toolTip();
    }
    all[QStringLiteral("ToolbarFlag")] = state.ToolbarFlag;
    all[QStringLiteral("CanUseTavril")] = state.CanUseTavril;
    all[QStringLiteral("limitFlag")] = state.limitFlag;
    all[QStringLiteral("returnSTR")] = state.returnSTR;
    for (auto entry = state.textFieldValue.cbegin(); entry != state.textFieldValue.cend(); ++entry) {
      all[QStringLiteral("entry ") + entry.key()] = entry.value().text();
    }
    for (auto list = state.ErrorMsgShowToMegView.cbegin(); list != state.ErrorMsgShowToMegView.cend();
         ++list) {
      all[QStringLiteral("list ") + list.key()] = list.value().in(fakes.strings);
    }
    return all;
  }
  QString textOf(const QString &key) const { return elements.at(key).text(); }

  SharedState state;
  MemoryTerminal terminal;
  SerialBench<ManualBackground> bench{&state.allSerialPortsInfo};
  SerialEnvironment serial{bench.mainQueue,     bench.background,  terminal,  bench.devices,
                           bench.notifications, bench.processExit, bench.log, bench.ports};
  PlainScreen elements;
  TestDesktop fakes;
  Desktop desktop{
      bench.mainQueue,          fakes.timers, fakes.wait, fakes.alert, fakes.strings, bench.notifications,
      &fakes.userNotifications, bench.log};
  MemoryFiles files;
  AlertErrorPresenter errors{fakes.alert};
  StoreController store{files, desktop, errors, {}};
  std::shared_ptr<AppDelegate> application = AppDelegate::make(state, desktop, serial, store);
  std::vector<QByteArray> sent;
};

}  // namespace tavril
