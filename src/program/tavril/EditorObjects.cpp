#include "program/tavril/EditorObjects.h"

#include "editor/windows/AboutWindow.h"
#include "editor/windows/DoctorWindow.h"
#include "editor/windows/DocumentsLink.h"
#include "editor/windows/EditorWindow.h"
#include "editor/windows/GuideWindow.h"
#include "look/SideWindow.h"
#include "look/Style.h"
#include "platform/Preferences.h"
#include "platform/linux/StringTables.h"
#include "program/tavril/AppObjects.h"
#include "serial/config/Config.h"

#include <QApplication>
#include <QByteArray>
#include <QCoreApplication>
#include <QWidget>

#include <utility>

namespace tavril {

namespace {

/// The folder of the translator's last conversion is remembered for later runs.
TableFolder tableFolder(Preferences &preferences) {
  const QString key = QStringLiteral("stringTableFolder");
  return TableFolder([&preferences, key] { return preferences.value(key).value_or(QString()); },
                     [&preferences, key](const QString &folder) { preferences.setValue(key, folder); });
}

}  // namespace

EditorObjects::EditorObjects(AppObjects &objects, EditorServices services)
    : doctorWait(objects.bridgeStartUp),
      objects_(objects),
      services_(std::move(services)),
      converter_(services_.filePanels, services_.userFiles, tableFolder(objects.services.preferences),
                 objects.services.strings, objects.notifications, objects.services.log) {
  Style::setLanguage(objects_.language.language());
  EditorWindow::Actions actions;
  actions.openPortSetting = [this] { openPortSetting(); };
  actions.openDoctor = [this] { openDoctor(); };
  actions.quit = [this] { quit(); };
  actions.about = [this] { openAbout(); };
  actions.openConverter = [this] { converter_.showConverter(*window_); };
  actions.openTables = [this] { converter_.showTables(*window_); };
  actions.userGuide = [this] { openGuide(); };
  actions.seen = [this] {
    if (whenSeen) whenSeen();
  };
  actions.endProcess = services_.endProcess;
  actions.language = &objects_.language;
  window_ = std::make_unique<EditorWindow>(objects_.state, *objects_.application, objects_.desktop,
                                           std::move(actions));
  objects_.application->applicationDidFinishLaunching(window_->menuOutlets());
}

EditorObjects::~EditorObjects() = default;

void EditorObjects::openPortSetting() {
  if (auto *open = window_->findChild<Config *>()) {
    open->raise();
    return;
  }
  auto *dialog = new Config(objects_.state, *this, objects_.desktop, objects_.serial.environment,
                            objects_.services.nodes, objects_.services.processes, window_.get());
  dialog->setAttribute(Qt::WA_DeleteOnClose);
  dialog->open();
}

void EditorObjects::confirmPort() {
  Config dialog(objects_.state, *this, objects_.desktop, objects_.serial.environment, objects_.services.nodes,
                objects_.services.processes, window_.get());
  dialog.done();
}

void EditorObjects::serialFormat() {
  // The doctor lets go of the port before the link takes it.
  if (auto *doctor = window_->findChild<DoctorWindow *>()) doctor->stop();
  objects_.application->serialFormat();
}

void EditorObjects::openDoctor() {
  const AppServices &machine = objects_.services;
  DoctorWindow::open(*window_, objects_.desktop,
                     {machine.bus, machine.nodes, machine.processes, machine.terminal},
                     objects_.serial.background,
                     [this] { return DoctorWindow::requestFor(*objects_.application, doctorWait); });
}

void EditorObjects::quit() {
  if (objects_.application->applicationShouldTerminate() == TerminateReply::TerminateNow) {
    services_.endProcess(0);
  }
}

void EditorObjects::openAbout() {
  AboutWindow::open(*window_, objects_.desktop,
                    {{QStringLiteral("CFBundleShortVersionString"), QCoreApplication::applicationVersion()}},
                    [this] { openDocuments(); });
}

void EditorObjects::openDocuments() {
  const DocumentsLink link(
      services_.documentFolders(),
      [this](const QString &folder) { return services_.openOutside(QUrl::fromLocalFile(folder)); },
      objects_.desktop);
  link.open();
}

void EditorObjects::openGuide() {
  GuideWindow::open(*window_, objects_.desktop, services_.documentFolders(), services_.openOutside);
}

void EditorObjects::bringToFront(const QString &token) {
  if (!token.isEmpty()) qputenv("XDG_ACTIVATION_TOKEN", token.toUtf8());
  for (QWidget *one : {static_cast<QWidget *>(window_.get()), QApplication::activeModalWidget()}) {
    if (one) tavril::bringToFront(*one);
  }
}

}  // namespace tavril
