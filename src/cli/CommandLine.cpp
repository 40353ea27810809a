#include "cli/CommandLine.h"

#include "cli/Completion.h"
#include "cli/Failure.h"
#include "cli/ManPage.h"

#include <CLI/CLI.hpp>
#include <array>
#include <cmath>
#include <limits>
#include <string>
#include <utility>

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
    {"tavrilctl read kp --demo", "Show one, of the virtual servo: nothing need be plugged in."},
    {"tavrilctl write kp=440 ki=12", "Change two settings; they are read back."},
    {"tavrilctl move 600 --wait", "Turn the servo, and wait until it is there."},
    {"tavrilctl dump servo.json", "Keep its settings in a file, for \"tavrilctl restore\"."},
    {"tavrilctl monitor --interval 200ms --csv log.csv", "Write down what it measures, five times a second."},
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
    "  1  failed\n"
    "  2  the command line was wrong\n"
    "  3  no port: none there, several to choose from, not to be opened, or unplugged\n"
    "  4  no servo behind the bridge, or several\n"
    "  5  a value out of range or not kept; for diff: there are differences\n"
    "  128 and the signal's number when a signal ended it, such as 130 after Ctrl-C\n";

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
  bool demo = false;
  bool verbose = false;
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
    app.footer(examplesText() + "\n" + exitStatus);
    app.require_subcommand(0, 1);  // a second command's name is an operand of the first
    app.fallthrough();             // common options may also stand behind the command
    app.add_option("--port", port, "The port of the servo's adapter. Default: the only USB port there is.")
        ->type_name("NAME|PATH");
    app.add_flag("--demo", demo, "Use the built-in virtual servo, a new one for each run.");
    app.add_option("--timeout", timeout, "How long to wait for each reply, in milliseconds. Default: 300.")
        ->type_name("MS");
    app.add_option("--retries", retries, "How often to send a command again that got no reply. Default: 2.")
        ->type_name("N");
    app.add_option(
           "--boot-wait", bootWait,
           "How long the bridge needs after its port was opened, in seconds. Default: 5; 0 with --demo.")
        ->type_name("SECONDS");
    app.add_flag("--verbose", verbose, "Show each frame in hexadecimal and in words.");
    app.add_option("--generate", generate)->type_name("bash|zsh|fish|man")->group("");  // for the build

    CLI::App *ports = verb(Verb::Ports, "ports", "List the serial ports.");
    ports->add_flag("--json", json, "Print JSON.");
    CLI::App *doctor = verb(Verb::Doctor, "doctor", "Find out why there is no connection, step by step.");
    doctor->add_flag("--json", json, "Print JSON.");
    verb(Verb::Detect, "detect", "Tell whether there is a servo: none, one or several.");
    CLI::App *read = verb(Verb::Read, "read", "Read registers, by key or number, or all.");
    operand(read, "REGISTER", "A register, such as kp or 9.", false, true);
    read->add_flag("--json", json, "Print JSON.");
    CLI::App *write = verb(Verb::Write, "write", "Check the values, write them, read them back.");
    operand(write, "REGISTER=VALUE", "What to write, such as kp=440.", true, true);
    write->add_flag("--dry-run", dryRun, "Send nothing, only show the frames.");
    CLI::App *dump = verb(Verb::Dump, "dump", "Save the fifteen settings as JSON.");
    operand(dump, "FILE", "The file to write; - is the standard output.", true, false);
    dump->add_flag("--force", force, "Replace a file that is there.");
    CLI::App *restore =
        verb(Verb::Restore, "restore", "Write the settings in a file that differ, read them back.");
    operand(restore, "FILE", "A file made by dump. It may have fewer settings; the others stay.", true,
            false);
    restore->add_flag("--dry-run", dryRun, "Write nothing, only show the differences.");
    CLI::App *diff = verb(Verb::Diff, "diff", "Compare the servo with a file, or two files.");
    operand(diff, "FILE", "One file: the servo is compared with it. Two: these are compared.", true, true);
    verb(Verb::Position, "position", "Print the position, 0 to 1023.");
    CLI::App *move = verb(Verb::Move, "move", "Go to a position.");
    operand(move, "POSITION", "0 to 1023.", true, false);
    move->add_flag("--wait", wait, "Wait until the servo has come to rest, and print where.");
    verb(Verb::Release, "release", "Switch the torque off.");
    verb(Verb::Reboot, "reboot", "Reboot the servo.");
    CLI::App *reset = verb(Verb::Reset, "reset", "Restore the factory settings, the servo ID included.");
    reset->add_flag("--yes", yes, "Really do it.");
    CLI::App *monitor =
        verb(Verb::Monitor, "monitor", "Print position, voltage, temperature, load and status.");
    monitor->add_option("--interval", interval, "Time between two samples, in milliseconds. Default: 1000.")
        ->type_name("MS");
    monitor->add_option("--csv", csv, "Write the samples to this file too.")->type_name("FILE");
    monitor->add_option("--count", count, "End after so many samples. Default: at Ctrl-C.")->type_name("N");
    monitor->add_flag("--force", force, "Replace a file that is there.");
    CLI::App *send = verb(Verb::Send, "send", "Send one frame, checked, and tell what the reply says.");
    operand(send, "HEX", "The frame's bytes, such as FF 04 90 FE.", true, true);
  }

  CLI::App *verb(Verb which, const char *name, const char *text) {
    CLI::App *command = app.add_subcommand(name, text);
    command->footer("\"tavrilctl --help\" lists the common options and the exit status.");
    verbs.emplace_back(command, which);
    return command;
  }

  void operand(CLI::App *command, const char *name, const char *text, bool required, bool several) {
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

struct UsageError {
  QString text;
};

milliseconds timeFrom(const char *name, const std::string &text, milliseconds unit, milliseconds least,
                      milliseconds most) {
  const QString typed = QString::fromStdString(text);
  const auto time = durationOf(typed, unit);
  if (time && *time >= least && *time <= most) return *time;
  const auto inUnits = [&](milliseconds bound) {
    return QString::number(bound.count() / unit.count()) +
           (unit.count() == 1 ? QStringLiteral(" ms") : QStringLiteral(" s"));
  };
  throw UsageError{QStringLiteral("%1 takes a time from %2 to %3, not \"%4\".")
                       .arg(QString::fromLatin1(name), inUnits(least), inUnits(most), typed)};
}

int numberFrom(const char *name, const std::string &text, int least, int most) {
  const QString typed = QString::fromStdString(text);
  bool isNumber = false;
  const int number = typed.toInt(&isNumber);
  if (isNumber && number >= least && number <= most) return number;
  throw UsageError{QStringLiteral("%1 takes a number from %2 to %3, not \"%4\".")
                       .arg(QString::fromLatin1(name))
                       .arg(least)
                       .arg(most)
                       .arg(typed)};
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
  for (const std::string &operand : typed.operands) options.operands.append(QString::fromStdString(operand));
  expectText(typed.app, "--port", typed.port, "the name or path of a port, such as /dev/ttyUSB0");
  options.port = QString::fromStdString(typed.port);
  options.demo = typed.demo;
  options.verbose = typed.verbose;
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
    options.csv = QString::fromStdString(typed.csv);
  }
  if (options.demo && !options.port.isEmpty()) {
    throw UsageError{QStringLiteral(
        "--demo and --port exclude each other: the one is the virtual servo, the other a real one.")};
  }
  if (which == Verb::Diff && options.operands.size() > 2) {
    throw UsageError{QStringLiteral("diff takes one file or two.")};
  }
  if (which == Verb::Reset && !options.yes) {
    throw UsageError{
        QStringLiteral("reset overwrites all fifteen settings, the servo ID included: say --yes if that is "
                       "meant, and save them "
                       "with dump first.")};
  }
  return options;
}

QString cleaned(const QString &text) {
  return text.endsWith(u'.') ? text : text + u'.';
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

QString generated(const std::string &kind, const CommandBook &book) {
  if (kind == "bash") return bashCompletion(book);
  if (kind == "zsh") return zshCompletion(book);
  if (kind == "fish") return fishCompletion(book);
  if (kind == "man") return manPage(book);
  throw UsageError{QStringLiteral("--generate takes bash, zsh, fish or man.")};
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
  CommandBook book{QStringLiteral("tavrilctl"),
                   version,
                   QString::fromLatin1(description),
                   {},
                   QString::fromLatin1(exitStatus),
                   entriesOf(definitions.app),
                   {}};
  for (const auto &[command, purpose] : examples) {
    book.examples.push_back({QString::fromLatin1(command), QString::fromLatin1(purpose)});
  }
  for (const auto &[command, which] : definitions.verbs) {
    book.commands.push_back({QString::fromStdString(command->get_name()),
                             QString::fromStdString(command->get_description()), entriesOf(*command)});
  }
  return book;
}

CommandLine CommandLine::parse(const QStringList &arguments, const QString &version) {
  Definitions definitions(version);
  CommandLine line;
  try {
    std::vector<std::string> reversed;  // so the library wants them
    for (const QString &argument : arguments) reversed.insert(reversed.begin(), argument.toStdString());
    definitions.app.parse(std::move(reversed));
    if (!definitions.generate.empty()) {
      line.answer = Answer{generated(definitions.generate, book(version)), 0};
    } else if (!definitions.chosen()) {
      throw UsageError{QStringLiteral("a command is missing.")};
    } else {
      line.options = optionsFrom(definitions);
    }
  } catch (const CLI::CallForHelp &) {
    const auto *chosen = definitions.chosen();
    const CLI::App &asked = chosen ? *chosen->first : definitions.app;
    line.answer = Answer{QString::fromStdString(chosen ? asked.help("tavrilctl") : asked.help()), 0};
  } catch (const CLI::CallForVersion &call) {
    line.answer = Answer{QString::fromStdString(call.what()) + u'\n', 0};
  } catch (const CLI::ParseError &error) {
    line.answer = Answer{cleaned(QString::fromStdString(error.what())), static_cast<int>(ExitCode::Usage)};
  } catch (const UsageError &error) {
    line.answer = Answer{error.text, static_cast<int>(ExitCode::Usage)};
  }
  if (line.answer && line.answer->status != 0) {
    line.answer->text += QStringLiteral(" \"tavrilctl --help\" lists the commands and options.");
  }
  return line;
}

}  // namespace tavril::cli
