#include "tests/vm/guest/House.h"

#include "editor/Style.h"
#include "protocol/HelpTables.h"
#include "protocol/RegisterCatalogue.h"
#include "serial/SerialPort.h"
#include "serial/SerialPortManager.h"
#include "serial/config/Config.h"

#include <QApplication>
#include <QLineEdit>
#include <QTest>

#include <gtest/gtest.h>

namespace tavril::vm {

House::House(std::chrono::milliseconds startUpWait)
    : application(AppDelegate::make(state, desktop, serial, store, startUpWait)) {
  Style::apply(*qApp);
  buildHelpTables(state, log);
  EditorWindow::Actions actions;
  actions.openPortSetting = [] {};
  actions.quit = [] {};
  actions.about = [] {};
  actions.endProcess = [](int) {};
  window = std::make_unique<EditorWindow>(state, *application, desktop, std::move(actions));
  application->applicationDidFinishLaunching(window->menuOutlets());
  window->fitInto(QSize(1024, 768));
  window->show();
}

/// As the program ends: ports first, then the window, then what they stood on.
House::~House() {
  if (application->serialPort()) application->serialPort()->setDelegate({});
  for (const auto &port : application->serialPortManager()->availablePorts()) port->close();
  for (const auto &port : state.allSerialPortsInfo) port->close();
  window.reset();
  application.reset();
  mainQueue.shutDown();
  state.SelectSerial.reset();
  state.allSerialPortsInfo.clear();
}

QStringList House::portNames() const {
  QStringList names;
  for (const auto &port : application->serialPortManager()->availablePorts()) names.append(port->name());
  names.sort();
  return names;
}

void House::connectToServo() {
  Config dialog(state, *application, desktop, serial, nodes, processes, window.get());
  dialog.open();
  auto *confirm = dialog.findChild<QWidget *>(QStringLiteral("doneBT"));
  ASSERT_NE(confirm, nullptr);
  QTest::mouseClick(confirm, Qt::LeftButton);
}

bool House::everythingRead() const {
  return std::ranges::all_of(registerCatalogue(), [this](const RegisterRow &row) {
    return !state.ObjectDictionaryArray.element(row.valueKey).text().isEmpty();
  });
}

QString House::textOf(const char *name) const {
  return find(name)->property("text").toString();
}

QWidget *House::find(const char *name) const {
  auto *found = window->findChild<QWidget *>(QString::fromLatin1(name));
  EXPECT_NE(found, nullptr) << name;
  return found;
}

void House::enter(const char *name, const char *text) {
  auto *field = qobject_cast<QLineEdit *>(find(name));
  ASSERT_NE(field, nullptr) << name;
  QTest::mouseClick(field, Qt::LeftButton);
  field->selectAll();
  QTest::keyClicks(field, QString::fromLatin1(text));
  QTest::keyClick(field, Qt::Key_Return);
}

void House::clearScreen() {
  for (const RegisterRow &row : registerCatalogue())
    state.ObjectDictionaryArray.element(row.valueKey).setText({});
}

}  // namespace tavril::vm
