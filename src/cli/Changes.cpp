#include "cli/Changes.h"

#include "cli/Failure.h"
#include "cli/RegisterFacts.h"
#include "cli/Servo.h"

#include <algorithm>
#include <array>

namespace tavril::cli {

namespace {

constexpr int ackPolicy = 2;
constexpr int maxTemperature = 5;
constexpr int minVoltage = 6;
constexpr int maxVoltage = 7;
constexpr int maxLoad = 8;

/// A limit, and the register with the value now that it limits.
struct Limit {
  int number;
  int present;
  bool isLowest;
};
constexpr std::array<Limit, 4> limits{
    {{maxTemperature, 19, false}, {minVoltage, 18, true}, {maxVoltage, 18, false}, {maxLoad, 20, false}}};

int rankOf(const Change &change) {
  const auto limit = std::ranges::find(limits, change.number, &Limit::number);
  if (limit != limits.end()) {
    const bool isWider = limit->isLowest ? change.to < change.from : change.to > change.from;
    return isWider ? 0 : 1;
  }
  // Check periods, gains, calibration angle, torque policy, LED policy, servo ID, reply policy.
  constexpr std::array<int, 11> order{12, 13, 14, 9, 10, 11, 15, 4, 3, 1, ackPolicy};
  return 2 + static_cast<int>(std::ranges::find(order, change.number) - order.begin());
}

std::optional<int> valueIn(const Settings &settings, int number) {
  const auto found = settings.find(number);
  if (found == settings.end()) return std::nullopt;
  return found->second;
}

}  // namespace

QString Change::text() const {
  return QStringLiteral("%1: %2 -> %3").arg(keyOf(number)).arg(from).arg(to);
}

QString Change::outcome() const {
  const QString key = keyOf(number);
  QString unchanged = QStringLiteral("%1: not changed, it is %2").arg(key).arg(from);
  switch (state) {
    case State::Changed:
      return QStringLiteral("%1: changed, %2 -> %3").arg(key).arg(from).arg(to);
    case State::NotTried:
      return unchanged;
    case State::Refused:
      return unchanged + QStringLiteral(" (the servo refused %1: %2)").arg(to).arg(refusal);
    case State::NotKept:
      return held == from
                 ? unchanged + QStringLiteral(" (the servo did not keep %1)").arg(to)
                 : QStringLiteral("%1: changed, %2 -> %3 (%4 was sent)").arg(key).arg(from).arg(held).arg(to);
    case State::Unknown:
      break;
  }
  return QStringLiteral("%1: unknown, it was %2 and %3 was sent").arg(key).arg(from).arg(to);
}

std::vector<Change> inSafeOrder(std::vector<Change> changes) {
  std::ranges::stable_sort(changes, {}, rankOf);
  return changes;
}

std::set<int> neededToJudge(const Settings &wanted) {
  std::set<int> needed;
  for (const Limit &limit : limits) {
    if (wanted.contains(limit.number)) needed.insert(limit.present);
  }
  if (wanted.contains(minVoltage) || wanted.contains(maxVoltage)) needed.insert({minVoltage, maxVoltage});
  return needed;
}

QStringList dangersOf(const Settings &wanted, const Settings &present) {
  QStringList dangers;
  if (valueIn(wanted, ackPolicy) == 0) {
    dangers.append(QStringLiteral(
        "ack_policy=0 may keep the servo from answering, and then Tavril can no longer set it up."));
  }
  Settings after = present;
  for (const auto &[number, value] : wanted) after[number] = value;
  const auto lowest = valueIn(after, minVoltage);
  const auto highest = valueIn(after, maxVoltage);
  const bool changesVoltage = wanted.contains(minVoltage) || wanted.contains(maxVoltage);
  if (changesVoltage && lowest && highest && *lowest > *highest) {
    dangers.append(QStringLiteral("min_voltage would be %1, above max_voltage, %2: no voltage is allowed.")
                       .arg(*lowest)
                       .arg(*highest));
  }
  for (const Limit &limit : limits) {
    const auto value = valueIn(wanted, limit.number);
    if (!value) continue;
    if (*value == 0 && !limit.isLowest) {
      dangers.append(QStringLiteral("%1=0 allows nothing at all.").arg(keyOf(limit.number)));
      continue;
    }
    const auto now = valueIn(present, limit.present);
    if (now && (limit.isLowest ? *now < *value : *now > *value)) {
      dangers.append(QStringLiteral("%1=%2 is %3 %4, which is %5 now.")
                         .arg(keyOf(limit.number))
                         .arg(*value)
                         .arg(QString::fromLatin1(limit.isLowest ? "above" : "below"), keyOf(limit.present))
                         .arg(*now));
    }
  }
  return dangers;
}

void carryOut(Servo &servo, std::vector<Change> &changes, const std::function<void(int done)> &progress) {
  int done = 0;
  for (Change &change : changes) {
    change.state = Change::State::Unknown;
    const Servo::Written written = servo.write(*findRegister(change.number), change.to);
    if (!written.held) {
      change.state = Change::State::Refused;
      change.refusal = written.refusal;
    } else {
      change.held = *written.held;
      change.state = change.held == change.to ? Change::State::Changed : Change::State::NotKept;
    }
    progress(++done);
  }
}

void reportingEach(const std::vector<Change> &changes, const std::function<void()> &act) {
  try {
    act();
  } catch (const Failure &failure) {
    QStringList lines;
    if (!failure.text.isEmpty()) lines.append(failure.text);
    for (const Change &change : changes) lines.append(change.outcome());
    throw Failure{failure.code, lines.join(u'\n')};
  }
}

void expectAllChanged(const std::vector<Change> &changes) {
  const auto failed = std::ranges::count_if(
      changes, [](const Change &change) { return change.state != Change::State::Changed; });
  if (failed == 0) return;
  throw Failure{ExitCode::BadValue,
                QStringLiteral("%1 of %2 could not be set:")
                    .arg(failed)
                    .arg(counted(static_cast<qsizetype>(changes.size()), "value", "values"))};
}

}  // namespace tavril::cli
