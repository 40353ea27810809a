#include "tests/vm/guest/GuestEditor.h"

#include "look/Style.h"
#include "protocol/RegisterCatalogue.h"
#include "serial/SerialPort.h"
#include "serial/SerialPortManager.h"
#include "serial/config/Config.h"

#include <QApplication>
#include <QLineEdit>
#include <QPointer>
#include <QTest>

#include <gtest/gtest.h>

namespace tavril::vm {

GuestEditor::GuestEditor(std::chrono::milliseconds startUpWait)
    : objects({log,
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
               bus,
               nodes,
               processes},
              startUpWait) {
  Style::apply(*qApp);
  editor.emplace(objects, EditorServices{panels, userFiles, [] { return QStringList(); },
                                         [](const QUrl &) { return false; }, [](int) {}});
  window = &editor->window();
  window->fitInto(QSize(1024, 768));
  window->show();
}

QStringList GuestEditor::portNames() const {
  QStringList names;
  for (const auto &port : application->serialPortManager()->availablePorts()) names.append(port->name());
  names.sort();
  return names;
}

void GuestEditor::connectToServo() {
  editor->openPortSetting();
  const QPointer<Config> dialog = window->findChild<Config *>();
  ASSERT_NE(dialog, nullptr);
  auto *confirm = dialog->findChild<QWidget *>(QStringLiteral("doneBT"));
  ASSERT_NE(confirm, nullptr);
  QTest::mouseClick(confirm, Qt::LeftButton);
  delete dialog;
}

bool GuestEditor::everythingRead() const {
  return std::ranges::all_of(registerCatalogue(), [this](const RegisterRow &row) {
    return !state.ObjectDictionaryArray.element(row.valueKey).text().isEmpty();
  });
}

QString GuestEditor::textOf(const char *name) const {
  return find(name)->property("text").toString();
}

QWidget *GuestEditor::find(const char *name) const {
  auto *found = window->findChild<QWidget *>(QString::fromLatin1(name));
  EXPECT_NE(found, nullptr) << name;
  return found;
}

void GuestEditor::enter(const char *name, const char *text) {
  auto *field = qobject_cast<QLineEdit *>(find(name));
  ASSERT_NE(field, nullptr) << name;
  QTest::mouseClick(field, Qt::LeftButton);
  field->selectAll();
  QTest::keyClicks(field, QString::fromLatin1(text));
  QTest::keyClick(field, Qt::Key_Return);
}

void GuestEditor::clearScreen() {
  for (const RegisterRow &row : registerCatalogue())
    state.ObjectDictionaryArray.element(row.valueKey).setText({});
}

}  // namespace tavril::vm
