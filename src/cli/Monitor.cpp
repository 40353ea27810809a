#include "cli/Monitor.h"

#include "cli/Console.h"
#include "cli/Failure.h"
#include "cli/Files.h"
#include "cli/ProblemWords.h"
#include "cli/RegisterFacts.h"
#include "cli/Session.h"
#include "platform/JsonText.h"
#include "servo/Servo.h"
#include "wire/Range.h"

#include <QByteArray>
#include <QDateTime>
#include <QString>
#include <QStringList>

#include <algorithm>
#include <array>
#include <chrono>
#include <memory>

namespace tavril::cli {

namespace {

constexpr int mostMissed = 3;

/// The registers of a sample: first the numbers, then the lists of errors and details.
constexpr auto columns = [] {
  std::array<const wire::Register *, wire::measuredRegisters.size()> rows{};
  auto *next = rows.begin();
  for (const bool isList : {false, true}) {
    for (const wire::Register &row : wire::measuredRegisters) {
      if (row.isBitList() == isList) *next++ = &row;
    }
  }
  return rows;
}();

struct Sample {
  servo::Time time{0};
  QDateTime moment;
  int position = 0;
  std::array<int, columns.size()> values{};
};

servo::Outcome<Sample> take(Session &session, servo::Time begun) {
  Sample sample;
  sample.time = session.line.now() - begun;
  sample.moment = QDateTime::currentDateTimeUtc();
  const servo::Outcome<int> position = session.servo.position();
  if (!position) return position.problem();
  sample.position = *position;
  for (std::size_t i = 0; i < columns.size(); ++i) {
    const servo::Outcome<int> value = session.servo.read(*columns[i]);
    if (!value) return value.problem();
    sample.values[i] = *value;
  }
  return sample;
}

QString secondsOf(const Sample &sample) {
  const auto whole = std::chrono::floor<std::chrono::milliseconds>(sample.time);
  return QString::number(std::chrono::duration<double>(whole).count(), 'f', 3);
}

/// "voltage" for present_voltage, "error" for status_error
QString titleOf(const wire::Register &row) {
  return keyOf(row).section(u'_', 1);
}

QString lineOf(const Sample &sample, int torquePolicy, const StringTable &strings) {
  QString line = QStringLiteral("%1 s  position %2").arg(secondsOf(sample), 8).arg(sample.position, 4);
  for (std::size_t i = 0; i < columns.size(); ++i) {
    const wire::Register &row = *columns[i];
    const QString value = row.isBitList() ? meaningOf(row, sample.values[i], torquePolicy, strings)
                                          : QStringLiteral("%1").arg(sample.values[i], 3);
    line += QStringLiteral("  %1 %2").arg(titleOf(row), value);
  }
  return line + u'\n';
}

QString jsonOf(const Sample &sample, int torquePolicy, const StringTable &strings) {
  QStringList registers;
  for (std::size_t i = 0; i < columns.size(); ++i) {
    const wire::Register &row = *columns[i];
    registers.append(
        jsonText(keyOf(row)) + QStringLiteral(": ") +
        registerJson(row, sample.values[i], meaningOf(row, sample.values[i], torquePolicy, strings)));
  }
  return QStringLiteral("{\"time\": %1, \"position\": %2, \"degrees\": %3, \"registers\": {%4}}\n")
      .arg(jsonText(sample.moment.toString(Qt::ISODateWithMs)), QString::number(sample.position),
           QString::number(sample.position / wire::positionsPerDegree, 'f', 1),
           registers.join(QStringLiteral(", ")));
}

QByteArray csvTitles() {
  QStringList titles{QStringLiteral("time_s"), QStringLiteral("position")};
  for (const wire::Register *row : columns) titles.append(keyOf(*row));
  return (titles.join(u',') + u'\n').toUtf8();
}

QByteArray csvLine(const Sample &sample) {
  QStringList cells{secondsOf(sample), QString::number(sample.position)};
  for (const int value : sample.values) cells.append(QString::number(value));
  return (cells.join(u',') + u'\n').toUtf8();
}

}  // namespace

void monitor(Session &session, const Options &options) {
  // The samples as numbers, as they come: a line that stands in the file is whole.
  std::unique_ptr<GrowingFile> csv;
  const bool csvToOutput = options.csv == u"-";
  if (!options.csv.isEmpty() && !csvToOutput) {
    csv = std::make_unique<GrowingFile>(options.csv, options.force);
    csv->add(csvTitles());
  }
  if (csvToOutput) session.console.data(QString::fromUtf8(csvTitles()));
  const int torquePolicy =
      session.expect(session.servo.read(*wire::findRegister(wire::RegisterNumber::TorquePolicy)));
  const servo::Time begun = session.line.now();
  servo::Time due = begun;
  int taken = 0;
  int missed = 0;
  while (true) {
    if (const servo::Outcome<Sample> sample = take(session, begun)) {
      session.console.data(csvToOutput    ? QString::fromUtf8(csvLine(*sample))
                           : options.json ? jsonOf(*sample, torquePolicy, session.strings)
                                          : lineOf(*sample, torquePolicy, session.strings));
      if (csv) csv->add(csvLine(*sample));
      missed = 0;
      ++taken;
    } else {
      const servo::Problem &problem = sample.problem();
      if (!problem.isNoAnswer() || ++missed == mostMissed) session.fail(problem);
      session.console.status(QStringLiteral("a sample was left out: ") +
                             failureFrom(problem, session.portName).text);
    }
    if (options.count && taken >= *options.count) return;
    // Not counted from the end of the sample, so that the times do not drift; what was overrun is left out.
    due = std::max(due + options.interval, session.line.now());
    if (const auto problem = servo::problemOf(session.line.pause(due - session.line.now())))
      session.fail(*problem);
  }
}

}  // namespace tavril::cli
