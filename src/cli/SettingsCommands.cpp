#include "cli/SettingsCommands.h"

#include "cli/ChangeWords.h"
#include "cli/Console.h"
#include "cli/Failure.h"
#include "cli/Files.h"
#include "cli/Progress.h"
#include "cli/RegisterFacts.h"
#include "cli/Session.h"
#include "cli/Table.h"
#include "platform/JsonText.h"
#include "servo/Servo.h"

#include <QByteArray>
#include <QStringList>

#include <algorithm>
#include <set>
#include <vector>

namespace tavril::cli {

using servo::Change;

namespace {

std::vector<int> numbersOf(const Settings &settings) {
  std::vector<int> numbers;
  for (const auto &[number, value] : settings) numbers.push_back(number);
  return numbers;
}

QString changesText(const std::vector<Change> &changes) {
  QString text;
  for (const Change &change : changes) text += changeInWords(change) + u'\n';
  return text;
}

QString changesJson(const QString &port, const std::vector<Change> &changes) {
  QStringList rows;
  for (const Change &change : changes) {
    const wire::Register &row = *wire::findRegister(change.number);
    rows.append(QStringLiteral("    %1: {\"from\": %2, \"to\": %3}")
                    .arg(jsonText(keyOf(change.number)),
                         registerJson(row, change.from, settingMeaning(row, change.from)),
                         registerJson(row, change.to, settingMeaning(row, change.to))));
  }
  return QStringLiteral("{\n  \"port\": %1,\n  \"changes\": {%2}\n}\n")
      .arg(jsonText(port),
           rows.isEmpty() ? QString() : u'\n' + rows.join(QStringLiteral(",\n")) + QStringLiteral("\n  "));
}

}  // namespace

Settings readValues(Session &session, const std::vector<int> &numbers) {
  Progress progress(session.console, session.line, QStringLiteral("registers read"),
                    static_cast<int>(numbers.size()));
  Settings settings;
  for (const int number : numbers) {
    settings[number] = session.expect(session.servo.read(*wire::findRegister(number)));
    progress.done(static_cast<int>(settings.size()));
  }
  return settings;
}

Settings readBeforeWriting(Session &session, const std::vector<int> &numbers, const WriteMode &mode) {
  try {
    return readValues(session, numbers);
  } catch (const Failure &failure) {
    if (mode.dryRun) throw;
    QStringList lines{failure.text};
    for (const int number : numbers) lines.append(keyOf(number) + QStringLiteral(": not changed"));
    throw Failure{failure.code, lines.join(u'\n')};
  }
}

void judge(Console &console, const Settings &wanted, const Settings &present, bool force) {
  const QStringList dangers = dangersInWords(wanted, present);
  if (dangers.isEmpty()) return;
  if (force) {
    for (const QString &danger : dangers) console.note(QStringLiteral("Warning: ") + danger);
    return;
  }
  throw Failure{
      ExitCode::BadValue,
      dangers.join(u'\n') + QStringLiteral("\nNothing was written. To write it nevertheless, add --force.")};
}

void makeChanges(Session &session, std::vector<Change> changes, const WriteMode &mode) {
  Settings wanted;
  for (const Change &change : changes) wanted[change.number] = change.to;
  const std::set<int> needed = servo::neededToJudge(wanted);
  Settings present;
  const auto readPresent = [&] { present = readValues(session, {needed.begin(), needed.end()}); };
  mode.dryRun ? readPresent() : reportingEach(changes, readPresent);
  judge(session.console, wanted, present, mode.force || mode.dryRun);
  const auto print = [&] {
    session.console.data(mode.json ? changesJson(session.portName, changes) : changesText(changes));
  };
  if (mode.dryRun) {
    print();
    return;
  }
  reportingEach(changes, [&] {
    {
      Progress progress(session.console, session.line, QStringLiteral("settings written"),
                        static_cast<int>(changes.size()));
      session.expect(servo::carryOut(session.servo, changes, [&](int done) { progress.done(done); }));
    }
    expectAllChanged(changes);
    print();
  });
}

void dump(Session &session, const QString &file, bool mayReplace) {
  std::vector<int> numbers;
  for (const wire::Register &row : wire::settingRegisters) numbers.push_back(row.number);
  const QByteArray text = QByteArray::fromStdString(records::settingsText(readValues(session, numbers)));
  if (file == u"-") {
    session.console.data(QString::fromUtf8(text));
  } else {
    saveFile(file, text, mayReplace);
  }
}

void restore(Session &session, const Settings &wanted, const WriteMode &mode) {
  const std::vector<Change> changes =
      servo::changesBetween(readBeforeWriting(session, numbersOf(wanted), mode), wanted);
  if (changes.empty()) {
    if (mode.json) session.console.data(changesJson(session.portName, changes));
    session.console.note(QStringLiteral("The servo has these settings already."));
    return;
  }
  makeChanges(session, changes, mode);
  if (mode.dryRun) return;
  session.console.note(
      QStringLiteral("%1 of %2 changed.")
          .arg(changes.size())
          .arg(counted(static_cast<qsizetype>(wanted.size()), "setting was", "settings were")));
}

void diffWithServo(Session &session, const NamedSettings &file, bool json) {
  showDifferences(session.console, {QStringLiteral("servo"), readValues(session, numbersOf(file.settings))},
                  file, json);
}

void showDifferences(Console &console, const NamedSettings &one, const NamedSettings &other, bool json) {
  std::set<int> numbers;
  for (const auto &[number, value] : one.settings) numbers.insert(number);
  for (const auto &[number, value] : other.settings) numbers.insert(number);
  const auto text = [](const Settings &settings, int number) {
    const auto found = settings.find(number);
    return found == settings.end() ? QStringLiteral("-") : QString::number(found->second);
  };
  const auto object = [](const Settings &settings, int number) {
    const auto found = settings.find(number);
    if (found == settings.end()) return QStringLiteral("null");
    const wire::Register &row = *wire::findRegister(number);
    return registerJson(row, found->second, settingMeaning(row, found->second));
  };
  Table table;
  table.addRow({QStringLiteral("SETTING"), shown(one.name), shown(other.name)});
  QStringList rows;
  for (const int number : numbers) {
    const QString left = text(one.settings, number);
    const QString right = text(other.settings, number);
    if (left == right) continue;
    table.addRow({keyOf(number), left, right});
    rows.append(
        QStringLiteral("    %1: [%2, %3]")
            .arg(jsonText(keyOf(number)), object(one.settings, number), object(other.settings, number)));
  }
  if (json) {
    console.data(QStringLiteral("{\n  \"compared\": [%1, %2],\n  \"differences\": {%3}\n}\n")
                     .arg(jsonText(shown(one.name)), jsonText(shown(other.name)),
                          rows.isEmpty()
                              ? QString()
                              : u'\n' + rows.join(QStringLiteral(",\n")) + QStringLiteral("\n  ")));
  }
  if (rows.isEmpty()) return;
  if (!json) console.data(table.text());
  throw Failure{ExitCode::Different, QStringLiteral("%1 of %2.")
                                         .arg(rows.size())
                                         .arg(counted(static_cast<qsizetype>(numbers.size()),
                                                      "setting differs", "settings differ"))};
}

}  // namespace tavril::cli
