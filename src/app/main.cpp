// The composition root: the only place that knows every room.
#include "app/AppDelegate.h"
#include "app/CommandLine.h"
#include "app/Report.h"
#include "platform/Desktop.h"
#include "platform/LoggingAlert.h"
#include "platform/NotificationCenter.h"
#include "platform/linux/AtExit.h"
#include "platform/linux/DesktopNotifications.h"
#include "platform/linux/PaintingWait.h"
#include "platform/linux/PosixTerminalCalls.h"
#include "platform/linux/QtMainQueue.h"
#include "platform/linux/QtTimers.h"
#include "platform/linux/StreamLog.h"
#include "platform/linux/StringTables.h"
#include "platform/linux/ThreadBackground.h"
#include "platform/linux/UdevDeviceRegistry.h"
#include "protocol/HelpTables.h"
#include "protocol/SharedState.h"
#include "serial/PortRegistry.h"
#include "serial/SerialEnvironment.h"
#include "simulator/VirtualServo.h"

#include <QCoreApplication>
#include <QLocale>

#include <cstdio>

namespace {

using namespace tavril;

constexpr int failed = 1;

void print(std::FILE *stream, const QString &text) {
  std::fputs(qUtf8Printable(text), stream);
  std::fflush(stream);
}

int complain(const QString &text) {
  print(stderr, QStringLiteral("tavril: ") + text + u'\n');
  return failed;
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
  explicit House(std::chrono::milliseconds startUpWait)
      : application(AppDelegate::make(state, desktop, serial, startUpWait)) {}

  StreamLog log;
  QtMainQueue mainQueue;
  QtTimers timers{mainQueue};
  PaintingWait blockingWait{nullptr};
  LoggingAlert alert{log};
  StringTables strings{StringTables::standardFolders(), log};
  NotificationCenter notifications;
  DesktopNotifications userNotifications;
  Desktop desktop{mainQueue, timers, blockingWait, alert, strings, notifications, &userNotifications, log};

  PosixTerminalCalls terminal{log};
  UdevDeviceRegistry devices;
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
    status = 0;
    if (outcome.succeeded) {
      print(stdout, outcome.text);
    } else {
      status = complain(outcome.text);
    }
    // Later, for the event loop has not begun when the port cannot be opened.
    house.mainQueue.async([status] { QCoreApplication::exit(status); });
  });
  readOut.start();
  return QCoreApplication::exec();
}

int run(const CommandLine &line) {
  House house(line.demo ? std::chrono::milliseconds(0) : AppDelegate::bridgeStartUp);
  buildHelpTables(house.state, house.log);

  QString language = line.language;
  if (language.isEmpty()) {
    language = StringTables::languageFor(QLocale().uiLanguages(), house.strings.languages());
  }
  if (!house.strings.setLanguage(language) && !line.language.isEmpty()) {
    return complain(QStringLiteral("there is no string table \"%1\". There are: %2.")
                        .arg(line.language, house.strings.languages().join(QStringLiteral(", "))));
  }

  QStringList terminals = line.ports;
  if (line.demo) {
    QString error;
    if (!house.virtualServo.start(&error)) {
      return complain(QStringLiteral("the virtual servo could not be started: %1").arg(error));
    }
    terminals.append(house.virtualServo.path());
  }
  for (const QString &terminal : std::as_const(terminals)) {
    if (const auto problem = house.devices.addTerminal(terminal)) {
      return complain(*problem + QStringLiteral(". Name a serial terminal, such as /dev/ttyUSB0."));
    }
  }
  house.application->applicationDidFinishLaunching();
  return report(house, line.format);
}

}  // namespace

int main(int argc, char **argv) {
  QCoreApplication::setApplicationName(QStringLiteral("Tavril"));
  const QString version = QStringLiteral(TAVRIL_VERSION);
  QCoreApplication::setApplicationVersion(version);
  QCoreApplication application(argc, argv);

  CommandLine line = CommandLine::parse(QCoreApplication::arguments(), version);
  if (!line.answer && !line.report) {
    line.answer = CommandLine::Answer{QStringLiteral("the window is still being built: use --report."), 2};
  }
  if (line.answer) {
    if (line.answer->status == 0) {
      print(stdout, line.answer->text);
    } else {
      complain(line.answer->text);
    }
    return line.answer->status;
  }
  return run(line);
}
