#include "cli/RegisterFacts.h"

#include "cli/Failure.h"
#include "cli/Files.h"
#include "platform/JsonText.h"
#include "platform/StringTable.h"
#include "wire/StatusBits.h"

#include <QChar>
#include <QRegularExpression>
#include <QRegularExpressionMatch>
#include <QStringView>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdlib>
#include <numeric>
#include <vector>

namespace tavril::cli {

namespace {

/// The value in the unit in which people give it; nothing where none is known.
std::optional<double> scaledValue(const wire::Register &row, int value) {
  if (row.unit.stepsPerUnit == 0.0) return std::nullopt;
  return value / row.unit.stepsPerUnit;
}

/// What stands behind a number, as the register's own unit: how many of those it is. Nothing for any other.
std::optional<double> unitsIn(const wire::Register &row, const QString &suffix) {
  const QStringView unit = row.unit.name;
  if (unit.isEmpty()) return std::nullopt;
  if (suffix == unit) return 1.0;
  if (row.isPeriod() && suffix == u"s") return 1000.0;
  if (unit == u"°C" && (suffix == u"C" || suffix == u"degC")) return 1.0;
  return std::nullopt;
}

QString numberText(double number) {
  return QString::number(number, 'g', 10);
}

[[noreturn]] void refuseNumber(const wire::Register &row, const QString &typed) {
  QString text = QStringLiteral("%1 takes a whole number from %2").arg(keyOf(row), textOf(row.range));
  if (!row.unit.name.empty()) {
    text += QStringLiteral(", or a value with its unit such as %1")
                .arg(row.isPeriod() ? QStringLiteral("300ms") : QStringLiteral("80°C"));
  }
  throw Failure{ExitCode::Usage, text + QStringLiteral(", not \"%1\".").arg(shown(typed))};
}

[[noreturn]] void refuseRange(const wire::Register &row, const QString &typed) {
  throw Failure{
      ExitCode::BadValue,
      QStringLiteral("%1: %2 is out of range (%3).").arg(keyOf(row), shown(typed), textOf(row.range))};
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

/// The texts of the bits that are set.
template <std::size_t count>
QString itemsOf(const std::array<wire::StatusBit, count> &bits, int value, bool shutDownDisabled,
                const StringTable &strings) {
  QStringList items;
  for (const wire::StatusBit &bit : bits) {
    const auto key = bit.keyFor(shutDownDisabled);
    if ((value & bit.mask()) != 0 && !key.empty()) items.append(strings.text(key));
  }
  return items.join(QStringLiteral("; "));
}

QString detailText(int value, std::optional<int> torquePolicy, const StringTable &strings) {
  const QString keeping = itemsOf(wire::detailBits, value, true, strings);
  const QString shutting = itemsOf(wire::detailBits, value, false, strings);
  if (torquePolicy) return *torquePolicy == 0 ? keeping : shutting;
  return keeping == shutting ? keeping : keeping + QStringLiteral(" (or: ") + shutting + u')';
}

/// Whether the text is the name key of the register, spelt as the key is or correctly.
bool isKeyOf(const wire::Register &row, QStringView text) {
  return text == QStringView(row.keys.name) ||
         (!row.correctName.empty() && text == QStringView(row.correctName));
}

}  // namespace

const wire::Register *registerNamed(const QString &text) {
  bool isNumber = false;
  const int number = text.toInt(&isNumber);
  if (isNumber) return wire::findRegister(number);
  const QString name = text.toLower().replace(u'-', u'_');
  const auto *found =
      std::ranges::find_if(wire::registers, [&](const wire::Register &row) { return isKeyOf(row, name); });
  return found == wire::registers.end() ? nullptr : found;
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
  for (const wire::Register &row : wire::registers) {
    if (!row.correctName.empty()) keys.append(QStringView(row.correctName).toString());
  }
  for (const wire::Register &row : wire::registers) keys.append(keyOf(row));
  const QString near = nearestOf(text.toLower().replace(u'-', u'_'), keys);
  return near.isEmpty() ? QString() : QStringLiteral(" Did you mean %1?").arg(near);
}

QString unknownRegisterText(const QString &text) {
  QStringList known;
  for (const wire::Register &row : wire::registers) {
    known.append(QStringLiteral("%1 %2").arg(row.number).arg(keyOf(row)));
  }
  return QStringLiteral("there is no register \"%1\".%2 The registers are: %3.")
      .arg(shown(text), suggestionFor(text), known.join(QStringLiteral(", ")));
}

QString keyOf(const wire::Register &row) {
  return QStringView(row.keys.name).toString();
}

QString keyOf(int number) {
  return keyOf(*wire::findRegister(number));
}

QString textOf(const wire::Range &range) {
  return QStringLiteral("%1 to %2").arg(range.minimum).arg(range.maximum);
}

QString rangeText(const wire::Register &row) {
  return row.isSetting() ? textOf(row.range) : QStringLiteral("read only");
}

QString unitOf(const wire::Register &row) {
  return QStringView(row.unit.step).toString();
}

QStringList choicesOf(const wire::Register &row) {
  QStringList choices;
  for (const QStringView choice : row.choices) choices.append(choice.toString());
  return choices;
}

int settingFrom(const wire::Register &row, const QString &typed) {
  static const QRegularExpression form(QStringLiteral("^(-?[0-9]+)(\\.[0-9]+)?([^0-9.].*)?$"));
  const QRegularExpressionMatch match = form.match(typed);
  if (!match.hasMatch()) refuseNumber(row, typed);
  const QString suffix = match.captured(3);
  const wire::Range range = row.range;
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
  const double steps = number * *units * row.unit.stepsPerUnit;
  if (!(steps >= range.minimum - 0.5 && steps <= range.maximum + 0.5)) refuseRange(row, typed);
  const int value = static_cast<int>(std::lround(steps));
  constexpr double closeEnough = 1e-6;
  if (std::abs(steps - value) > closeEnough) {
    throw Failure{
        ExitCode::BadValue,
        QStringLiteral("%1: %2 is not a multiple of %3.").arg(keyOf(row), shown(typed), unitOf(row))};
  }
  return value;
}

QString settingMeaning(const wire::Register &row, int value) {
  const QStringList choices = choicesOf(row);
  if (!choices.isEmpty()) {
    return value >= 0 && value < choices.size() ? choices[value] : QStringLiteral("no known choice");
  }
  const auto scaled = scaledValue(row, value);
  if (!scaled) return {};
  const bool isWhole = std::floor(*scaled) == *scaled && row.unit.name != u"A";
  return QStringLiteral("%1 %2").arg(QString::number(*scaled, 'f', isWhole ? 0 : 3), row.unit.name);
}

QString meaningOf(const wire::Register &row, int value, std::optional<int> torquePolicy,
                  const StringTable &strings) {
  if (!row.isBitList()) return settingMeaning(row, value);
  const QString items = row.reply == wire::ReplyValue::ErrorBits
                            ? itemsOf(wire::errorBits, value, false, strings)
                            : detailText(value, torquePolicy, strings);
  return items.isEmpty() ? QStringLiteral("none") : items;
}

QString registerJson(const wire::Register &row, int value, const QString &meaning) {
  const auto scaled = scaledValue(row, value);
  return QStringLiteral("{\"number\": %1, \"value\": %2, \"scaled\": %3, \"unit\": %4, \"meaning\": %5}")
      .arg(QString::number(row.number), QString::number(value),
           scaled ? numberText(*scaled) : QStringLiteral("null"),
           jsonText(QStringView(row.unit.name).toString()), jsonText(meaning));
}

}  // namespace tavril::cli
