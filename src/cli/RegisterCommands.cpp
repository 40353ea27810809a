#include "cli/RegisterCommands.h"

#include "cli/Console.h"
#include "cli/Failure.h"
#include "cli/FrameWords.h"
#include "cli/JsonText.h"
#include "cli/Progress.h"
#include "cli/RegisterFacts.h"
#include "cli/Servo.h"
#include "cli/Session.h"
#include "cli/Table.h"

#include <algorithm>
#include <optional>
#include <set>

namespace tavril::cli {

namespace {

constexpr int torquePolicyRegister = 4;

struct Reading {
  const RegisterRow *row;
  int value;
  QString meaning;
};

QString readingsTable(const std::vector<Reading> &readings) {
  Table table;
  for (const Reading &reading : readings) {
    table.addRow({QString::number(reading.row->number).rightJustified(2), reading.row->nameKey.toString(),
                  QString::number(reading.value), reading.meaning});
  }
  return table.text();
}

QString readingsJson(const QString &port, const std::vector<Reading> &readings) {
  QStringList rows;
  for (const Reading &reading : readings) {
    rows.append(QStringLiteral("    %1: {\"number\": %2, \"value\": %3, \"unit\": %4, \"meaning\": %5}")
                    .arg(jsonText(reading.row->nameKey.toString()), QString::number(reading.row->number),
                         QString::number(reading.value), jsonText(unitOf(*reading.row)),
                         jsonText(reading.meaning)));
  }
  return QStringLiteral("{\n  \"port\": %1,\n  \"registers\": {\n%2\n  }\n}\n")
      .arg(jsonText(port), rows.join(QStringLiteral(",\n")));
}

Assignment assignmentFrom(const QString &text) {
  const qsizetype equals = text.indexOf(u'=');
  if (equals < 1) {
    throw Failure{ExitCode::Usage,
                  QStringLiteral("\"%1\" is no assignment: write REGISTER=VALUE, such as kp=440.").arg(text)};
  }
  const QString name = text.first(equals);
  const RegisterRow *row = registerNamed(name);
  if (!row) throw Failure{ExitCode::Usage, unknownRegisterText(name)};
  const QString key = row->nameKey.toString();
  if (!row->isSetting()) {
    throw Failure{ExitCode::Usage, QStringLiteral("%1 is a live value, which cannot be written.").arg(key)};
  }
  const QString typed = text.sliced(equals + 1);
  const ValueRange range = settingRange(*row);
  bool isNumber = false;
  const int value = typed.toInt(&isNumber);
  const bool onlyDigits = std::all_of(typed.begin() + (typed.startsWith(u'-') ? 1 : 0), typed.end(),
                                      [](QChar c) { return c >= u'0' && c <= u'9'; });
  if (typed.isEmpty() || typed == u"-" || !onlyDigits) {
    throw Failure{
        ExitCode::Usage,
        QStringLiteral("%1 takes a whole number from %2, not \"%3\".").arg(key, range.text(), typed)};
  }
  // A number that does not even fit is out of range as well.
  if (!isNumber || !range.contains(value)) {
    throw Failure{ExitCode::BadValue,
                  QStringLiteral("%1: %2 is out of range (%3).").arg(key, typed, range.text())};
  }
  return {row, value};
}

}  // namespace

std::vector<const RegisterRow *> registersNamed(const QStringList &names) {
  std::vector<const RegisterRow *> rows;
  for (const QString &name : names) {
    const RegisterRow *row = registerNamed(name);
    if (!row) throw Failure{ExitCode::Usage, unknownRegisterText(name)};
    rows.push_back(row);
  }
  if (names.isEmpty()) {
    for (const RegisterRow &row : registerCatalogue()) rows.push_back(&row);
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
        throw Failure{ExitCode::Usage, QStringLiteral("%1 is assigned to twice: write it once.")
                                           .arg(assignment.row->nameKey.toString())};
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

void tellDetection(Session &session) {
  const Servo::Count count = session.servo.detect();
  session.console.data(count == Servo::Count::None  ? QStringLiteral("none\n")
                       : count == Servo::Count::One ? QStringLiteral("one\n")
                                                    : QStringLiteral("several\n"));
  if (count != Servo::Count::One) throw Servo::wrongCount(count, session.line.name());
}

void readRegisters(Session &session, const std::vector<const RegisterRow *> &rows, bool json) {
  Progress progress(session.console, session.line, QStringLiteral("registers read"),
                    static_cast<int>(rows.size()));
  std::vector<Reading> readings;
  std::optional<int> torquePolicy;
  for (const RegisterRow *row : rows) {
    const int value = session.servo.read(*row);
    if (row->number == torquePolicyRegister) torquePolicy = value;
    readings.push_back({row, value, {}});
    progress.done(static_cast<int>(readings.size()));
  }
  const bool needsPolicy =
      std::ranges::any_of(rows, [](const RegisterRow *row) { return row->reply == ReplyValue::DetailBits; });
  if (needsPolicy && !torquePolicy) torquePolicy = session.servo.read(*findRegister(torquePolicyRegister));
  for (Reading &reading : readings) {
    reading.meaning = meaningOf(*reading.row, reading.value, torquePolicy, session.strings);
  }
  session.console.data(json ? readingsJson(session.line.name(), readings) : readingsTable(readings));
}

void writeRegisters(Session &session, const std::vector<Assignment> &assignments) {
  Progress progress(session.console, session.line, QStringLiteral("registers written"),
                    static_cast<int>(assignments.size()));
  int written = 0;
  int notKept = 0;
  for (const auto &[row, value] : assignments) {
    const QString key = row->nameKey.toString();
    const std::optional<int> held = session.servo.write(*row, value);
    if (held == value) {
      session.console.data(QStringLiteral("%1=%2\n").arg(key).arg(value));
    } else {
      ++notKept;
      session.console.status(notKeptText(key, value, held));
    }
    progress.done(++written);
  }
  if (notKept == 0) return;
  throw Failure{ExitCode::BadValue,
                QStringLiteral("%1 of %2 values could not be set.").arg(notKept).arg(assignments.size())};
}

void showFrames(Console &console, const std::vector<Assignment> &assignments) {
  for (const auto &[row, value] : assignments) {
    const Command command = Command::writeRegister(row->number, value);
    console.data(QStringLiteral("%1  %2\n").arg(inHex(command.frame()), commandInWords(command)));
  }
}

}  // namespace tavril::cli
