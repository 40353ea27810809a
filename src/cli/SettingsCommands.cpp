#include "cli/SettingsCommands.h"

#include "cli/Console.h"
#include "cli/Failure.h"
#include "cli/Progress.h"
#include "cli/RegisterFacts.h"
#include "cli/Servo.h"
#include "cli/Session.h"
#include "cli/Table.h"

#include <algorithm>
#include <set>
#include <vector>

namespace tavril::cli {

namespace {

constexpr int servoId = 1;

QString keyOf(int number) {
  return findRegister(number)->nameKey.toString();
}

/// What the servo holds of these settings.
Settings readSettings(Session &session, const std::vector<int> &numbers) {
  Progress progress(session.console, session.line, QStringLiteral("settings read"),
                    static_cast<int>(numbers.size()));
  Settings settings;
  for (const int number : numbers) {
    settings[number] = session.servo.read(*findRegister(number));
    progress.done(static_cast<int>(settings.size()));
  }
  return settings;
}

std::vector<int> numbersOf(const Settings &settings) {
  std::vector<int> numbers;
  for (const auto &[number, value] : settings) numbers.push_back(number);
  return numbers;
}

struct Change {
  int number;
  int from;
  int to;
};

/// The servo ID comes last: should the servo be hard to reach under its new one, all else is done.
std::vector<Change> changesBetween(const Settings &held, const Settings &wanted) {
  std::vector<Change> changes;
  for (const auto &[number, value] : wanted) {
    if (held.at(number) != value) changes.push_back({number, held.at(number), value});
  }
  std::stable_partition(changes.begin(), changes.end(),
                        [](const Change &change) { return change.number != servoId; });
  return changes;
}

/// How many could not be set.
int writeChanges(Session &session, const std::vector<Change> &changes) {
  Progress progress(session.console, session.line, QStringLiteral("settings written"),
                    static_cast<int>(changes.size()));
  int tried = 0;
  int notKept = 0;
  try {
    for (const Change &change : changes) {
      const std::optional<int> held = session.servo.write(*findRegister(change.number), change.to);
      if (held != change.to) {
        ++notKept;
        session.console.status(notKeptText(keyOf(change.number), change.to, held));
      }
      progress.done(++tried);
    }
  } catch (const Failure &failure) {
    throw Failure{
        failure.code,
        failure.text + QStringLiteral("\n%1 of %2 changes had been made before; %3 may or may not have been.")
                           .arg(tried - notKept)
                           .arg(changes.size())
                           .arg(keyOf(changes[static_cast<std::size_t>(tried)].number))};
  }
  return notKept;
}

}  // namespace

void dump(Session &session, const QString &file, bool mayReplace) {
  std::vector<int> numbers;
  for (const RegisterRow &row : settingRegisters()) numbers.push_back(row.number);
  const QByteArray text = settingsText(readSettings(session, numbers));
  if (file == u"-") {
    session.console.data(QString::fromUtf8(text));
  } else {
    saveFile(file, text, mayReplace);
  }
}

void restore(Session &session, const Settings &wanted, bool dryRun) {
  const std::vector<Change> changes = changesBetween(readSettings(session, numbersOf(wanted)), wanted);
  if (changes.empty()) {
    session.console.status(QStringLiteral("The servo has these settings already."));
    return;
  }
  for (const Change &change : changes) {
    session.console.data(
        QStringLiteral("%1: %2 -> %3\n").arg(keyOf(change.number)).arg(change.from).arg(change.to));
  }
  if (dryRun) return;
  const int notKept = writeChanges(session, changes);
  if (notKept > 0) {
    throw Failure{ExitCode::BadValue,
                  QStringLiteral("%1 of %2 settings could not be set.").arg(notKept).arg(changes.size())};
  }
  session.console.status(
      QStringLiteral("%1 of %2 settings were changed.").arg(changes.size()).arg(wanted.size()));
}

void diffWithServo(Session &session, const NamedSettings &file) {
  showDifferences(session.console, {QStringLiteral("servo"), readSettings(session, numbersOf(file.settings))},
                  file);
}

void showDifferences(Console &console, const NamedSettings &one, const NamedSettings &other) {
  std::set<int> numbers;
  for (const auto &[number, value] : one.settings) numbers.insert(number);
  for (const auto &[number, value] : other.settings) numbers.insert(number);
  const auto text = [](const Settings &settings, int number) {
    const auto found = settings.find(number);
    return found == settings.end() ? QStringLiteral("-") : QString::number(found->second);
  };
  Table table;
  table.addRow({QStringLiteral("SETTING"), one.name, other.name});
  int differences = 0;
  for (const int number : numbers) {
    const QString left = text(one.settings, number);
    const QString right = text(other.settings, number);
    if (left == right) continue;
    table.addRow({keyOf(number), left, right});
    ++differences;
  }
  if (differences == 0) return;
  console.data(table.text());
  throw Failure{ExitCode::BadValue,
                QStringLiteral("%1 of %2 settings differ.").arg(differences).arg(numbers.size())};
}

}  // namespace tavril::cli
