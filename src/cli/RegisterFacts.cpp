#include "cli/RegisterFacts.h"

#include "cli/Failure.h"
#include "cli/Files.h"
#include "cli/JsonText.h"
#include "platform/Log.h"
#include "protocol/EntryRanges.h"
#include "protocol/StatusLists.h"

#include <QChar>
#include <QRegularExpression>
#include <QRegularExpressionMatch>
#include <QStringView>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <numeric>
#include <vector>

namespace tavril::cli {

namespace {

/// What is known of a register besides its keys.
struct Facts {
  const char *purpose;
  const char *unit = "";        ///< of one step
  const char *scaledUnit = "";  ///< in which people give the value
  double stepsPerUnit = 0.0;    ///< 0: no unit is known
  std::array<const char *, 3> choices{};
};

/// In the order of the registers.
constexpr std::array<Facts, registerCount> facts{{
    {"servo ID"},
    {"which commands the servo answers",
     "",
     "",
     0.0,
     {"answers status commands only", "answers status and read commands", "answers all commands"}},
    {"what the alarm LED shows", "", "", 0.0, {"LED shows system errors", "LED shows what the user sets"}},
    {"what happens when a limit is passed",
     "",
     "",
     0.0,
     {"keeps the torque when a limit is passed", "shuts down when a limit is passed"}},
    {"highest operating temperature", "°C", "°C", 1.0},
    {"lowest operating voltage"},
    {"highest operating voltage"},
    {"highest operating current"},
    {"proportional gain of the position control"},
    {"integral gain of the position control"},
    {"derivative gain of the position control"},
    {"check period of the temperature error", "10 ms", "ms", 0.1},
    {"check period of the voltage error", "10 ms", "ms", 0.1},
    {"check period of the load error", "10 ms", "ms", 0.1},
    {"calibration angle"},
    {"errors, one per bit"},
    {"details, one per bit"},
    {"voltage now"},
    {"temperature now", "°C", "°C", 1.0},
    {"current now", "1/200 A", "A", 200.0},
}};

const Facts &factsOf(const RegisterRow &row) {
  return facts[static_cast<std::size_t>(row.number) - 1];
}

QStringList choicesOf(const RegisterRow &row) {
  QStringList choices;
  for (const char *choice : factsOf(row).choices) {
    if (choice) choices.append(QString::fromUtf8(choice));
  }
  return choices;
}

bool isDuration(const RegisterRow &row) {
  return scaledUnitOf(row) == u"ms";
}

/// What stands behind a number, as the register's own unit: how many of those it is. Nothing for any other.
std::optional<double> unitsIn(const RegisterRow &row, const QString &suffix) {
  const QString unit = scaledUnitOf(row);
  if (unit.isEmpty()) return std::nullopt;
  if (suffix == unit) return 1.0;
  if (isDuration(row) && suffix == u"s") return 1000.0;
  if (unit == u"°C" && (suffix == u"C" || suffix == u"degC")) return 1.0;
  return std::nullopt;
}

QString numberText(double number) {
  return QString::number(number, 'g', 10);
}

[[noreturn]] void refuseNumber(const RegisterRow &row, const QString &typed) {
  const ValueRange range = settingRange(row);
  QString text = QStringLiteral("%1 takes a whole number from %2").arg(row.nameKey, range.text());
  const QString unit = scaledUnitOf(row);
  if (!unit.isEmpty()) {
    text += QStringLiteral(", or a value with its unit such as %1")
                .arg(isDuration(row) ? QStringLiteral("300ms") : QStringLiteral("80°C"));
  }
  throw Failure{ExitCode::Usage, text + QStringLiteral(", not \"%1\".").arg(shown(typed))};
}

[[noreturn]] void refuseRange(const RegisterRow &row, const QString &typed) {
  throw Failure{ExitCode::BadValue, QStringLiteral("%1: %2 is out of range (%3).")
                                        .arg(row.nameKey, shown(typed), settingRange(row).text())};
}

/// How many letters have to be added, taken away or replaced to make the one text the other.
std::size_t distance(const QString &one, const QString &other) {
  std::vector<std::size_t> row(static_cast<std::size_t>(other.size()) + 1);
  std::iota(row.begin(), row.end(), std::size_t{0});
  for (const QChar letter : one) {
    std::size_t diagonal = row[0]++;
    for (qsizetype j = 0; j < other.size(); ++j) {
      const auto at = static_cast<std::size_t>(j) + 1;
      const std::size_t replaced = diagonal + (letter == other[j] ? 0 : 1);
      diagonal = row[at];
      row[at] = std::min({replaced, row[at] + 1, row[at - 1] + 1});
    }
  }
  return row.back();
}

class NoLog final : public Log {
 public:
  void write(const QString &) override {}
  bool isEnabled() const override { return false; }
};

/// The items of a status list without its separator and their numbers.
QString inOneLine(const StatusList &list) {
  QStringList items;
  for (const QString &line : list.text.split(u'\n', Qt::SkipEmptyParts)) {
    const qsizetype dot = line.indexOf(QStringLiteral(". "));
    if (dot > 0) items.append(line.mid(dot + 2));
  }
  return items.join(QStringLiteral("; "));
}

QString detailText(int bits, std::optional<int> torquePolicy, const StringTable &strings) {
  NoLog log;
  if (torquePolicy) return inOneLine(statusDetailList(bits, *torquePolicy == 0, strings, log));
  const QString keeping = inOneLine(statusDetailList(bits, true, strings, log));
  const QString shutting = inOneLine(statusDetailList(bits, false, strings, log));
  return keeping == shutting ? keeping : keeping + QStringLiteral(" (or: ") + shutting + u')';
}

}  // namespace

QString ValueRange::text() const {
  return QStringLiteral("%1 to %2").arg(minimum).arg(maximum);
}

const RegisterRow *registerNamed(const QString &text) {
  bool isNumber = false;
  const int number = text.toInt(&isNumber);
  if (isNumber) return findRegister(number);
  QString name = text.toLower().replace(u'-', u'_');
  if (name == maxTemperatureForPeople) name = QStringLiteral("max_tempertaure");  // the key is misspelt
  const auto rows = registerCatalogue();
  const auto found = std::ranges::find(rows, QStringView(name), &RegisterRow::nameKey);
  return found == rows.end() ? nullptr : &*found;
}

QString nearestOf(const QString &text, const QStringList &names) {
  QString nearest;
  std::size_t best = SIZE_MAX;
  for (const QString &name : names) {
    const std::size_t far = distance(text, name);
    // One letter, or one in three; beyond that it is more of a guess than help.
    const bool isNear = far <= 1 || far * 3 <= static_cast<std::size_t>(name.size());
    if (far < best && isNear) {
      best = far;
      nearest = name;
    }
  }
  return nearest;
}

QString suggestionFor(const QString &text) {
  QStringList keys;
  keys.append(maxTemperatureForPeople);
  for (const RegisterRow &row : registerCatalogue()) keys.append(row.nameKey.toString());
  const QString near = nearestOf(text.toLower().replace(u'-', u'_'), keys);
  return near.isEmpty() ? QString() : QStringLiteral(" Did you mean %1?").arg(near);
}

QString unknownRegisterText(const QString &text) {
  QStringList known;
  for (const RegisterRow &row : registerCatalogue()) {
    known.append(QStringLiteral("%1 %2").arg(row.number).arg(row.nameKey));
  }
  return QStringLiteral("there is no register \"%1\".%2 The registers are: %3.")
      .arg(shown(text), suggestionFor(text), known.join(QStringLiteral(", ")));
}

QString keyOf(int number) {
  return findRegister(number)->nameKey.toString();
}

ValueRange settingRange(const RegisterRow &row) {
  if (const EntryRange *range = entryRangeOf(row.number)) return {range->minimum, range->maximum};
  return {0, static_cast<int>(choicesOf(row).size()) - 1};
}

QString unitOf(const RegisterRow &row) {
  return QString::fromUtf8(factsOf(row).unit);
}

QString purposeOf(const RegisterRow &row) {
  return QString::fromUtf8(factsOf(row).purpose);
}

QString scaledUnitOf(const RegisterRow &row) {
  return QString::fromUtf8(factsOf(row).scaledUnit);
}

std::optional<double> scaledValue(const RegisterRow &row, int value) {
  const double steps = factsOf(row).stepsPerUnit;
  if (steps == 0.0) return std::nullopt;
  return value / steps;
}

int settingFrom(const RegisterRow &row, const QString &typed) {
  static const QRegularExpression form(QStringLiteral("^(-?[0-9]+)(\\.[0-9]+)?([^0-9.].*)?$"));
  const QRegularExpressionMatch match = form.match(typed);
  if (!match.hasMatch()) refuseNumber(row, typed);
  const QString suffix = match.captured(3);
  const ValueRange range = settingRange(row);
  if (suffix.isEmpty()) {
    if (!match.captured(2).isEmpty()) refuseNumber(row, typed);
    bool fits = false;
    const int value = typed.toInt(&fits);
    // A number that does not even fit is out of range as well.
    if (!fits || !range.contains(value)) refuseRange(row, typed);
    return value;
  }
  const auto units = unitsIn(row, suffix);
  if (!units) refuseNumber(row, typed);
  const double number = (match.captured(1) + match.captured(2)).toDouble();
  const double steps = number * *units * factsOf(row).stepsPerUnit;
  if (!(steps >= range.minimum - 0.5 && steps <= range.maximum + 0.5)) refuseRange(row, typed);
  const int value = static_cast<int>(std::lround(steps));
  constexpr double closeEnough = 1e-6;
  if (std::abs(steps - value) > closeEnough) {
    throw Failure{
        ExitCode::BadValue,
        QStringLiteral("%1: %2 is not a multiple of %3.").arg(row.nameKey, shown(typed), unitOf(row))};
  }
  return value;
}

int registerValue(const RegisterRow &row, int highByte, int lowByte) {
  switch (row.reply) {
    case ReplyValue::Word:
      return highByte * 256 + lowByte;
    case ReplyValue::SignedByte:
      return static_cast<std::int8_t>(lowByte);
    default:
      return lowByte;
  }
}

QString settingMeaning(const RegisterRow &row, int value) {
  const QStringList choices = choicesOf(row);
  if (!choices.isEmpty()) {
    return value >= 0 && value < choices.size() ? choices[value] : QStringLiteral("no known choice");
  }
  const auto scaled = scaledValue(row, value);
  if (!scaled) return {};
  const bool isWhole = std::floor(*scaled) == *scaled && scaledUnitOf(row) != u"A";
  return QStringLiteral("%1 %2").arg(QString::number(*scaled, 'f', isWhole ? 0 : 3), scaledUnitOf(row));
}

QString meaningOf(const RegisterRow &row, int value, std::optional<int> torquePolicy,
                  const StringTable &strings) {
  NoLog log;
  const QString none = QStringLiteral("none");
  if (row.reply == ReplyValue::ErrorBits) {
    const QString items = inOneLine(statusErrorList(value, strings, log));
    return items.isEmpty() ? none : items;
  }
  if (row.reply == ReplyValue::DetailBits) {
    const QString items = detailText(value, torquePolicy, strings);
    return items.isEmpty() ? none : items;
  }
  return settingMeaning(row, value);
}

QString registerJson(const RegisterRow &row, int value, const QString &meaning) {
  const auto scaled = scaledValue(row, value);
  return QStringLiteral("{\"number\": %1, \"value\": %2, \"scaled\": %3, \"unit\": %4, \"meaning\": %5}")
      .arg(QString::number(row.number), QString::number(value),
           scaled ? numberText(*scaled) : QStringLiteral("null"), jsonText(scaledUnitOf(row)),
           jsonText(meaning));
}

std::vector<RegisterSummary> registerSummaries() {
  std::vector<RegisterSummary> summaries;
  for (const RegisterRow &row : registerCatalogue()) {
    const QString unit = unitOf(row);
    summaries.push_back(
        {&row, row.nameKey.toString(), purposeOf(row), unit.isEmpty() ? QStringLiteral("-") : unit,
         row.isSetting() ? settingRange(row).text() : QStringLiteral("read only"), choicesOf(row)});
  }
  return summaries;
}

}  // namespace tavril::cli
