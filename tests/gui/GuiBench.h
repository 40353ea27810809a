#pragma once

#include "app/AppDelegate.h"
#include "editor/screen/MainScreen.h"
#include "editor/windows/EditorWindow.h"
#include "look/Style.h"
#include "platform/Log.h"
#include "platform/linux/QtMainQueue.h"
#include "platform/linux/QtTimers.h"
#include "platform/linux/StringTables.h"
#include "program/tavril/AppObjects.h"
#include "program/tavril/EditorObjects.h"
#include "protocol/SharedState.h"
#include "serial/SerialPort.h"
#include "serial/config/Config.h"
#include "simulator/VirtualServo.h"
#include "terminal/PosixTerminalCalls.h"
#include "tests/doctor/FakeMachine.h"
#include "tests/support/AnsweringAlert.h"
#include "tests/support/AnsweringFilePanels.h"
#include "tests/support/FakeDevices.h"
#include "tests/support/FaultyTerminalCalls.h"
#include "tests/support/MemoryFiles.h"
#include "tests/support/MemoryPreferences.h"
#include "tests/support/MemoryUserFiles.h"
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

#include <chrono>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>
#include <utility>

namespace tavril {

/// The button of the alert that is up, or nothing.
inline QAbstractButton *alertButton() {
  const auto *box = qobject_cast<QMessageBox *>(QApplication::activeModalWidget());
  return box && !box->buttons().isEmpty() ? box->buttons().constFirst() : nullptr;
}

/// The editor as the program puts it together, on a virtual servo: real windows, queue, timers, threads and
/// terminal. Alerts are answered in advance, the long waits are only noted, and nothing is kept on the disk.
class GuiBench : public testing::Test {
 protected:
  explicit GuiBench(const QString &language = QStringLiteral("en"),
                    const QStringList &stringFolders = {stringsFolder()})
      : strings(stringFolders, log) {
    QCoreApplication::setApplicationVersion(QStringLiteral("1.2.3"));
    Style::apply(*qApp, language);
    EXPECT_TRUE(strings.setLanguage(language));
    EXPECT_TRUE(servo.start());
    devices.add(portName, servo.path());
    machine.node(servo.path());
    editor = std::make_unique<EditorObjects>(
        objects, EditorServices{panels, userFiles, [this] { return guideFolders; },
                                [this](const QUrl &url) {
                                  openedOutside.append(url);
                                  return true;
                                },
                                [this](int status) { endStatus = status; }});
    doctorsUsualWait = std::exchange(editor->doctorWait, {});
    editor->whenSeen = [this] { ++timesSeen; };
    window = &editor->window();
    window->fitInto(QSize(2000, 2000));
    window->show();
    EXPECT_TRUE(QTest::qWaitForWindowActive(window));
  }

  void openDialog() {
    editor->openPortSetting();
    dialog = window->findChild<Config *>();
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
    ASSERT_TRUE(QTest::qWaitForWindowActive(window));
    QTest::keyClick(window, key, modifiers);
    dialog = window->findChild<Config *>();
  }

  /// Chooses the menu entry with this text.
  void choose(const QString &text) {
    window->activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(window));
    for (const QAction *title : window->menuBar()->actions()) {
      for (QAction *entry : title->menu()->actions()) {
        if (entry->text() != text) continue;
        entry->trigger();
        dialog = window->findChild<Config *>();
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
  MemoryFiles files;
  MemoryPreferences preferences;
  RecordingUserNotifications userNotifications;
  PosixTerminalCalls posix{linesTo(log)};
  FaultyTerminalCalls terminal{posix};  // here only to count the calls
  FakeDevices devices;
  doctor::FakeMachine machine;
  AnsweringFilePanels panels;
  MemoryUserFiles userFiles;
  QStringList guideFolders{QCoreApplication::applicationDirPath() + QStringLiteral("/documents")};
  QList<QUrl> openedOutside;
  std::optional<int> endStatus;
  std::chrono::milliseconds doctorsUsualWait{};
  int timesSeen = 0;

  std::mutex trafficMutex;
  QStringList traffic;
  simulator::VirtualServo servo{{.log = [this](const QString &line) {
    const std::lock_guard lock(trafficMutex);
    traffic.append(line);
  }}};

  AppObjects objects{{log,
                      mainQueue,
                      timers,
                      wait,
                      alert,
                      strings,
                      {QStringLiteral("en")},
                      files,
                      preferences,
                      &userNotifications,
                      terminal,
                      devices,
                      machine.bus,
                      machine.nodes,
                      machine.programs}};
  SharedState &state = objects.state;
  const Desktop &desktop = objects.desktop;
  LanguageChoice &languageChoice = objects.language;
  AppDelegate *const application = objects.application.get();
  std::unique_ptr<EditorObjects> editor;
  EditorWindow *window = nullptr;
  QPointer<Config> dialog;  ///< the port dialog, while it is open
};

}  // namespace tavril
