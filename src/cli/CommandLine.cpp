#include "cli/CommandLine.h"

#include "cli/CommandDefinitions.h"
#include "cli/Completion.h"
#include "cli/Failure.h"
#include "cli/Files.h"
#include "cli/ManPage.h"
#include "cli/RegisterFacts.h"
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

Options optionsFrom(const CommandDefinitions &typed) {
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
QString problemWith(const CLI::ParseError &error, const CommandDefinitions &definitions) {
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
  return CommandDefinitions(version).book(version);
}

CommandLine CommandLine::parse(const QStringList &arguments, const QString &version,
                               std::span<const int> defaults) {
  CommandDefinitions definitions(version);
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
