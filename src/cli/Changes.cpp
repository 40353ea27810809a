#include "cli/Changes.h"

#include "cli/Failure.h"
#include "cli/RegisterFacts.h"
#include "cli/Servo.h"

#include <algorithm>
#include <utility>

namespace tavril::cli {

namespace {

using wire::RegisterNumber;

/// Changes are made in the order of their ranks.
std::pair<int, int> rankOf(const Change &change) {
  const wire::Register &row = *wire::findRegister(change.number);
  if (row.stage != wire::WriteStage::Limit) return {1 + static_cast<int>(row.stage), change.number};
  const bool isWider = row.isLowest ? change.to < change.from : change.to > change.from;
  return {isWider ? 0 : 1, 0};
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
  for (const auto &[number, value] : wanted) {
    if (const int limited = wire::findRegister(number)->limited) needed.insert(limited);
  }
  if (wanted.contains(RegisterNumber::MinVoltage) || wanted.contains(RegisterNumber::MaxVoltage))
    needed.insert({RegisterNumber::MinVoltage, RegisterNumber::MaxVoltage});
  return needed;
}

QStringList dangersOf(const Settings &wanted, const Settings &present) {
  QStringList dangers;
  if (valueIn(wanted, RegisterNumber::AckPolicy) == 0) {
    dangers.append(QStringLiteral(
        "ack_policy=0 may keep the servo from answering, and then Tavril can no longer set it up."));
  }
  Settings after = present;
  for (const auto &[number, value] : wanted) after[number] = value;
  const auto lowest = valueIn(after, RegisterNumber::MinVoltage);
  const auto highest = valueIn(after, RegisterNumber::MaxVoltage);
  const bool changesVoltage =
      wanted.contains(RegisterNumber::MinVoltage) || wanted.contains(RegisterNumber::MaxVoltage);
  if (changesVoltage && lowest && highest && *lowest > *highest) {
    dangers.append(QStringLiteral("min_voltage would be %1, above max_voltage, %2: no voltage is allowed.")
                       .arg(*lowest)
                       .arg(*highest));
  }
  for (const auto &[number, value] : wanted) {
    const wire::Register &limit = *wire::findRegister(number);
    if (limit.limited == 0) continue;
    if (value == 0 && !limit.isLowest) {
      dangers.append(QStringLiteral("%1=0 allows nothing at all.").arg(keyOf(limit)));
      continue;
    }
    const auto now = valueIn(present, limit.limited);
    if (now && (limit.isLowest ? *now < value : *now > value)) {
      dangers.append(QStringLiteral("%1=%2 is %3 %4, which is %5 now.")
                         .arg(keyOf(limit))
                         .arg(value)
                         .arg(QString::fromLatin1(limit.isLowest ? "above" : "below"), keyOf(limit.limited))
                         .arg(*now));
    }
  }
  return dangers;
}

void carryOut(Servo &servo, std::vector<Change> &changes, const std::function<void(int done)> &progress) {
  int done = 0;
  for (Change &change : changes) {
    change.state = Change::State::Unknown;
    const Servo::Written written = servo.write(*wire::findRegister(change.number), change.to);
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
