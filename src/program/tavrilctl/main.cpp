// The command line tool as a user starts it: the arguments, Qt, and which work they ask for.
#include "cli/CommandBook.h"
#include "cli/CommandLine.h"
#include "cli/Failure.h"
#include "cli/Files.h"
#include "cli/Options.h"
#include "cli/Plan.h"
#include "cli/Ports.h"
#include "cli/Script.h"
#include "cli/StreamConsole.h"
#include "platform/linux/EndingSignals.h"
#include "platform/linux/StandardStreams.h"
#include "program/tavrilctl/CtlObjects.h"
#include "program/tavrilctl/ReadlineCommands.h"
#include "program/tavrilctl/Work.h"
#include "simulator/Registers.h"

#include <QByteArray>
#include <QCoreApplication>
#include <QString>
#include <QStringList>

#include <array>
#include <csignal>
#include <cstdio>
#include <memory>
#include <optional>
#include <vector>

#include <unistd.h>

namespace {

using namespace tavril;
using namespace tavril::cli;

void showPorts(CtlObjects &objects, const Options &options, Console &console) {
  const std::vector<PortInfo> ports = objects.listedPorts();
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
  CtlObjects objects;
  objects.strings.setLanguage(QStringLiteral("en"));
  try {
    if (plan.work) return workThrough(objects, options, console, plan, &*signals, shell.get());
    if (options.verb == Verb::Doctor) return examine(objects, options, console, &*signals);
    if (options.demo) objects.portToUse(options);
    showPorts(objects, options, console);
    return 0;
  } catch (const Failure &failure) {
    objects.log.warn(failure.text);
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
