// The composition root of tavrilctl.
#include "cli/CommandLine.h"
#include "cli/Conversation.h"
#include "cli/DoctorReport.h"
#include "cli/Failure.h"
#include "cli/Files.h"
#include "cli/Plan.h"
#include "cli/Ports.h"
#include "cli/ReadlineCommands.h"
#include "cli/Script.h"
#include "cli/SerialLine.h"
#include "cli/Servo.h"
#include "cli/Session.h"
#include "cli/StreamConsole.h"
#include "doctor/Examination.h"
#include "platform/NotificationCenter.h"
#include "platform/linux/AtExit.h"
#include "platform/linux/EndingSignals.h"
#include "platform/linux/PosixDeviceNodes.h"
#include "platform/linux/PosixTerminalCalls.h"
#include "platform/linux/ProcProcesses.h"
#include "platform/linux/ProgramLog.h"
#include "platform/linux/QtMainQueue.h"
#include "platform/linux/StandardStreams.h"
#include "platform/linux/StringTables.h"
#include "platform/linux/ThreadBackground.h"
#include "platform/linux/UdevDeviceRegistry.h"
#include "platform/linux/UdevUsbBus.h"
#include "serial/OpenFailure.h"
#include "serial/PortRegistry.h"
#include "serial/SerialEnvironment.h"
#include "serial/SerialPort.h"
#include "simulator/Registers.h"
#include "simulator/VirtualServo.h"

#include <QByteArray>
#include <QCoreApplication>
#include <QFileInfo>
#include <QString>
#include <QStringList>
#include <QTimer>

#include <array>
#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <memory>
#include <optional>
#include <thread>
#include <vector>

#include <unistd.h>

namespace {

using namespace tavril;
using namespace tavril::cli;

constexpr unsigned long baudRate = 115200;

int complain(Console &console, const Failure &failure) {
  if (!failure.text.isEmpty()) console.status(QStringLiteral("tavrilctl: ") + failure.text);
  return static_cast<int>(failure.code);
}

/// Ends what reaches from one object into another: whoever still waits for the main thread is let go, and no
/// port is held any more by a queued job or by the list.
struct LooseEnds {
  QtMainQueue &queue;
  PortRegistry::PortList &ports;
  ~LooseEnds() {
    queue.shutDown();
    ports.clear();
  }
};

/// Every object of the program. The order matters: what is named later goes first.
struct House {
  ProgramLog log{"tavrilctl"};
  QtMainQueue mainQueue;
  NotificationCenter notifications;
  StringTables strings{StringTables::standardFolders(), log};
  PosixTerminalCalls terminal{log};
  UdevDeviceRegistry devices;
  UdevUsbBus bus;
  PosixDeviceNodes nodes;
  ProcProcesses processes;
  PortRegistry::PortList portList;
  PortRegistry ports{portList};
  simulator::VirtualServo virtualServo{{.pace = true}};
  // Names two objects that come after it: the environment must outlast the threads that use it.
  SerialEnvironment serial{mainQueue, background, terminal, devices, notifications, processExit, log, ports};
  ThreadBackground background;
  LooseEnds looseEnds{mainQueue, portList};
  AtExit processExit;
};

bool isThere(const QString &path) {
  return QFileInfo::exists(path);
}

/// Its path.
QString startVirtualServo(House &house) {
  QString error;
  if (!house.virtualServo.start(&error)) {
    throw Failure{
        ExitCode::Failed,
        QStringLiteral("the virtual servo could not be started: %1. Close other programs and retry.")
            .arg(error)};
  }
  return house.virtualServo.path();
}

/// The path of the port to use; the registry knows it afterwards.
QString portToUse(House &house, const Options &options) {
  QString path;
  if (options.demo) {
    path = startVirtualServo(house);
  } else {
    path = choosePort(listPorts(house.devices, house.processes), options.port, isThere);
  }
  const RegistryHandle device = SerialPort::deviceFromBSDPath(house.serial, path);
  if (device != 0) {
    house.devices.release(device);
  } else if (const auto problem = house.devices.addTerminal(path)) {
    throw Failure{ExitCode::NoPort,
                  *problem + QStringLiteral(". Name a serial terminal, such as /dev/ttyUSB0.")};
  }
  return path;
}

std::shared_ptr<SerialPort> portAt(House &house, const QString &path) {
  // Links are followed where the terminal is named, so it may stand in the registry under its own name.
  if (auto port = SerialPort::serialPortWithPath(house.serial, path)) return port;
  for (const PortInfo &info : listPorts(house.devices, house.processes)) {
    // Terminals that were named come first.
    if (auto port = SerialPort::serialPortWithPath(house.serial, info.path)) return port;
  }
  throw Failure{
      ExitCode::NoPort,
      QStringLiteral("there is no serial terminal at %1. \"tavrilctl ports\" lists those there are.")
          .arg(shown(path))};
}

/// Ends the program if the work does not notice soon that it is to end. It cannot while it waits for the
/// reader of a pipe, or for input.
void endSoon(int signal, const std::function<void()> &cleanUp) {
  constexpr std::chrono::milliseconds longestEnd{500};
  QTimer::singleShot(longestEnd, QCoreApplication::instance(), [signal, cleanUp] {
    cleanUp();
    std::_Exit(EndingSignals::exitStatus(signal));
  });
}

/// Carries the work out on a thread of its own, while the main thread carries what comes from the port.
int workThrough(House &house, const Options &options, Console &console, const Plan &plan,
                const EndingSignals &signals, ReadlineCommands *shell) {
  const std::shared_ptr<SerialPort> port = portAt(house, portToUse(house, options));
  const auto line = std::make_shared<SerialLine>(house.background, house.log, port);
  port->setDelegate(line);
  port->setBaudRate(baudRate);
  port->setUsesLowLatency(true);
  if (!port->open()) {
    const auto error = line->lastError();
    throw Failure{ExitCode::NoPort, error ? openFailureText(*error)
                                          : QStringLiteral("%1 could not be opened.").arg(port->path())};
  }

  int status = 0;
  std::optional<int> statusOfSignal;
  std::atomic<bool> isEnding = false;
  std::thread worker([&] {
    try {
      const Conversation::Trace trace = [&](const QString &text) {
        house.log.write(text);
        if (options.verbose) console.status(text);
      };
      Conversation conversation(*line, {options.timeout, options.retries}, trace);
      Servo servo(conversation, line->name());
      Session session{servo, *line, console, house.strings};
      if (shell) {
        session.resume = [&] {
          if (isEnding) return false;
          line->resume();
          return true;
        };
      }
      waitForBridge(session, options.bootWait);
      plan.work(session);
    } catch (const Failure &failure) {
      house.log.warn(failure.text);
      status = complain(console, failure);
    }
    house.mainQueue.async([] { QCoreApplication::quit(); });
  });

  const auto listening = signals.listen([&](int signal) {
    const bool ends = !shell || signal != SIGINT;
    isEnding = ends;
    line->interrupt();
    if (shell) ends ? shell->end() : shell->dropLine();
    if (!ends) return;
    statusOfSignal = EndingSignals::exitStatus(signal);
    endSoon(signal, [&port] { port->close(); });
  });
  QCoreApplication::exec();
  worker.join();
  port->close();
  return statusOfSignal.value_or(status);
}

/// The port to examine; empty for the first on the bus.
QString portToExamine(House &house, const Options &options) {
  if (options.demo) return startVirtualServo(house);
  return options.port.isEmpty()
             ? QString()
             : choosePort(listPorts(house.devices, house.processes), options.port, isThere);
}

int examine(House &house, const Options &options, Console &console, const EndingSignals &signals) {
  doctor::Request request;
  request.path = portToExamine(house, options);
  request.bootWait = options.bootWait;
  request.timeout = options.timeout;
  request.retries = options.retries;
  doctor::Examination examination({house.bus, house.nodes, house.processes, house.terminal}, request);
  int status = 0;
  const auto print = [&](const QString &text) {
    try {
      console.data(text);
    } catch (const Failure &failure) {
      status = complain(console, failure);
      examination.cancel();
    }
  };
  std::thread worker([&] {
    const auto results = examination.run({.began = nullptr, .found = [&](const doctor::Result &result) {
                                            if (!options.json) print(doctorLines(result, house.strings));
                                          }});
    if (options.json && !examination.isCancelled()) print(doctorJson(results, house.strings));
    if (status == 0) status = static_cast<int>(doctorStatus(results));
    house.mainQueue.async([] { QCoreApplication::quit(); });
  });
  std::optional<int> statusOfSignal;
  const auto listening = signals.listen([&](int signal) {
    examination.cancel();
    statusOfSignal = EndingSignals::exitStatus(signal);
    endSoon(signal, [] {});
  });
  QCoreApplication::exec();
  worker.join();
  return statusOfSignal.value_or(status);
}

void showPorts(House &house, const Options &options, Console &console) {
  const std::vector<PortInfo> ports = listPorts(house.devices, house.processes);
  console.data(options.names ? portNames(ports) : options.json ? portsJson(ports) : portsTable(ports));
}

/// Where the shell keeps its history; empty when there is no home for it.
QString historyFile() {
  const QByteArray state = qgetenv("XDG_STATE_HOME");
  if (state.startsWith('/')) return textOf(state) + QStringLiteral("/tavril/history");
  const QByteArray home = qgetenv("HOME");
  return home.isEmpty() ? QString() : textOf(home) + QStringLiteral("/.local/state/tavril/history");
}

int run(int argc, char **argv, const Options &options, Console &console) {
  // Before signals are held back: the standard input may be read, which may wait for its writer.
  Plan plan = planFor(options, console);
  if (!plan.work && isForSessions(options.verb)) return 0;
  // Ports are listed on the main thread, which then could not hear of them.
  std::optional<EndingSignals> signals;
  if (options.verb != Verb::Ports) signals.emplace();
  const QCoreApplication application(argc, argv);
  const CommandBook book = CommandLine::book(QStringLiteral(TAVRIL_VERSION));
  std::unique_ptr<ReadlineCommands> shell;
  if (options.verb == Verb::Shell) {
    const bool isTyped = ::isatty(STDIN_FILENO) != 0 && ::isatty(STDOUT_FILENO) != 0;
    if (isTyped) shell = std::make_unique<ReadlineCommands>(book, historyFile());
    plan.work = [&shell](Session &session) {
      const std::unique_ptr<CommandSource> input = shell ? nullptr : commandsIn(QStringLiteral("-"));
      runShell(session, shell ? static_cast<CommandSource &>(*shell) : *input);
    };
  }
  House house;
  house.strings.setLanguage(QStringLiteral("en"));
  try {
    if (plan.work) return workThrough(house, options, console, plan, *signals, shell.get());
    if (options.verb == Verb::Doctor) return examine(house, options, console, *signals);
    if (options.demo) portToUse(house, options);
    showPorts(house, options, console);
    return 0;
  } catch (const Failure &failure) {
    house.log.warn(failure.text);
    throw;
  }
}

/// The values with which the virtual servo starts.
std::array<int, simulator::registers::settingCount> defaults() {
  std::array<int, simulator::registers::settingCount> values{};
  for (std::size_t i = 0; i < values.size(); ++i) values[i] = simulator::registers::settings[i].factory;
  return values;
}

}  // namespace

int main(int argc, char **argv) {
  secureStandardStreams();
  // A file that has grown to its limit is an error of the writing, and not the end of the program.
  std::signal(SIGXFSZ, SIG_IGN);
  QCoreApplication::setApplicationName(QStringLiteral("Tavril"));
  StreamConsole console(stdout, stderr, ::isatty(STDERR_FILENO) != 0);
  QStringList arguments;
  for (int i = 1; i < argc; ++i) arguments.append(textOf(argv[i]));
  CommandLine line = CommandLine::parse(arguments, QStringLiteral(TAVRIL_VERSION), defaults());
  Options &options = line.options;
  if (options.quiet) console.beQuiet();
  if (options.port.isEmpty() && !options.demo) options.port = textOf(qgetenv("TAVRIL_PORT"));
  try {
    if (!line.answer) return run(argc, argv, options, console);
    if (line.answer->status != 0) {
      throw Failure{static_cast<ExitCode>(line.answer->status), line.answer->text};
    }
    console.data(line.answer->text);
    return 0;
  } catch (const Failure &failure) {
    return complain(console, failure);
  }
}
