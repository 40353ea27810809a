#include "simulator/CommandLine.h"
#include "simulator/PortLink.h"
#include "simulator/StateFile.h"
#include "simulator/VirtualServo.h"

#include <QByteArray>
#include <QCoreApplication>
#include <QDateTime>
#include <QFile>
#include <QFileInfo>
#include <QIODevice>
#include <QObject>
#include <QSocketNotifier>
#include <QString>

#include <cerrno>
#include <csignal>
#include <cstdio>

#include <sys/eventfd.h>
#include <sys/signalfd.h>

namespace {

using namespace tavril::simulator;

constexpr int exitFailed = 1;
constexpr int exitBadArguments = 2;

/// Makes the signals that end a program readable from a descriptor. Must come before any thread is started,
/// because threads take over which signals are blocked.
FileDescriptor endingSignals() {
  sigset_t signals;
  sigemptyset(&signals);
  sigaddset(&signals, SIGINT);
  sigaddset(&signals, SIGTERM);
  sigaddset(&signals, SIGHUP);
  pthread_sigmask(SIG_BLOCK, &signals, nullptr);
  // If the reader of the output ends, the program must still remove its link.
  ::signal(SIGPIPE, SIG_IGN);
  return FileDescriptor(::signalfd(-1, &signals, SFD_CLOEXEC | SFD_NONBLOCK));
}

int refuse(const QString &why, int exitCode) {
  std::fprintf(stderr, "tavril-servo: %s\n", qPrintable(why));
  return exitCode;
}

void writeLine(QFile &log, const QString &line) {
  const QString stamp = QDateTime::currentDateTime().toString(QStringLiteral("yyyy-MM-dd HH:mm:ss.zzz"));
  log.write((stamp + u' ' + line + u'\n').toUtf8());
  log.flush();
}

int serve(CommandLine &commandLine, const FileDescriptor &signals) {
  QFile log(commandLine.logFile);
  const bool opened = commandLine.logFile.isEmpty() ? log.open(stderr, QIODevice::WriteOnly)
                                                    : log.open(QIODevice::WriteOnly | QIODevice::Truncate);
  if (!opened) {
    return refuse(QStringLiteral("cannot write %1: %2").arg(commandLine.logFile, log.errorString()),
                  exitFailed);
  }
  VirtualServo *running = nullptr;
  QByteArray saved;
  QString lastProblem;
  // Saves the settings if they have changed. False if the file does not have them.
  const auto keepState = [&] {
    if (commandLine.state.isEmpty() || !running) return true;
    QByteArray text;
    running->withModel([&](const ServoModel &model) { text = stateText(model); });
    if (text == saved) return true;
    QString why;
    const bool isSaved = saveState(commandLine.state, text, &why);
    if (isSaved) {
      saved = text;
    } else if (why != lastProblem) {
      refuse(QStringLiteral("the settings could not be saved: ") + why, 0);
    }
    lastProblem = why;
    return isSaved;
  };
  // Called on the server's thread, for each command and reply.
  commandLine.options.log = [&](const QString &line) {
    writeLine(log, line);
    keepState();
  };
  const FileDescriptor plugPulled(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK));
  if (!plugPulled.valid()) {
    return refuse(QStringLiteral("cannot wait for the plug: %1").arg(qt_error_string(errno)), exitFailed);
  }
  // Called on the server's thread. A descriptor wakes the main thread. The thread sanitizer would report a
  // posted call, because it does not see Qt's locks.
  commandLine.options.unplugged = [&plugPulled] { ::eventfd_write(plugPulled.get(), 1); };

  PortLink link;
  VirtualServo servo(commandLine.options);
  QString error;
  for (const QString &file : {commandLine.from, commandLine.state}) {
    if (file.isEmpty() || (file == commandLine.state && !QFileInfo::exists(file))) continue;
    bool isLoaded = false;
    servo.withModel([&](ServoModel &model) { isLoaded = loadState(file, model, &error); });
    if (!isLoaded) return refuse(error, exitFailed);
  }
  running = &servo;
  keepState();
  if (!servo.start(&error)) return refuse(error, exitFailed);
  if (!commandLine.link.isEmpty() && !link.create(commandLine.link, servo.path(), &error)) {
    return refuse(error, exitFailed);
  }
  // Printed after the link was made, because a reader of the path may use the link.
  std::printf("%s\n", qPrintable(servo.path()));
  std::fflush(stdout);

  const QSocketNotifier ending(signals.get(), QSocketNotifier::Read);
  const QSocketNotifier unplugged(plugPulled.get(), QSocketNotifier::Read);
  for (const QSocketNotifier *end : {&ending, &unplugged}) {
    QObject::connect(end, &QSocketNotifier::activated, QCoreApplication::instance(), &QCoreApplication::quit);
  }
  const int status = QCoreApplication::exec();
  servo.stop();
  return keepState() ? status : exitFailed;
}

}  // namespace

int main(int argc, char **argv) {
  const FileDescriptor signals = endingSignals();
  QCoreApplication application(argc, argv);
  CommandLine commandLine = CommandLine::parse(QCoreApplication::arguments());
  switch (commandLine.action) {
    case CommandLine::Action::Refuse:
      return refuse(commandLine.text + QStringLiteral("\nTry 'tavril-servo --help'."), exitBadArguments);
    case CommandLine::Action::ShowText:
      std::fputs(qPrintable(commandLine.text), stdout);
      return 0;
    case CommandLine::Action::Serve:
      break;
  }
  return serve(commandLine, signals);
}
