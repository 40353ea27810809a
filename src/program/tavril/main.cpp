// The editor as a user starts it: the arguments, Qt, and what the arguments ask for.
#include "app/AppDelegate.h"
#include "app/CommandLine.h"
#include "app/ReadOut.h"
#include "app/Report.h"
#include "editor/windows/EditorWindow.h"
#include "look/Style.h"
#include "look/WindowMemory.h"
#include "platform/Desktop.h"
#include "platform/MainQueue.h"
#include "platform/Timers.h"
#include "platform/linux/DocumentFolder.h"
#include "platform/linux/EndOfProcess.h"
#include "platform/linux/EndingSignals.h"
#include "platform/linux/PosixUserFiles.h"
#include "platform/linux/QtFilePanels.h"
#include "platform/linux/QtMainQueue.h"
#include "platform/linux/SingleInstance.h"
#include "platform/linux/StandardStreams.h"
#include "program/tavril/AppObjects.h"
#include "program/tavril/EditorObjects.h"
#include "program/tavril/LinuxServices.h"
#include "simulator/VirtualServo.h"

#include <QApplication>
#include <QCoreApplication>
#include <QDesktopServices>
#include <QGuiApplication>
#include <QIcon>
#include <QScreen>
#include <QSize>
#include <QString>
#include <QStringList>

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstring>
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

int report(AppObjects &objects, ReportFormat format) {
  int status = failed;
  Report readOut(objects.state, objects.serial.environment, objects.bridgeStartUp, format,
                 [&](const ReportOutcome &outcome) {
                   status = outcome.succeeded ? answer(outcome.text) : complain(outcome.text);
                   // Later, for the event loop has not begun when the port cannot be opened.
                   objects.desktop.mainQueue.async([status] { QCoreApplication::exit(status); });
                 });
  readOut.start();
  return QCoreApplication::exec();
}

/// The editor in its window.
int edit(AppObjects &objects, EditorObjects &editor, const CommandLine &line, SingleInstance &instance) {
  if (line.demo || line.connect) {
    editor.whenSeen = [&] {
      if (line.knowsItsPort(objects.state.allSerialPortsInfo.size())) {
        editor.confirmPort();
      } else {
        editor.openPortSetting();
      }
    };
  }
  EditorWindow &window = editor.window();
  const WindowMemory memory(window, objects.services.preferences);
  if (!memory.restore()) window.fitInto(window.screen()->availableSize());
  window.show();
  instance.setRaise([&editor](const QString &token) { editor.bringToFront(token); });
  const int status = QCoreApplication::exec();
  instance.setRaise(nullptr);
  memory.keep();
  return status;
}

/// Makes a picture of the window once everything has been read.
int takePicture(AppObjects &objects, EditorWindow &window, const QString &file) {
  // All of the window, also one that is larger than the desktop.
  window.fitInto(QSize(QWIDGETSIZE_MAX, QWIDGETSIZE_MAX));
  window.show();
  ReadOut readOut(objects.state, *objects.application, objects.desktop, [&](const QString &problem) {
    // A moment later, so that the window shows what has been read.
    objects.desktop.timers.oneShot(std::chrono::milliseconds(200), [&window, file, problem] {
      int status = problem.isEmpty() ? 0 : complain(problem);
      if (problem.isEmpty() && !window.grab().save(file)) {
        status = complain(
            QStringLiteral("the picture could not be written to %1: name a .png file in a folder that "
                           "you may write to.")
                .arg(file));
      }
      QCoreApplication::exit(status);
    });
  });
  objects.desktop.mainQueue.async([&readOut] { readOut.start(); });
  return QCoreApplication::exec();
}

/// `instance`: null where there is no window that somebody sees.
int run(const CommandLine &line, SingleInstance *instance = nullptr) {
  EndOfProcess endOfProcess;  // first of all, so that it goes last
  const EndingSignals signals;
  LinuxServices machine(!line.report && line.snapshot.isEmpty());
  // Ends the event loop, and the process even if something hangs.
  const auto putBack = [lines = machine.terminal.takenLines()] { lines->putBack(); };
  QtMainQueue endings;  // not the program's own, which an alert holds
  const auto watching = signals.watch([&](int signal) {
    const int status = EndingSignals::exitStatus(signal);
    endOfProcess.begin(status, putBack);
    endings.async([status] { QCoreApplication::exit(status); });
  });
  simulator::VirtualServo virtualServo{{.pace = true}};
  AppObjects objects(machine.services(),
                     line.demo ? std::chrono::milliseconds(0) : AppDelegate::bridgeStartUp);
  const auto end = [&](int status) {
    endOfProcess.begin(status, putBack);
    QCoreApplication::exit(status);
  };

  if (!objects.language.begin(line.language)) {
    return complain(QStringLiteral("there is no string table \"%1\". There are: %2.")
                        .arg(line.language, machine.strings.languages().join(QStringLiteral(", "))));
  }

  QStringList terminals = line.ports;
  if (line.demo) {
    QString error;
    if (!virtualServo.start(&error)) {
      return complain(
          QStringLiteral("the virtual servo could not be started: %1. Close other programs and retry.")
              .arg(error));
    }
    terminals.append(virtualServo.path());
  }
  for (const QString &terminal : std::as_const(terminals)) {
    if (const auto problem = machine.devices.addTerminal(terminal)) {
      return complain(*problem + QStringLiteral(". Name a serial terminal, such as /dev/ttyUSB0."));
    }
  }
  if (line.report) {
    objects.application->applicationDidFinishLaunching();
    return report(objects, line.format);
  }

  QtFilePanels panels(machine.mainQueue);
  PosixUserFiles userFiles;
  EditorObjects editor(objects,
                       {panels, userFiles, DocumentFolder::candidates, QDesktopServices::openUrl, end});
  return instance ? edit(objects, editor, line, *instance)
                  : takePicture(objects, editor.window(), line.snapshot);
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
