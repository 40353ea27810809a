#pragma once

#include "app/AppDelegate.h"
#include "app/LanguageChoice.h"
#include "app/StoreController.h"
#include "editor/screen/MainScreen.h"
#include "editor/windows/AboutWindow.h"
#include "editor/windows/DoctorWindow.h"
#include "editor/windows/EditorWindow.h"
#include "editor/windows/GuideWindow.h"
#include "look/Style.h"
#include "platform/AlertErrorPresenter.h"
#include "platform/Desktop.h"
#include "platform/NotificationCenter.h"
#include "platform/linux/PosixTerminalCalls.h"
#include "platform/linux/QtMainQueue.h"
#include "platform/linux/QtTimers.h"
#include "platform/linux/StringTables.h"
#include "platform/linux/ThreadBackground.h"
#include "protocol/HelpTables.h"
#include "protocol/SharedState.h"
#include "serial/PortRegistry.h"
#include "serial/SerialEnvironment.h"
#include "serial/SerialPort.h"
#include "serial/config/Config.h"
#include "simulator/VirtualServo.h"
#include "tests/doctor/FakeMachine.h"
#include "tests/support/AnsweringAlert.h"
#include "tests/support/FakeDevices.h"
#include "tests/support/FaultyTerminalCalls.h"
#include "tests/support/MemoryFiles.h"
#include "tests/support/MemoryPreferences.h"
#include "tests/support/RecordingExit.h"
#include "tests/support/RecordingLog.h"
#include "tests/support/RecordingUserNotifications.h"
#include "tests/support/RecordingWait.h"
#include "tests/support/ShippedLanguages.h"
#include "tests/support/WaitFor.h"

#include <QAbstractButton>
#include <QApplication>
#include <QDeadlineTimer>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QMessageBox>
#include <QTest>

#include <gtest/gtest.h>

#include <memory>
#include <mutex>
#include <thread>

namespace tavril {

/// The button of the alert that is up, or nothing.
inline QAbstractButton *alertButton() {
  const auto *box = qobject_cast<QMessageBox *>(QApplication::activeModalWidget());
  return box && !box->buttons().isEmpty() ? box->buttons().constFirst() : nullptr;
}

/// The whole editor in one process on a virtual servo: real window, queue, timers, threads and terminal.
/// Alerts are answered in advance, and the long waits are only noted.
class GuiBench : public testing::Test {
 protected:
  explicit GuiBench(const QString &language = QStringLiteral("en"),
                    const QStringList &stringFolders = {stringsFolder()})
      : strings(stringFolders, log) {
    Style::apply(*qApp, language);
    buildHelpTables(state, log);
    EXPECT_TRUE(strings.setLanguage(language));
    EXPECT_TRUE(servo.start());
    devices.add(portName, servo.path());
    EditorWindow::Actions actions;
    actions.openPortSetting = [this] { openDialog(); };
    machine.node(servo.path());
    actions.openDoctor = [this] {
      DoctorWindow::open(
          *window, desktop, {machine.bus, machine.nodes, machine.programs, terminal}, background,
          [this] { return DoctorWindow::requestFor(*application, std::chrono::milliseconds(0)); });
    };
    actions.openConverter = [this] { ++convertersOpened; };
    actions.openTables = [this] { ++tablesOpened; };
    actions.quit = [this] { endStatus = 0; };
    actions.about = [this] {
      AboutWindow::open(*window, desktop,
                        {{QStringLiteral("CFBundleShortVersionString"), QStringLiteral("1.2.3")}},
                        [this] { ++documentsOpened; });
    };
    actions.userGuide = [this] {
      GuideWindow::open(*window, desktop, guideFolders,
                        [this](const QUrl &url) { openedOutside.append(url); });
    };
    actions.language = &languageChoice;
    actions.endProcess = [this](int status) { endStatus = status; };
    window = std::make_unique<EditorWindow>(state, *application, desktop, std::move(actions));
    application->applicationDidFinishLaunching(window->menuOutlets());
    window->fitInto(QSize(2000, 2000));
    window->show();
    EXPECT_TRUE(QTest::qWaitForWindowActive(window.get()));
  }

  ~GuiBench() override {
    if (application->serialPort()) application->serialPort()->setDelegate({});
    for (const auto &port : state.allSerialPortsInfo) port->close();
    window.reset();
    application.reset();
    mainQueue.shutDown();
    state.SelectSerial.reset();
    state.allSerialPortsInfo.clear();
  }

  void openDialog() {
    dialog = new Config(state, *application, desktop, serial, machine.nodes, machine.programs, window.get());
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->open();
  }

  template <typename Widget>
  Widget *find(const char *name) {
    auto *found = window->findChild<Widget *>(QString::fromLatin1(name));
    EXPECT_NE(found, nullptr) << name;
    return found;
  }
  QString textOf(const char *name) { return find<QWidget>(name)->property("text").toString(); }
  ViewController &controller() { return window->controller(); }
  void press(QWidget *widget) { QTest::mouseClick(widget, Qt::LeftButton); }
  void press(const char *name) { press(find<QWidget>(name)); }

  /// Replaces what stands in the field by typing and leaves it with Return.
  void enter(const char *name, const char *text) {
    auto *field = find<QLineEdit>(name);
    QTest::mouseClick(field, Qt::LeftButton);
    QTest::keyClick(field, Qt::Key_A, Qt::ControlModifier);
    QTest::keyClick(field, Qt::Key_Delete);
    QTest::keyClicks(field, QString::fromLatin1(text));
    QTest::keyClick(field, Qt::Key_Return);
  }

  /// A key for the window, which has the focus again after a dialog as under any window manager.
  void shortcut(Qt::Key key, Qt::KeyboardModifiers modifiers) {
    window->activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(window.get()));
    QTest::keyClick(window.get(), key, modifiers);
  }

  /// Chooses the menu entry with this text.
  void choose(const QString &text) {
    window->activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(window.get()));
    for (const QAction *title : window->menuBar()->actions()) {
      for (QAction *entry : title->menu()->actions()) {
        if (entry->text() != text) continue;
        entry->trigger();
        return;
      }
    }
    FAIL() << "no menu has " << text.toStdString();
  }

  /// In the time that a pause between two writes would take, the reply to the one before arrives.
  void letRepliesArriveInPauses() {
    wait.during = [this, reads = terminal.count(Call::Read)]() mutable {
      const QDeadlineTimer deadline(std::chrono::seconds(20));
      while (terminal.count(Call::Read) <= reads && !deadline.hasExpired()) std::this_thread::yield();
      reads = terminal.count(Call::Read);
    };
  }

  /// From the menu's shortcut to the twenty registers.
  void connectToServo() {
    shortcut(Qt::Key_P, Qt::ControlModifier);
    ASSERT_NE(dialog, nullptr);
    press(dialog->findChild<QWidget *>(QStringLiteral("doneBT")));
    ASSERT_TRUE(waitFor([this] { return !textOf("PresentLoad_value").isEmpty(); }));
    ASSERT_TRUE(waitFor([this] { return find<QWidget>("sID_value")->isEnabled(); }));
  }

  QStringList trafficLines() {
    const std::lock_guard lock(trafficMutex);
    return traffic;
  }
  void clearTraffic() {
    const std::lock_guard lock(trafficMutex);
    traffic.clear();
  }

  const QString portName = QStringLiteral("usbport-test");
  RecordingLog log;
  QtMainQueue mainQueue;
  QtTimers timers{mainQueue};
  RecordingWait wait;
  AnsweringAlert alert;
  StringTables strings;
  NotificationCenter notifications;
  MemoryPreferences preferences;
  LanguageChoice languageChoice{strings, preferences, notifications, log, {QStringLiteral("en")}};
  RecordingUserNotifications userNotifications;
  Desktop desktop{mainQueue, timers, wait, alert, strings, notifications, &userNotifications, log};
  PosixTerminalCalls posix{log};
  FaultyTerminalCalls terminal{posix};  // here only to count the reads
  MemoryFiles files;
  AlertErrorPresenter errors{alert};
  StoreController store{files, desktop, errors};
  FakeDevices devices;
  doctor::FakeMachine machine;
  SharedState state;
  PortRegistry ports{state.allSerialPortsInfo};
  RecordingExit processExit;
  SerialEnvironment serial{mainQueue, background, terminal, devices, notifications, processExit, log, ports};
  ThreadBackground background;
  std::mutex trafficMutex;
  QStringList traffic;
  simulator::VirtualServo servo{{.log = [this](const QString &line) {
    const std::lock_guard lock(trafficMutex);
    traffic.append(line);
  }}};
  std::shared_ptr<AppDelegate> application = AppDelegate::make(state, desktop, serial, store);
  std::unique_ptr<EditorWindow> window;
  QPointer<Config> dialog;
  int convertersOpened = 0;
  int tablesOpened = 0;
  std::optional<int> endStatus;
  int documentsOpened = 0;
  QStringList guideFolders{QCoreApplication::applicationDirPath() + QStringLiteral("/documents")};
  QList<QUrl> openedOutside;
};

}  // namespace tavril
