#include "program/tavrilctl/Work.h"

#include "cli/Console.h"
#include "cli/DoctorReport.h"
#include "cli/Failure.h"
#include "cli/FrameWords.h"
#include "cli/Options.h"
#include "cli/Plan.h"
#include "cli/Session.h"
#include "doctor/Examination.h"
#include "platform/linux/EndingSignals.h"
#include "program/tavrilctl/CtlObjects.h"
#include "program/tavrilctl/ReadlineCommands.h"
#include "serial/PortError.h"
#include "serial/SerialPort.h"
#include "serial/line/SerialLine.h"
#include "servo/Servo.h"

#include <QCoreApplication>
#include <QSocketNotifier>
#include <QString>
#include <QTimer>

#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <functional>
#include <memory>
#include <optional>
#include <thread>

namespace tavril::cli {

namespace {

/// Ends the program if the work does not notice soon that it is to end. It cannot while it waits for the
/// reader of a pipe, or for input.
void endSoon(int signal, const std::function<void()> &cleanUp) {
  constexpr std::chrono::milliseconds longestEnd{500};
  QTimer::singleShot(longestEnd, QCoreApplication::instance(), [signal, cleanUp] {
    cleanUp();
    std::_Exit(EndingSignals::exitStatus(signal));
  });
}

std::unique_ptr<QSocketNotifier> listen(const EndingSignals *signals, const std::function<void(int)> &act) {
  return signals ? signals->listen(act) : nullptr;
}

}  // namespace

int complain(Console &console, const Failure &failure) {
  if (!failure.text.isEmpty()) console.status(QStringLiteral("tavrilctl: ") + failure.text);
  return static_cast<int>(failure.code);
}

int workThrough(CtlObjects &objects, const Options &options, Console &console, const Plan &plan,
                const EndingSignals *signals, ReadlineCommands *shell) {
  const std::shared_ptr<SerialPort> port = objects.portAt(objects.portToUse(options));
  const auto line = SerialLine::open(objects.serial.background, objects.log, port);
  if (!port->isOpen()) {
    const auto error = line->lastError();
    throw Failure{ExitCode::NoPort, error ? openFailureText(*error)
                                          : QStringLiteral("%1 could not be opened.").arg(port->path())};
  }

  const QString portName = port->name();
  int status = 0;
  std::atomic<bool> isEnding = false;
  std::thread worker([&] {
    try {
      const auto trace = [&](const servo::Event &event) {
        const QString text = eventInWords(event);
        objects.log.write(text);
        if (options.verbose) console.status(text);
      };
      servo::Servo servo(*line, {options.timeout, options.retries}, trace);
      Session session{servo, *line, portName, console, objects.strings};
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
      objects.log.warn(failure.text);
      status = complain(console, failure);
    }
    objects.mainQueue.async([] { QCoreApplication::quit(); });
  });

  std::optional<int> statusOfSignal;
  const auto listening = listen(signals, [&](int signal) {
    const bool ends = !shell || signal != SIGINT;
    isEnding = ends;
    line->cancel();
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

int examine(CtlObjects &objects, const Options &options, Console &console, const EndingSignals *signals) {
  doctor::Request request;
  request.path = objects.portToExamine(options);
  request.bootWait = options.bootWait;
  request.timeout = options.timeout;
  request.retries = options.retries;
  doctor::Examination examination({objects.bus, objects.nodes, objects.processes, objects.terminal}, request);
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
                                            if (!options.json) print(doctorLines(result, objects.strings));
                                          }});
    if (options.json && !examination.isCancelled()) print(doctorJson(results, objects.strings));
    if (status == 0) status = static_cast<int>(doctorStatus(results));
    objects.mainQueue.async([] { QCoreApplication::quit(); });
  });
  std::optional<int> statusOfSignal;
  const auto listening = listen(signals, [&](int signal) {
    statusOfSignal = EndingSignals::exitStatus(signal);
    examination.cancel();
    endSoon(signal, [] {});
  });
  QCoreApplication::exec();
  worker.join();
  return statusOfSignal.value_or(status);
}

}  // namespace tavril::cli
