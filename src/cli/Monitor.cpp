#include "cli/Monitor.h"

#include "cli/Console.h"
#include "cli/Failure.h"
#include "cli/Files.h"
#include "cli/RegisterFacts.h"
#include "cli/Servo.h"
#include "cli/Session.h"
#include "platform/JsonText.h"
#include "wire/Range.h"

#include <QByteArray>
#include <QDateTime>
#include <QString>
#include <QStringList>

#include <algorithm>
#include <array>
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
  Line::Time time{0};
  QDateTime moment;
  int position = 0;
  std::array<int, columns.size()> values{};
};

Sample take(Session &session, Line::Time begun) {
  Sample sample;
  sample.time = session.line.now() - begun;
  sample.moment = QDateTime::currentDateTimeUtc();
  sample.position = session.servo.position();
  for (std::size_t i = 0; i < columns.size(); ++i) {
    sample.values[i] = session.servo.read(*columns[i]);
  }
  return sample;
}

QString secondsOf(const Sample &sample) {
  return QString::number(static_cast<double>(sample.time.count()) / 1000.0, 'f', 3);
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
  const int torquePolicy = session.servo.read(*wire::findRegister(wire::RegisterNumber::TorquePolicy));
  const Line::Time begun = session.line.now();
  Line::Time due = begun;
  int taken = 0;
  int missed = 0;
  while (true) {
    try {
      const Sample sample = take(session, begun);
      session.console.data(csvToOutput    ? QString::fromUtf8(csvLine(sample))
                           : options.json ? jsonOf(sample, torquePolicy, session.strings)
                                          : lineOf(sample, torquePolicy, session.strings));
      if (csv) csv->add(csvLine(sample));
      missed = 0;
      ++taken;
    } catch (const NoAnswer &failure) {
      if (++missed == mostMissed) throw;
      session.console.status(QStringLiteral("a sample was left out: ") + failure.text);
    }
    if (options.count && taken >= *options.count) return;
    // Not counted from the end of the sample, so that the times do not drift; what was overrun is left out.
    due = std::max(due + options.interval, session.line.now());
    session.line.pause(due - session.line.now());
  }
}

}  // namespace tavril::cli
