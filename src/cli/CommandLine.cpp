#include "cli/CommandLine.h"

#include "cli/Completion.h"
#include "cli/Failure.h"
#include "cli/Files.h"
#include "cli/ManPage.h"
#include "cli/RegisterFacts.h"
#include "cli/Table.h"
#include "wire/Range.h"

#include <QByteArray>
#include <QStringView>

#include <CLI/CLI.hpp>
#include <array>
#include <cmath>
#include <limits>
#include <string>
#include <utility>
#include <vector>

namespace tavril::cli {

namespace {

using std::chrono::milliseconds;

constexpr milliseconds longestTimeout = std::chrono::minutes(1);
constexpr milliseconds longestWait = std::chrono::minutes(10);
constexpr milliseconds longestInterval = std::chrono::hours(1);
constexpr int mostRetries = 100;

const char *const description =
    "Sets up one intelligent servo behind a USB serial bridge, from scripts and over ssh.\n"
    "Data goes to the standard output, everything else to the standard error output.";

constexpr std::pair<const char *, const char *> examples[]{
    {"tavrilctl doctor", "Find out why there is no connection."},
    {"tavrilctl read", "Show all twenty registers of the servo."},
    {"tavrilctl read kp --demo", "Read one register of the virtual servo. No hardware is needed."},
    {"tavrilctl write kp=440 over_load=300ms", "Change two settings, and read them back."},
    {"tavrilctl move 90deg --wait", "Turn the servo, and wait until it is there."},
    {"tavrilctl dump servo.json", "Save its settings in a file, for \"tavrilctl restore\"."},
    {"tavrilctl restore servo.json --except sid", "Write them to another servo, which keeps its own ID."},
    {"tavrilctl monitor --interval 200ms --csv log.csv", "Save what it measures, five times a second."},
    {"tavrilctl run setup.txt", "Carry out the commands in a file, with the port opened once."},
};

std::string examplesText() {
  std::string text = "Examples:\n";
  for (const auto &[command, purpose] : examples)
    text += "  " + std::string(command) + "\n      " + purpose + "\n";
  return text;
}

const char *const exitStatus =
    "Exit status:\n"
    "  0  done\n"
    "  1  the answer is no: diff has found differences\n"
    "  2  the command line is not valid\n"
    "  3  no port: none found, several to choose from, not to be opened, or unplugged\n"
    "  4  no servo behind the bridge, or several\n"
    "  5  a value is out of range, may do harm, or was not kept by the servo\n"
    "  6  failed in any other way: no answer, a file that cannot be read or written\n"
    "  128 and the number of the signal if a signal ended it, such as 130 after Ctrl-C\n"
    "  141  the reader of the output has gone\n";

const char *const environment =
    "Environment:\n"
    "  TAVRIL_PORT  the port, if neither --port nor --demo is given\n"
    "  TAVRIL_LOG   1: print the log as well; 0: write no log (default: to the system log)\n";

/// What can be written, for the help of the commands that write.
std::string settingsText() {
  Table table;
  for (const wire::Register &row : wire::settingRegisters) {
    const QString unit = unitOf(row);
    table.addRow({QStringLiteral("  ") + keyOf(row), textOf(row.range),
                  unit.isEmpty() ? QString() : QStringLiteral("in ") + unit,
                  QStringView(row.meaning).toString()});
  }
  return "Settings:\n" + table.text().toStdString() +
         "Where the unit is known, a value may be written with it: over_load=300ms, max_temperature=75C.\n";
}

/// CLI11 takes "[a,b]" for a list of two texts, in some versions everywhere. So it gets a zero, which no
/// argument has, in the place of each bracket. Its own inverse.
std::string withoutBrackets(std::string text) {
  for (char &c : text) {
    if (c == '[' || c == '\0') c = c == '[' ? '\0' : '[';
  }
  return text;
}

/// A text that the library hands out, as it was typed.
QString typedText(const std::string &text) {
  return textOf(QByteArray::fromStdString(withoutBrackets(text)));
}

/// The definitions, and the texts that parsing fills in. All of it in one place: help, completion and manual
/// page are read from here.
struct Definitions {
  CLI::App app{description, "tavrilctl"};

  std::string port;
  std::string timeout;
  std::string retries;
  std::string bootWait;
  std::string interval;
  std::string csv;
  std::string count;
  std::string generate;
  std::vector<std::string> except;
  bool demo = false;
  bool verbose = false;
  bool quiet = false;
  bool names = false;
  bool keepGoing = false;
  bool json = false;
  bool dryRun = false;
  bool force = false;
  bool wait = false;
  bool yes = false;
  std::vector<std::string> operands;
  std::vector<std::pair<CLI::App *, Verb>> verbs;

  explicit Definitions(const QString &version) {
    app.set_version_flag("--version", "tavrilctl " + version.toStdString(), "Print the version and exit.");
    app.set_help_flag("-h,--help", "Print this help and exit.");
    app.footer(examplesText() + "\n" + exitStatus + "\n" + environment);
    app.require_subcommand(0, 1);  // a second command's name is an operand of the first
    app.fallthrough();             // common options may also stand behind the command
    app.add_option("-p,--port", port,
                   "The port of the servo's adapter. Default: TAVRIL_PORT, or the USB port if exactly one is "
                   "present.")
        ->type_name("NAME|PATH");
    app.add_flag("--demo", demo, "Use the built-in virtual servo, a new one for each run.");
    app.add_option("--timeout", timeout, "How long to wait for each reply, in milliseconds. Default: 300.")
        ->type_name("MS");
    app.add_option("--retries", retries, "How often to send a command again that got no reply. Default: 2.")
        ->type_name("N");
    app.add_option(
           "--boot-wait", bootWait,
           "How long the bridge may take to answer after its port was opened, in seconds. Default: 5; "
           "0 with --demo.")
        ->type_name("SECONDS");
    app.add_flag("-v,--verbose", verbose, "Show each frame in hexadecimal and in words.");
    app.add_flag("-q,--quiet", quiet, "Print data and errors only.");
    app.add_option("--generate", generate)->type_name("bash|zsh|fish|man|registers")->group("");

    CLI::App *ports = verb(Verb::Ports, "ports", "List the serial ports.");
    asJson(ports);
    ports->add_flag("--names", names, "Print the names only, one per line.");
    asJson(verb(Verb::Doctor, "doctor", "Find out why there is no connection, step by step."));
    asJson(verb(Verb::Detect, "detect", "Tell whether there is a servo: none, one or several."));
    CLI::App *read = verb(Verb::Read, "read", "Read registers, by key or number, or all.");
    operand(read, "REGISTER", "A register, such as kp or 9.", false, true);
    asJson(read);
    CLI::App *write = verb(Verb::Write, "write", "Check the values, write them, read them back.");
    operand(write, "ASSIGNMENT", "What to write, such as kp=440.", true, true);
    changes(write, "Send nothing, only show the frames.");
    write->footer(settingsText() + "\n" + write->get_footer());
    CLI::App *setId = verb(Verb::SetId, "set-id", "Give the servo another ID, and find it again.");
    const wire::Register &id = *wire::findRegister(wire::RegisterNumber::ServoId);
    operand(setId, "ID", textOf(id.range).toStdString() + ".", true, false);
    changes(setId, "Send nothing, only show the frame.");
    CLI::App *dump = verb(Verb::Dump, "dump", "Save the fifteen settings as JSON.");
    operand(dump, "FILE", "The file to write; - is the standard output.", true, false);
    dump->add_flag("--force", force, "Replace the file if it exists.");
    CLI::App *restore =
        verb(Verb::Restore, "restore", "Write the settings of a file that differ, read them back.");
    operand(restore, "FILE",
            "A file made by dump; - is the standard input. Settings that are not in it stay as they are.",
            true, false);
    changes(restore, "Write nothing, only show the differences.");
    restore->add_option("--except", except, "Leave this setting as it is. May be given several times.")
        ->type_name("SETTING")
        ->allow_extra_args(false);
    CLI::App *diff = verb(Verb::Diff, "diff", "Compare the servo with a file, or two files.");
    operand(diff, "FILE",
            "One file: the servo is compared with it. Two: they are compared. - is the standard input.", true,
            true);
    asJson(diff);
    const std::string positions = textOf(wire::positionRange).toStdString();
    asJson(verb(Verb::Position, "position", "Print the position, " + positions + "."));
    CLI::App *move = verb(Verb::Move, "move", "Go to a position.");
    operand(move, "POSITION",
            positions + ", or degrees such as 90deg, " + textOf(wire::wholeDegrees).toStdString() + ".", true,
            false);
    move->add_flag("--wait", wait, "Wait until the servo has come to rest, and print where.");
    asJson(move);
    asJson(verb(Verb::Stop, "stop",
                "Stop a movement: set the goal to where the servo is. A moving servo overruns it a little "
                "and returns."));
    verb(Verb::Release, "release", "Switch the torque off.");
    confirmed(verb(Verb::Reboot, "reboot", "Reboot the servo."));
    confirmed(verb(Verb::Reset, "reset", "Restore the factory settings, the servo ID included."));
    CLI::App *monitor =
        verb(Verb::Monitor, "monitor", "Print position, voltage, temperature, load and status.");
    monitor->add_option("--interval", interval, "Time between two samples, in milliseconds. Default: 1000.")
        ->type_name("MS");
    monitor
        ->add_option(
            "--csv", csv,
            "Write the samples to this file too; - is the standard output, then nothing else is printed.")
        ->type_name("FILE");
    monitor->add_option("--count", count, "End after so many samples. Default: at Ctrl-C.")->type_name("N");
    monitor->add_flag("--force", force, "Replace the file if it exists.");
    monitor->add_flag("--json", json, "Print a JSON object per line, with the time of day.");
    CLI::App *send = verb(Verb::Send, "send", "Check one frame, send it, and show the reply.");
    operand(send, "HEX", "The frame's bytes, such as FF 04 90 FE.", true, true);
    send->add_flag("-y,--yes", yes,
                   "Confirm a frame that reboots or resets the servo, or whose value may do harm.");
    asJson(send);
    CLI::App *run =
        verb(Verb::Run, "run", "Carry out the commands of a file, one per line, and open the port once.");
    operand(run, "FILE", "The commands, without \"tavrilctl\"; - is the standard input. # begins a comment.",
            true, false);
    run->add_flag("--keep-going", keepGoing, "Go on after a command that fails.");
    verb(Verb::Shell, "shell", "Ask for commands, with history and completion, and open the port once.");
  }

  CLI::App *verb(Verb which, const char *name, const std::string &text) {
    CLI::App *command = app.add_subcommand(name, text);
    command->footer("\"tavrilctl --help\" lists the common options and the exit status.");
    verbs.emplace_back(command, which);
    return command;
  }

  void asJson(CLI::App *command) { command->add_flag("--json", json, "Print JSON."); }
  void confirmed(CLI::App *command) {
    command->add_flag("-y,--yes", yes, "Confirm it; without, nothing is done.");
  }
  void changes(CLI::App *command, const char *dryRunText) {
    command->add_flag("-n,--dry-run", dryRun, dryRunText);
    command->add_flag("--force", force, "Also write values that may do harm.");
    asJson(command);
  }

  void operand(CLI::App *command, const char *name, const std::string &text, bool required, bool several) {
    CLI::Option *added = command->add_option(name, operands, text)->type_name(name)->required(required);
    if (several) {
      added->expected(1, CLI::detail::expected_max_vector_size);
    } else {
      added->expected(1);
    }
  }

  const std::pair<CLI::App *, Verb> *chosen() const {
    for (const auto &entry : verbs) {
      if (entry.first->parsed()) return &entry;
    }
    return nullptr;
  }
};

std::vector<OptionEntry> entriesOf(const CLI::App &app);

struct UsageError {
  QString text;
};

/// The nearest of the names, as a question; empty where none is near.
QString didYouMean(const QString &typed, const QStringList &names) {
  const QString near = nearestOf(typed, names);
  return near.isEmpty() ? QString() : QStringLiteral(" Did you mean %1?").arg(near);
}

QStringList namesOf(const std::vector<OptionEntry> &entries) {
  QStringList names;
  for (const OptionEntry &entry : entries) names += entry.names;
  return names;
}

milliseconds timeFrom(const char *name, const std::string &text, milliseconds unit, milliseconds least,
                      milliseconds most) {
  const QString typed = typedText(text);
  const auto time = durationOf(typed, unit);
  if (time && *time >= least && *time <= most) return *time;
  const auto inUnits = [&](milliseconds bound) {
    return QString::number(bound.count() / unit.count()) +
           (unit.count() == 1 ? QStringLiteral(" ms") : QStringLiteral(" s"));
  };
  throw UsageError{QStringLiteral("%1 takes a time from %2 to %3, not \"%4\".")
                       .arg(QString::fromLatin1(name), inUnits(least), inUnits(most), shown(typed))};
}

int numberFrom(const char *name, const std::string &text, int least, int most) {
  const QString typed = typedText(text);
  bool isNumber = false;
  const int number = typed.toInt(&isNumber);
  if (isNumber && number >= least && number <= most) return number;
  throw UsageError{QStringLiteral("%1 takes a number from %2 to %3, not \"%4\".")
                       .arg(QString::fromLatin1(name))
                       .arg(least)
                       .arg(most)
                       .arg(shown(typed))};
}

void expectText(const CLI::App &app, const char *name, const std::string &text, const char *what) {
  if (app.count(name) > 0 && text.empty()) {
    throw UsageError{
        QStringLiteral("%1 needs %2.").arg(QString::fromLatin1(name), QString::fromLatin1(what))};
  }
}

Options optionsFrom(const Definitions &typed) {
  const auto &[command, which] = *typed.chosen();
  Options options;
  options.verb = which;
  for (const CLI::Option *option : command->get_options()) {
    if (!option->get_positional()) continue;
    // Not what the library makes of them, to which "{}" may be an empty list.
    for (const std::string &operand : option->results()) options.operands.append(typedText(operand));
  }
  expectText(typed.app, "--port", typed.port, "the name or path of a port, such as /dev/ttyUSB0");
  options.port = typedText(typed.port);
  options.demo = typed.demo;
  options.verbose = typed.verbose;
  options.quiet = typed.quiet;
  if (options.quiet && options.verbose) {
    throw UsageError{QStringLiteral("--quiet and --verbose cannot be used together.")};
  }
  options.names = typed.names;
  options.keepGoing = typed.keepGoing;
  for (const std::string &keys : typed.except) {
    options.except += typedText(keys).split(u',');
  }
  if (options.except.contains(QString())) {
    throw UsageError{QStringLiteral("--except needs the key of a setting, such as sid.")};
  }
  if (typed.demo) options.bootWait = milliseconds(0);
  if (typed.app.count("--timeout") > 0) {
    options.timeout = timeFrom("--timeout", typed.timeout, milliseconds(1), milliseconds(1), longestTimeout);
  }
  if (typed.app.count("--retries") > 0) {
    options.retries = numberFrom("--retries", typed.retries, 0, mostRetries);
  }
  if (typed.app.count("--boot-wait") > 0) {
    options.bootWait =
        timeFrom("--boot-wait", typed.bootWait, std::chrono::seconds(1), milliseconds(0), longestWait);
  }
  options.json = typed.json;
  options.dryRun = typed.dryRun;
  options.force = typed.force;
  options.wait = typed.wait;
  options.yes = typed.yes;
  if (which == Verb::Monitor) {
    if (command->count("--interval") > 0) {
      options.interval =
          timeFrom("--interval", typed.interval, milliseconds(1), milliseconds(0), longestInterval);
    }
    if (command->count("--count") > 0) {
      options.count = numberFrom("--count", typed.count, 1, std::numeric_limits<int>::max());
    }
    expectText(*command, "--csv", typed.csv, "the name of a file");
    options.csv = typedText(typed.csv);
    if (options.csv == u"-" && options.json) {
      throw UsageError{
          QStringLiteral("--csv - and --json cannot be used together: both print to the standard output.")};
    }
  }
  if (options.demo && !options.port.isEmpty()) {
    throw UsageError{QStringLiteral(
        "--demo and --port cannot be used together: --demo is the virtual servo, --port a real one.")};
  }
  const bool namesFiles =
      which == Verb::Dump || which == Verb::Restore || which == Verb::Diff || which == Verb::Run;
  if (namesFiles && options.operands.contains(QString())) {
    throw UsageError{
        QStringLiteral("%1 needs the name of a file.").arg(QString::fromStdString(command->get_name()))};
  }
  if (options.names && options.json) {
    throw UsageError{QStringLiteral("--names and --json cannot be used together: choose one form.")};
  }
  if (which == Verb::Diff && options.operands.size() > 2) {
    throw UsageError{QStringLiteral("diff takes one file or two.")};
  }
  if (which == Verb::Diff && options.operands == QStringList{QStringLiteral("-"), QStringLiteral("-")}) {
    throw UsageError{QStringLiteral("diff can read the standard input only once.")};
  }
  if (which == Verb::Reset && !options.yes) {
    throw UsageError{QStringLiteral(
        "reset overwrites all fifteen settings, the servo ID included. Save them with dump first, "
        "and confirm with --yes.")};
  }
  if (which == Verb::Reboot && !options.yes) {
    throw UsageError{QStringLiteral("reboot restarts the servo. Confirm with --yes.")};
  }
  return options;
}

/// What is wrong with the arguments, in our words.
QString problemWith(const CLI::ParseError &error, const Definitions &definitions) {
  const auto *chosen = definitions.chosen();
  const CLI::App &app = chosen ? *chosen->first : definitions.app;
  const QString program = QString::fromStdString(app.get_name());
  if (const std::vector<std::string> extras = definitions.app.remaining(true); !extras.empty()) {
    const QString extra = typedText(extras.front());
    if (extra.startsWith(u'-')) {
      const QStringList known = namesOf(entriesOf(definitions.app)) + namesOf(entriesOf(app));
      return QStringLiteral("%1 has no option \"%2\".%3")
          .arg(program, shown(extra), didYouMean(extra, known));
    }
    if (chosen)
      return QStringLiteral("%1 takes no further argument, but \"%2\" was given.").arg(program, shown(extra));
    QStringList commands;
    for (const auto &[command, which] : definitions.verbs) {
      commands.append(QString::fromStdString(command->get_name()));
    }
    return QStringLiteral("there is no command \"%1\".%2").arg(shown(extra), didYouMean(extra, commands));
  }
  if (dynamic_cast<const CLI::RequiredError *>(&error) != nullptr) {
    for (const OptionEntry &entry : entriesOf(app)) {
      if (entry.required) return QStringLiteral("%1 lacks its argument %2.").arg(program, entry.value);
    }
  }
  // The library names the option first.
  const QString name = QString::fromStdString(error.what()).section(u':', 0, 0);
  for (const CLI::App *place : {&definitions.app, &app}) {
    for (const OptionEntry &entry : entriesOf(*place)) {
      if (!entry.names.contains(name)) continue;
      if (entry.value.isEmpty()) return QStringLiteral("%1 takes no value.").arg(name);
      const CLI::Option *option = place->get_option_no_throw(name.toStdString());
      if (option && option->count() > 1) return QStringLiteral("%1 was given more than once.").arg(name);
      return QStringLiteral("%1 lacks its value, %2.").arg(name, entry.value);
    }
  }
  return QStringLiteral("the arguments cannot be understood.");
}

/// What is hidden has no group.
std::vector<OptionEntry> entriesOf(const CLI::App &app) {
  std::vector<OptionEntry> entries;
  for (const CLI::Option *option : app.get_options()) {
    if (option->get_group().empty()) continue;
    OptionEntry entry;
    for (const std::string &name : option->get_snames())
      entry.names.append(u'-' + QString::fromStdString(name));
    for (const std::string &name : option->get_lnames()) {
      entry.names.append(QStringLiteral("--") + QString::fromStdString(name));
    }
    if (option->get_expected_max() > 0) entry.value = QString::fromStdString(option->get_type_name());
    entry.description = QString::fromStdString(option->get_description());
    entry.required = option->get_required();
    entry.repeated = option->get_expected_max() > 1;
    entries.push_back(entry);
  }
  return entries;
}

QString generated(const std::string &kind, const CommandBook &book, std::span<const int> defaults) {
  if (kind == "bash") return bashCompletion(book);
  if (kind == "zsh") return zshCompletion(book);
  if (kind == "fish") return fishCompletion(book);
  if (kind == "man") return manPage(book, defaults);
  if (kind == "registers") return registerListInMarkdown(defaults);
  throw UsageError{QStringLiteral("--generate takes bash, zsh, fish, man or registers.")};
}

}  // namespace

std::optional<milliseconds> durationOf(const QString &text, milliseconds unit) {
  QString number = text;
  if (number.endsWith(u"ms")) {
    number.chop(2);
    unit = milliseconds(1);
  } else if (number.endsWith(u's')) {
    number.chop(1);
    unit = std::chrono::seconds(1);
  }
  bool isNumber = false;
  const double value = number.toDouble(&isNumber);
  const double time = value * static_cast<double>(unit.count());
  constexpr double longest = 1e12;
  if (!isNumber || !(time >= 0.0) || time > longest) return std::nullopt;
  return milliseconds(static_cast<milliseconds::rep>(std::ceil(time)));
}

CommandBook CommandLine::book(const QString &version) {
  const Definitions definitions(version);
  CommandBook book{QStringLiteral("tavrilctl"),      version,
                   QString::fromLatin1(description), {},
                   QString::fromLatin1(exitStatus),  QString::fromLatin1(environment),
                   entriesOf(definitions.app),       {}};
  for (const auto &[command, purpose] : examples) {
    book.examples.push_back({QString::fromLatin1(command), QString::fromLatin1(purpose)});
  }
  for (const auto &[command, which] : definitions.verbs) {
    book.commands.push_back({QString::fromStdString(command->get_name()), which,
                             QString::fromStdString(command->get_description()), entriesOf(*command)});
  }
  return book;
}

CommandLine CommandLine::parse(const QStringList &arguments, const QString &version,
                               std::span<const int> defaults) {
  Definitions definitions(version);
  CommandLine line;
  try {
    std::vector<std::string> reversed;  // so the library wants them
    for (const QString &argument : arguments) {
      reversed.insert(reversed.begin(), withoutBrackets(bytesOf(argument).toStdString()));
    }
    definitions.app.parse(std::move(reversed));
    if (!definitions.generate.empty()) {
      line.answer = Answer{generated(definitions.generate, book(version), defaults), 0};
    } else if (!definitions.chosen()) {
      throw UsageError{QStringLiteral("no command was given.")};
    } else {
      line.options = optionsFrom(definitions);
      for (const CLI::Option *option : definitions.app.get_options()) {
        if (option->count() > 0)
          line.common.append(QStringLiteral("--") + QString::fromStdString(option->get_lnames().front()));
      }
    }
  } catch (const CLI::CallForHelp &) {
    const auto *chosen = definitions.chosen();
    const CLI::App &asked = chosen ? *chosen->first : definitions.app;
    line.answer = Answer{QString::fromStdString(chosen ? asked.help("tavrilctl") : asked.help()), 0};
  } catch (const CLI::CallForVersion &call) {
    line.answer = Answer{QString::fromStdString(call.what()) + u'\n', 0};
  } catch (const CLI::ParseError &error) {
    line.answer = Answer{problemWith(error, definitions), static_cast<int>(ExitCode::Usage)};
  } catch (const UsageError &error) {
    line.answer = Answer{error.text, static_cast<int>(ExitCode::Usage)};
  }
  if (line.answer && line.answer->status != 0) {
    line.answer->text += QStringLiteral(" \"tavrilctl --help\" lists the commands and options.");
  }
  return line;
}

}  // namespace tavril::cli
