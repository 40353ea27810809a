#include "cli/RegisterFacts.h"

#include "platform/Log.h"
#include "protocol/EntryRanges.h"
#include "protocol/StatusLists.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <numeric>
#include <vector>

namespace tavril::cli {

namespace {

constexpr int ackPolicy = 2;
constexpr int alarmLedPolicy = 3;
constexpr int torquePolicyRegister = 4;
constexpr int maxTemperature = 5;
constexpr int presentTemperature = 19;
constexpr int presentLoad = 20;
constexpr double loadPerAmpere = 200.0;
constexpr int tick_ms = 10;

QStringList choicesOf(int number) {
  switch (number) {
    case ackPolicy:
      return {QStringLiteral("answers status commands only"),
              QStringLiteral("answers status and read commands"), QStringLiteral("answers all commands")};
    case alarmLedPolicy:
      return {QStringLiteral("LED shows system errors"), QStringLiteral("LED shows what the user sets")};
    case torquePolicyRegister:
      return {QStringLiteral("keeps the torque when a limit is passed"),
              QStringLiteral("shuts down when a limit is passed")};
    default:
      return {};
  }
}

bool isCheckPeriod(int number) {
  return number >= 12 && number <= 14;
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
  if (name == u"max_temperature") name = QStringLiteral("max_tempertaure");  // meant: the key is spelt so
  const auto rows = registerCatalogue();
  const auto found = std::ranges::find(rows, QStringView(name), &RegisterRow::nameKey);
  return found == rows.end() ? nullptr : &*found;
}

QString unknownRegisterText(const QString &text) {
  const QString name = text.toLower().replace(u'-', u'_');
  QString nearest;
  std::size_t best = SIZE_MAX;
  QStringList known;
  for (const RegisterRow &row : registerCatalogue()) {
    const QString candidate = row.nameKey.toString();
    known.append(QStringLiteral("%1 %2").arg(row.number).arg(candidate));
    const std::size_t far = distance(name, candidate);
    // One letter, or one in three; beyond that it is more of a guess than help.
    const bool isNear = far <= 1 || far * 3 <= static_cast<std::size_t>(candidate.size());
    if (far < best && isNear) {
      best = far;
      nearest = candidate;
    }
  }
  QString problem = QStringLiteral("there is no register \"%1\".").arg(text);
  if (!nearest.isEmpty()) problem += QStringLiteral(" Did you mean %1?").arg(nearest);
  return problem + QStringLiteral(" Known are: ") + known.join(QStringLiteral(", ")) + u'.';
}

ValueRange settingRange(const RegisterRow &row) {
  if (const EntryRange *range = entryRangeOf(row.number)) return {range->minimum, range->maximum};
  return {0, static_cast<int>(choicesOf(row.number).size()) - 1};
}

QString unitOf(const RegisterRow &row) {
  if (row.number == maxTemperature || row.number == presentTemperature) return QStringLiteral("°C");
  if (isCheckPeriod(row.number)) return QStringLiteral("10 ms");
  if (row.number == presentLoad) return QStringLiteral("1/200 A");
  return {};
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
  const QStringList choices = choicesOf(row.number);
  if (!choices.isEmpty()) {
    return value >= 0 && value < choices.size() ? choices[value] : QStringLiteral("no known choice");
  }
  if (isCheckPeriod(row.number)) return QStringLiteral("%1 ms").arg(value * tick_ms);
  if (row.number == presentLoad) return QStringLiteral("%1 A").arg(value / loadPerAmpere, 0, 'f', 3);
  const QString unit = unitOf(row);
  return unit.isEmpty() ? QString() : QStringLiteral("%1 %2").arg(value).arg(unit);
}

}  // namespace tavril::cli
