#include "cli/RegisterCommands.h"

#include "cli/Console.h"
#include "cli/Failure.h"
#include "cli/Files.h"
#include "cli/FrameWords.h"
#include "cli/Progress.h"
#include "cli/RegisterFacts.h"
#include "cli/Session.h"
#include "cli/SettingsCommands.h"
#include "cli/Table.h"
#include "platform/JsonText.h"
#include "servo/Servo.h"

#include <QChar>

#include <algorithm>
#include <optional>
#include <set>
#include <utility>

namespace tavril::cli {

namespace {

struct Reading {
  const wire::Register *row;
  int value;
  QString meaning;
};

QString readingsTable(const std::vector<Reading> &readings) {
  Table table;
  for (const Reading &reading : readings) {
    table.addRow({QString::number(reading.row->number).rightJustified(2), keyOf(*reading.row),
                  QString::number(reading.value), reading.meaning});
  }
  return table.text();
}

QString readingsJson(const QString &port, const std::vector<Reading> &readings) {
  QStringList rows;
  for (const Reading &reading : readings) {
    rows.append(
        QStringLiteral("    %1: %2")
            .arg(jsonText(keyOf(*reading.row)), registerJson(*reading.row, reading.value, reading.meaning)));
  }
  return QStringLiteral("{\n  \"port\": %1,\n  \"registers\": {\n%2\n  }\n}\n")
      .arg(jsonText(port), rows.join(QStringLiteral(",\n")));
}

Assignment assignmentFrom(const QString &text) {
  const qsizetype equals = text.indexOf(u'=');
  if (equals < 1) {
    throw Failure{
        ExitCode::Usage,
        QStringLiteral("\"%1\" is not an assignment: write a register, = and its value, such as kp=440.")
            .arg(shown(text))};
  }
  const QString name = text.first(equals);
  const wire::Register *row = registerNamed(name);
  if (!row) throw Failure{ExitCode::Usage, unknownRegisterText(name)};
  const QString key = keyOf(*row);
  if (!row->isSetting()) {
    throw Failure{ExitCode::Usage,
                  QStringLiteral("%1 is measured by the servo and cannot be written.").arg(key)};
  }
  return {row, settingFrom(*row, text.sliced(equals + 1))};
}

}  // namespace

std::vector<const wire::Register *> registersNamed(const QStringList &names) {
  std::vector<const wire::Register *> rows;
  for (const QString &name : names) {
    const wire::Register *row = registerNamed(name);
    if (!row) throw Failure{ExitCode::Usage, unknownRegisterText(name)};
    if (std::ranges::find(rows, row) == rows.end()) rows.push_back(row);
  }
  if (names.isEmpty()) {
    for (const wire::Register &row : wire::registers) rows.push_back(&row);
  }
  return rows;
}

std::vector<Assignment> assignmentsFrom(const QStringList &texts) {
  std::vector<Assignment> assignments;
  std::set<int> seen;
  QStringList problems;
  ExitCode code = ExitCode::BadValue;  // as long as nothing worse is found
  for (const QString &text : texts) {
    try {
      const Assignment assignment = assignmentFrom(text);
      if (!seen.insert(assignment.row->number).second) {
        throw Failure{ExitCode::Usage,
                      QStringLiteral("%1 is there twice: give it one value.").arg(keyOf(*assignment.row))};
      }
      assignments.push_back(assignment);
    } catch (const Failure &failure) {
      problems.append(failure.text);
      if (failure.code == ExitCode::Usage) code = ExitCode::Usage;
    }
  }
  if (!problems.isEmpty()) {
    throw Failure{code, problems.join(u'\n') + QStringLiteral(" Nothing was written.")};
  }
  return assignments;
}

void tellDetection(Session &session, bool json) {
  using servo::Count;
  const Count count = session.expect(session.servo.detect());
  const QString name = count == Count::None  ? QStringLiteral("none")
                       : count == Count::One ? QStringLiteral("one")
                                             : QStringLiteral("several");
  session.console.data(
      json
          ? QStringLiteral("{\"port\": %1, \"servos\": %2}\n").arg(jsonText(session.portName), jsonText(name))
          : name + u'\n');
  if (count != Count::One) session.fail({.kind = servo::Problem::Kind::NotOneServo, .count = count});
}

void readRegisters(Session &session, const std::vector<const wire::Register *> &rows, bool json) {
  Progress progress(session.console, session.line, QStringLiteral("registers read"),
                    static_cast<int>(rows.size()));
  std::vector<Reading> readings;
  std::optional<int> torquePolicy;
  for (const wire::Register *row : rows) {
    const int value = session.expect(session.servo.read(*row));
    if (row->number == wire::RegisterNumber::TorquePolicy) torquePolicy = value;
    readings.push_back({row, value, {}});
    progress.done(static_cast<int>(readings.size()));
  }
  const bool needsPolicy = std::ranges::any_of(
      rows, [](const wire::Register *row) { return row->reply == wire::ReplyValue::DetailBits; });
  if (needsPolicy && !torquePolicy)
    torquePolicy =
        session.expect(session.servo.read(*wire::findRegister(wire::RegisterNumber::TorquePolicy)));
  for (Reading &reading : readings) {
    reading.meaning = meaningOf(*reading.row, reading.value, torquePolicy, session.strings);
  }
  session.console.data(json ? readingsJson(session.portName, readings) : readingsTable(readings));
}

void writeRegisters(Session &session, const std::vector<Assignment> &assignments, const WriteMode &mode) {
  std::vector<int> numbers;
  numbers.reserve(assignments.size());
  for (const Assignment &assignment : assignments) numbers.push_back(assignment.row->number);
  const Settings held = readBeforeWriting(session, numbers, mode);
  std::vector<servo::Change> changes;
  changes.reserve(assignments.size());
  for (const auto &[row, value] : assignments) {
    changes.push_back({.number = row->number, .from = held.at(row->number), .to = value});
  }
  makeChanges(session, servo::inSafeOrder(std::move(changes)), mode);
}

void setServoId(Session &session, const Assignment &id, const WriteMode &mode) {
  writeRegisters(session, {id}, mode);
  if (!mode.dryRun) session.expect(session.servo.expectOne());
}

void showFrames(Console &console, const std::vector<Assignment> &assignments, bool json) {
  QStringList lines;
  for (const auto &[row, value] : assignments) {
    const auto command = wire::Command::writeRegister(row->number, value);
    const QString frame = inHex(command);
    const QString words = commandInWords(command);
    lines.append(
        json ? QStringLiteral("  {\"sent\": %1, \"meaning\": %2}").arg(jsonText(frame), jsonText(words))
             : QStringLiteral("%1  %2\n").arg(frame, words));
  }
  console.data(json ? QStringLiteral("[\n%1\n]\n").arg(lines.join(QStringLiteral(",\n")))
                    : lines.join(QString()));
}

}  // namespace tavril::cli
