// The composition root: the only place that knows every room.
#include "app/AppDelegate.h"
#include "app/CommandLine.h"
#include "app/LanguageChoice.h"
#include "app/ReadOut.h"
#include "app/Report.h"
#include "app/StoreController.h"
#include "doctor/Examination.h"
#include "editor/windows/AboutWindow.h"
#include "editor/windows/DoctorWindow.h"
#include "editor/windows/DocumentsLink.h"
#include "editor/windows/EditorWindow.h"
#include "editor/windows/GuideWindow.h"
#include "look/Style.h"
#include "look/WindowMemory.h"
#include "platform/AlertErrorPresenter.h"
#include "platform/Desktop.h"
#include "platform/LoggingAlert.h"
#include "platform/NotificationCenter.h"
#include "platform/linux/AnyThreadPause.h"
#include "platform/linux/AtExit.h"
#include "platform/linux/DesktopNotifications.h"
#include "platform/linux/DocumentFolder.h"
#include "platform/linux/EndOfProcess.h"
#include "platform/linux/PaintWidgets.h"
#include "platform/linux/PaintingWait.h"
#include "platform/linux/PosixDeviceNodes.h"
#include "platform/linux/PosixPrivateFiles.h"
#include "platform/linux/PosixTerminalCalls.h"
#include "platform/linux/PosixUserFiles.h"
#include "platform/linux/ProcProcesses.h"
#include "platform/linux/ProgramLog.h"
#include "platform/linux/QtFilePanels.h"
#include "platform/linux/QtMainQueue.h"
#include "platform/linux/QtModalAlert.h"
#include "platform/linux/QtTimers.h"
#include "platform/linux/SettingsFile.h"
#include "platform/linux/SingleInstance.h"
#include "platform/linux/StandardStreams.h"
#include "platform/linux/StringTables.h"
#include "platform/linux/ThreadBackground.h"
#include "platform/linux/UdevDeviceRegistry.h"
#include "platform/linux/UdevUsbBus.h"
#include "protocol/HelpTables.h"
#include "protocol/SharedState.h"
#include "serial/LinkOpener.h"
#include "serial/PortRegistry.h"
#include "serial/SerialEnvironment.h"
#include "serial/config/Config.h"
#include "simulator/VirtualServo.h"
#include "tools/StringsConverter.h"

#include <QApplication>
#include <QCoreApplication>
#include <QDesktopServices>
#include <QGuiApplication>
#include <QIcon>
#include <QLocale>
#include <QScreen>
#include <QSize>
#include <QString>
#include <QStringList>
#include <QUrl>
#include <QWidget>

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <memory>
#include <optional>
#include <utility>

namespace {

using namespace tavril;

constexpr int failed = 1;

/// False when the stream has not taken the whole text; errno tells why.
bool print(std::FILE *stream, const QString &text) {
  return std::fputs(qUtf8Printable(text), stream) >= 0 && std::fflush(stream) == 0;
}

/// Returns the status to exit with.
int complain(const QString &text, int status = failed) {
  print(stderr, QStringLiteral("tavril: ") + text + u'\n');
  return status;
}

/// Returns the status to exit with.
int answer(const QString &text) {
  if (print(stdout, text)) return 0;
  return complain(QStringLiteral("the output could not be written: %1.")
                      .arg(QString::fromLocal8Bit(std::strerror(errno))));
}

bool hasDisplay() {
  return qEnvironmentVariableIsSet("DISPLAY") || qEnvironmentVariableIsSet("WAYLAND_DISPLAY") ||
         qEnvironmentVariableIsSet("QT_QPA_PLATFORM");
}

/// Ends what reaches from one object into another: whoever still waits for the main thread is let go, and no
/// port is held any more by a queued job or by the shared state.
struct LooseEnds {
  QtMainQueue &queue;
  SharedState &state;
  ~LooseEnds() {
    queue.shutDown();
    state.allSerialPortsInfo.clear();
    state.SelectSerial.reset();
  }
};

/// Every object of the program. The order matters: what is named later goes first. So the ports are closed
/// while all is still there, then the threads end, then goes what they stood on.
struct House {
  /// `interactive`: there is somebody who answers alerts.
  House(std::chrono::milliseconds bridgeStartUp, bool interactive)
      : startUpWait(bridgeStartUp),
        alert(interactive ? std::unique_ptr<ModalAlert>(std::make_unique<QtModalAlert>(mainQueue))
                          : std::make_unique<LoggingAlert>(log)),
        application(AppDelegate::make(state, desktop, serial, store, startUpWait)) {}

  const std::chrono::milliseconds startUpWait;
  ProgramLog log{"tavril"};
  QtMainQueue mainQueue;
  QtTimers timers{mainQueue};
  PaintingWait blockingWait{paintPendingWidgets};
  std::unique_ptr<ModalAlert> alert;
  StringTables strings{StringTables::standardFolders(), log};
  PosixPrivateFiles files;
  SettingsFile preferences{SettingsFile::standardPath(), files, log};
  NotificationCenter notifications;
  LanguageChoice language{strings, preferences, notifications, log, QLocale().uiLanguages()};
  DesktopNotifications userNotifications;
  Desktop desktop{mainQueue, timers, blockingWait, *alert, strings, notifications, &userNotifications, log};

  AlertErrorPresenter errors{*alert};
  StoreController store{files, desktop, errors};

  PosixTerminalCalls terminal{log, anyThreadPause(mainQueue, blockingWait)};
  UdevDeviceRegistry devices;
  UdevUsbBus bus;
  PosixDeviceNodes nodes;
  ProcProcesses processes;
  SharedState state;
  PortRegistry ports{state.allSerialPortsInfo};
  simulator::VirtualServo virtualServo{{.pace = true}};
  // Names two objects that come after it: the environment must outlast the threads that use it.
  SerialEnvironment serial{mainQueue, background, terminal, devices, notifications, processExit, log, ports};
  ThreadBackground background;
  LooseEnds looseEnds{mainQueue, state};
  std::shared_ptr<AppDelegate> application;
  AtExit processExit;
};

int report(House &house, ReportFormat format) {
  int status = failed;
  Report readOut(house.state, *house.application, house.desktop, format, [&](const Report::Outcome &outcome) {
    status = outcome.succeeded ? answer(outcome.text) : complain(outcome.text);
    // Later, for the event loop has not begun when the port cannot be opened.
    house.mainQueue.async([status] { QCoreApplication::exit(status); });
  });
  readOut.start();
  return QCoreApplication::exec();
}

/// Has the doctor let go of the port before the link takes it.
class LinkBeforeDoctor final : public LinkOpener {
 public:
  LinkBeforeDoctor(EditorWindow &window, LinkOpener &link) : window_(window), link_(link) {}
  void serialFormat() override {
    if (auto *doctor = window_.findChild<DoctorWindow *>()) doctor->stop();
    link_.serialFormat();
  }

 private:
  EditorWindow &window_;
  LinkOpener &link_;
};

/// Opens the port dialog over the window; the dialog lives until it is closed.
void openPortSetting(House &house, EditorWindow &window, LinkOpener &link) {
  if (auto *open = window.findChild<Config *>()) {
    open->raise();
    return;
  }
  auto *dialog =
      new Config(house.state, link, house.desktop, house.serial, house.nodes, house.processes, &window);
  dialog->setAttribute(Qt::WA_DeleteOnClose);
  dialog->open();
}

void openDocuments(House &house) {
  const DocumentsLink link(
      DocumentFolder::candidates(),
      [](const QString &folder) { return QDesktopServices::openUrl(QUrl::fromLocalFile(folder)); },
      house.desktop);
  link.open();
}

void openGuide(House &house, EditorWindow &window) {
  GuideWindow::open(window, house.desktop, DocumentFolder::candidates(),
                    [](const QUrl &url) { QDesktopServices::openUrl(url); });
}

/// Brings the window to the front, and what it waits for over it. `token`: the permission that a desktop has
/// given to whoever asks for this, which under Wayland it wants to see.
void bringToFront(QWidget &window, const QString &token) {
  if (!token.isEmpty()) qputenv("XDG_ACTIVATION_TOKEN", token.toUtf8());
  QWidget *modal = QApplication::activeModalWidget();
  for (QWidget *one : {&window, modal}) {
    if (!one) continue;
    one->setWindowState(one->windowState() & ~Qt::WindowMinimized);
    one->show();
    one->raise();
    one->activateWindow();
  }
}

/// As if the port dialog had been opened and confirmed.
void confirmPort(House &house, EditorWindow &window, LinkOpener &link) {
  Config dialog(house.state, link, house.desktop, house.serial, house.nodes, house.processes, &window);
  dialog.done();
}

/// The editor, or with a file name a picture of it once everything has been read.
int edit(House &house, const CommandLine &line, SingleInstance *instance, EndOfProcess &endOfProcess) {
  Style::setLanguage(house.language.language());
  EditorWindow::Actions actions;
  actions.language = &house.language;
  EditorWindow *shown = nullptr;
  std::optional<LinkBeforeDoctor> link;
  actions.openPortSetting = [&] { openPortSetting(house, *shown, *link); };
  actions.openDoctor = [&] {
    DoctorWindow::open(*shown, house.desktop, {house.bus, house.nodes, house.processes, house.terminal},
                       house.background,
                       [&house] { return DoctorWindow::requestFor(*house.application, house.startUpWait); });
  };
  const auto end = [&](int status) {
    endOfProcess.begin(status, [lines = house.terminal.takenLines()] { lines->putBack(); });
    QCoreApplication::exit(status);
  };
  actions.quit = [&] {
    if (house.application->applicationShouldTerminate() == TerminateReply::TerminateNow) end(0);
  };
  actions.about = [&] {
    AboutWindow::open(
        *shown, house.desktop,
        {{QStringLiteral("CFBundleShortVersionString"), QCoreApplication::applicationVersion()}},
        [&house] { openDocuments(house); });
  };
  const QString lastFolder = QStringLiteral("stringTableFolder");
  PosixUserFiles userFiles;
  QtFilePanels panels(house.mainQueue);
  StringsConverter converter(
      panels, userFiles,
      TableFolder([&] { return house.preferences.value(lastFolder).value_or(QString()); },
                  [&](const QString &folder) { house.preferences.setValue(lastFolder, folder); }),
      house.strings, house.notifications, house.log);
  actions.openConverter = [&] { converter.showConverter(shown); };
  actions.openTables = [&] { converter.showTables(shown); };
  actions.userGuide = [&] { openGuide(house, *shown); };
  actions.endProcess = end;
  if (instance && (line.demo || line.connect)) {
    actions.seen = [&] {
      if (line.knowsItsPort(house.state.allSerialPortsInfo.size())) {
        confirmPort(house, *shown, *link);
      } else {
        openPortSetting(house, *shown, *link);
      }
    };
  }
  EditorWindow window(house.state, *house.application, house.desktop, std::move(actions));
  shown = &window;
  link.emplace(window, *house.application);
  house.application->applicationDidFinishLaunching(window.menuOutlets());
  if (instance) {
    const WindowMemory memory(window, house.preferences);
    if (!memory.restore()) window.fitInto(window.screen()->availableSize());
    window.show();
    instance->setRaise([&window](const QString &token) { bringToFront(window, token); });
    const int status = QCoreApplication::exec();
    instance->setRaise(nullptr);
    memory.keep();
    return status;
  }

  // A picture shows all of the window, also one that is larger than the desktop.
  window.fitInto(QSize(QWIDGETSIZE_MAX, QWIDGETSIZE_MAX));
  window.show();
  ReadOut readOut(house.state, *house.application, house.desktop, [&](const QString &problem) {
    // A moment later, so that the window shows what has been read.
    house.desktop.timers.oneShot(
        std::chrono::milliseconds(200), [&window, snapshot = line.snapshot, problem] {
          int status = problem.isEmpty() ? 0 : complain(problem);
          if (problem.isEmpty() && !window.grab().save(snapshot)) {
            status = complain(
                QStringLiteral("the picture could not be written to %1: name a .png file in a folder that "
                               "you may write to.")
                    .arg(snapshot));
          }
          QCoreApplication::exit(status);
        });
  });
  house.mainQueue.async([&readOut] { readOut.start(); });
  return QCoreApplication::exec();
}

/// `instance`: null where there is no window that somebody sees.
int run(const CommandLine &line, SingleInstance *instance = nullptr) {
  EndOfProcess endOfProcess;  // first of all, so that it goes last
  const bool interactive = !line.report && line.snapshot.isEmpty();
  House house(line.demo ? std::chrono::milliseconds(0) : AppDelegate::bridgeStartUp, interactive);
  buildHelpTables(house.state, house.log);

  if (!house.language.begin(line.language)) {
    return complain(QStringLiteral("there is no string table \"%1\". There are: %2.")
                        .arg(line.language, house.strings.languages().join(QStringLiteral(", "))));
  }

  QStringList terminals = line.ports;
  if (line.demo) {
    QString error;
    if (!house.virtualServo.start(&error)) {
      return complain(
          QStringLiteral("the virtual servo could not be started: %1. Close other programs and retry.")
              .arg(error));
    }
    terminals.append(house.virtualServo.path());
  }
  for (const QString &terminal : std::as_const(terminals)) {
    if (const auto problem = house.devices.addTerminal(terminal)) {
      return complain(*problem + QStringLiteral(". Name a serial terminal, such as /dev/ttyUSB0."));
    }
  }
  if (!line.report) return edit(house, line, instance, endOfProcess);
  house.application->applicationDidFinishLaunching();
  return report(house, line.format);
}

/// The editor in its window, or where there is one already, that one in front.
int openEditor(const CommandLine &line) {
  SingleInstance instance;
  const QString token = qEnvironmentVariable("XDG_ACTIVATION_TOKEN");
  if (instance.claim()) return run(line, &instance);
  if (!instance.raiseOther(token)) {
    // It may have ended in this very moment.
    if (instance.claim()) return run(line, &instance);
    return complain(
        QStringLiteral("Tavril is already running but does not answer: wait, or end that program."));
  }
  const QString lost = line.forOwnWindow();
  if (lost.isEmpty()) return 0;
  return complain(
      QStringLiteral(
          "Tavril is already running. Its window is in front now, and %1 had no effect: close that "
          "window first, or choose in it.")
          .arg(lost));
}

}  // namespace

int main(int argc, char **argv) {
  secureStandardStreams();
  QCoreApplication::setApplicationName(QStringLiteral("Tavril"));
  const QString version = QStringLiteral(TAVRIL_VERSION);
  QCoreApplication::setApplicationVersion(version);
  QStringList arguments;
  for (int i = 0; i < argc; ++i) arguments.append(QString::fromLocal8Bit(argv[i]));
  const CommandLine line = CommandLine::parse(arguments, version);
  if (line.answer) {
    const auto &[text, status] = *line.answer;
    return status == 0 ? answer(text) : complain(text, status);
  }
  if (line.report) {
    const QCoreApplication application(argc, argv);
    return run(line);
  }
  if (!hasDisplay()) {
    if (line.snapshot.isEmpty()) {
      return complain(
          QStringLiteral("there is no display for the window: use --report, or --snapshot FILE.png."));
    }
    qputenv("QT_QPA_PLATFORM", "offscreen");  // a picture can be made without one
  }
  QApplication application(argc, argv);
  QGuiApplication::setDesktopFileName(QStringLiteral("org.tavril.Tavril"));
  QApplication::setWindowIcon(QIcon::fromTheme(QStringLiteral("tavril")));
  Style::apply(application);
  return line.snapshot.isEmpty() ? openEditor(line) : run(line);
}
