// The composition root of tavrilctl.
#include "cli/CommandLine.h"
#include "cli/Conversation.h"
#include "cli/DoctorReport.h"
#include "cli/Failure.h"
#include "cli/Plan.h"
#include "cli/Ports.h"
#include "cli/SerialLine.h"
#include "cli/Servo.h"
#include "cli/Session.h"
#include "cli/StreamConsole.h"
#include "doctor/Examination.h"
#include "platform/NotificationCenter.h"
#include "platform/linux/AtExit.h"
#include "platform/linux/PosixDeviceNodes.h"
#include "platform/linux/PosixTerminalCalls.h"
#include "platform/linux/ProcProcesses.h"
#include "platform/linux/QtMainQueue.h"
#include "platform/linux/StandardStreams.h"
#include "platform/linux/StreamLog.h"
#include "platform/linux/StringTables.h"
#include "platform/linux/ThreadBackground.h"
#include "platform/linux/UdevDeviceRegistry.h"
#include "platform/linux/UdevUsbBus.h"
#include "serial/OpenFailure.h"
#include "serial/PortRegistry.h"
#include "serial/SerialEnvironment.h"
#include "serial/SerialPort.h"
#include "simulator/VirtualServo.h"

#include <QCoreApplication>
#include <QSocketNotifier>

#include <csignal>
#include <cstdio>
#include <functional>
#include <thread>

#include <sys/signalfd.h>
#include <unistd.h>

namespace {

using namespace tavril;
using namespace tavril::cli;

constexpr unsigned long baudRate = 115200;

int complain(Console &console, const Failure &failure) {
  console.status(QStringLiteral("tavrilctl: ") + failure.text);
  return static_cast<int>(failure.code);
}

/// Makes the signals that end a program readable from a descriptor, so that the port can be put back first.
/// Must come before any thread is started, because threads take over which signals are blocked. -1 when there
/// is none to be had; the signals then end the program as they always do.
int endingSignals() {
  sigset_t signals;
  sigemptyset(&signals);
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) sigaddset(&signals, signal);
  const int descriptor = ::signalfd(-1, &signals, SFD_CLOEXEC | SFD_NONBLOCK);
  if (descriptor >= 0) ::pthread_sigmask(SIG_BLOCK, &signals, nullptr);
  return descriptor;
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
  StreamLog log;
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
    path = choosePort(listPorts(house.devices, house.processes), options.port);
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
      QStringLiteral("there is no serial terminal at %1: choose one that \"tavrilctl ports\" lists.")
          .arg(path)};
}

/// Acts when a signal comes that ends the program; while the event loop runs.
class EndingSignal {
 public:
  EndingSignal(int signals, const std::function<void()> &act) {
    if (signals < 0) return;
    notifier_ = std::make_unique<QSocketNotifier>(signals, QSocketNotifier::Read);
    QObject::connect(notifier_.get(), &QSocketNotifier::activated, notifier_.get(), [this, signals, act] {
      signalfd_siginfo information{};
      if (::read(signals, &information, sizeof information) != sizeof information) return;
      endedBy_ = static_cast<int>(information.ssi_signo);
      act();
    });
  }

  bool hasCome() const { return endedBy_ != 0; }
  /// What to exit with, as shells have it.
  int status() const { return 128 + endedBy_; }

 private:
  std::unique_ptr<QSocketNotifier> notifier_;
  int endedBy_ = 0;
};

/// Carries the work out on a thread of its own, while the main thread carries what comes from the port.
int workThrough(House &house, const Options &options, Console &console, const Plan &plan, int signals) {
  const std::shared_ptr<SerialPort> port = portAt(house, portToUse(house, options));
  const auto line = std::make_shared<SerialLine>(house.background, port);
  port->setDelegate(line);
  port->setBaudRate(baudRate);
  port->setUsesLowLatency(true);
  if (!port->open()) {
    const auto error = line->lastError();
    throw Failure{ExitCode::NoPort, error ? openFailureText(*error)
                                          : QStringLiteral("%1 could not be opened.").arg(port->path())};
  }

  int status = 0;
  std::thread worker([&] {
    try {
      Conversation::Trace trace;
      if (options.verbose) trace = [&console](const QString &text) { console.status(text); };
      Conversation conversation(*line, {options.timeout, options.retries}, trace);
      Servo servo(conversation, line->name());
      Session session{servo, *line, console, house.strings};
      waitForBridge(session, options.bootWait);
      plan.work(session);
    } catch (const Failure &failure) {
      status = complain(console, failure);
    }
    house.mainQueue.async([] { QCoreApplication::quit(); });
  });

  const EndingSignal ending(signals, [&] { line->interrupt(); });
  QCoreApplication::exec();
  worker.join();
  port->close();
  return status == static_cast<int>(ExitCode::Interrupted) ? ending.status() : status;
}

/// The port to examine; empty for the first on the bus.
QString portToExamine(House &house, const Options &options) {
  if (options.demo) return startVirtualServo(house);
  return options.port.isEmpty() ? QString()
                                : choosePort(listPorts(house.devices, house.processes), options.port);
}

int examine(House &house, const Options &options, Console &console, int signals) {
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
  const EndingSignal ending(signals, [&] { examination.cancel(); });
  QCoreApplication::exec();
  worker.join();
  return ending.hasCome() ? ending.status() : status;
}

void showPorts(House &house, const Options &options, Console &console) {
  const std::vector<PortInfo> ports = listPorts(house.devices, house.processes);
  console.data(options.json ? portsJson(ports) : portsTable(ports));
}

int run(int argc, char **argv, const CommandLine &line, Console &console) {
  const int signals = endingSignals();
  const QCoreApplication application(argc, argv);
  const Plan plan = planFor(line.options, console);
  const Verb verb = line.options.verb;
  if (!plan.work && verb != Verb::Ports && verb != Verb::Doctor) return 0;
  House house;
  house.strings.setLanguage(QStringLiteral("en"));
  if (plan.work) return workThrough(house, line.options, console, plan, signals);
  if (verb == Verb::Doctor) return examine(house, line.options, console, signals);
  if (line.options.demo) portToUse(house, line.options);
  showPorts(house, line.options, console);
  return 0;
}

}  // namespace

int main(int argc, char **argv) {
  secureStandardStreams();
  QCoreApplication::setApplicationName(QStringLiteral("Tavril"));
  StreamConsole console(stdout, stderr, ::isatty(STDERR_FILENO) != 0);
  QStringList arguments;
  for (int i = 1; i < argc; ++i) arguments.append(QString::fromLocal8Bit(argv[i]));
  const CommandLine line = CommandLine::parse(arguments, QStringLiteral(TAVRIL_VERSION));
  try {
    if (!line.answer) return run(argc, argv, line, console);
    if (line.answer->status != 0) {
      throw Failure{static_cast<ExitCode>(line.answer->status), line.answer->text};
    }
    console.data(line.answer->text);
    return 0;
  } catch (const Failure &failure) {
    return complain(console, failure);
  }
}
