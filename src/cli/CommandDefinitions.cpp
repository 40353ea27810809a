#include "cli/CommandDefinitions.h"

#include "cli/RegisterFacts.h"
#include "cli/Table.h"
#include "wire/Range.h"
#include "wire/Registers.h"

#include <QStringView>

namespace tavril::cli {

namespace {

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

}  // namespace

CommandDefinitions::CommandDefinitions(const QString &version) : app(description, "tavrilctl") {
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
  app.add_option("--boot-wait", bootWait,
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
          "A file made by dump; - is the standard input. Settings that are not in it stay as they are.", true,
          false);
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

CLI::App *CommandDefinitions::verb(Verb which, const char *name, const std::string &text) {
  CLI::App *command = app.add_subcommand(name, text);
  command->footer("\"tavrilctl --help\" lists the common options and the exit status.");
  verbs.emplace_back(command, which);
  return command;
}

void CommandDefinitions::confirmed(CLI::App *command) {
  command->add_flag("-y,--yes", yes, "Confirm it; without, nothing is done.");
}

void CommandDefinitions::changes(CLI::App *command, const char *dryRunText) {
  command->add_flag("-n,--dry-run", dryRun, dryRunText);
  command->add_flag("--force", force, "Also write values that may do harm.");
  asJson(command);
}

void CommandDefinitions::operand(CLI::App *command, const char *name, const std::string &text, bool required,
                                 bool several) {
  CLI::Option *added = command->add_option(name, operands, text)->type_name(name)->required(required);
  if (several) {
    added->expected(1, CLI::detail::expected_max_vector_size);
  } else {
    added->expected(1);
  }
}

const std::pair<CLI::App *, Verb> *CommandDefinitions::chosen() const {
  for (const auto &entry : verbs) {
    if (entry.first->parsed()) return &entry;
  }
  return nullptr;
}

std::vector<OptionEntry> entriesOf(const CLI::App &app) {
  std::vector<OptionEntry> entries;
  for (const CLI::Option *option : app.get_options()) {
    if (option->get_group().empty()) continue;  // hidden
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

CommandBook CommandDefinitions::book(const QString &version) const {
  CommandBook book{QStringLiteral("tavrilctl"),
                   version,
                   QString::fromLatin1(description),
                   {},
                   QString::fromLatin1(exitStatus),
                   QString::fromLatin1(environment),
                   entriesOf(app),
                   {}};
  for (const auto &[command, purpose] : examples) {
    book.examples.push_back({QString::fromLatin1(command), QString::fromLatin1(purpose)});
  }
  for (const auto &[command, which] : verbs) {
    book.commands.push_back({QString::fromStdString(command->get_name()), which,
                             QString::fromStdString(command->get_description()), entriesOf(*command)});
  }
  return book;
}

}  // namespace tavril::cli
