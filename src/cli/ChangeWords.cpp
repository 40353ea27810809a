#include "cli/ChangeWords.h"

#include "cli/Failure.h"
#include "cli/FrameWords.h"
#include "cli/RegisterFacts.h"

#include <algorithm>

namespace tavril::cli {

using servo::Change;
using servo::Danger;

namespace {

QString dangerInWords(const Danger &danger) {
  switch (danger.kind) {
    case Danger::Kind::MayFallSilent:
      return QStringLiteral(
          "ack_policy=0 may keep the servo from answering, and then Tavril can no longer set it up.");
    case Danger::Kind::VoltagesCrossed:
      return QStringLiteral("min_voltage would be %1, above max_voltage, %2: no voltage is allowed.")
          .arg(danger.value)
          .arg(danger.other);
    case Danger::Kind::AllowsNothing:
      return QStringLiteral("%1=0 allows nothing at all.").arg(keyOf(danger.number));
    case Danger::Kind::AnswersFewer:
      return QStringLiteral("ack_policy=%1 keeps the servo from answering every command.").arg(danger.value);
    case Danger::Kind::ShaftMayJump:
      return QStringLiteral("%1=%2: the shaft may jump.").arg(keyOf(danger.number)).arg(danger.value);
    case Danger::Kind::PassedNow:
      break;
  }
  const wire::Register &limit = *wire::findRegister(danger.number);
  return QStringLiteral("%1=%2 is %3 %4, which is %5 now.")
      .arg(keyOf(limit))
      .arg(danger.value)
      .arg(QString::fromLatin1(limit.isLowest ? "above" : "below"), keyOf(limit.limited))
      .arg(danger.other);
}

}  // namespace

QString changeInWords(const Change &change) {
  return QStringLiteral("%1: %2 -> %3").arg(keyOf(change.number)).arg(change.from).arg(change.to);
}

QString outcomeInWords(const Change &change) {
  const auto &[number, from, to, state, held, error] = change;
  const QString key = keyOf(number);
  QString unchanged = QStringLiteral("%1: not changed, it is %2").arg(key).arg(from);
  switch (state) {
    case Change::State::Changed:
      return QStringLiteral("%1: changed, %2 -> %3").arg(key).arg(from).arg(to);
    case Change::State::NotTried:
      return unchanged;
    case Change::State::Refused:
      return unchanged + QStringLiteral(" (the servo refused %1: %2)").arg(to).arg(errorInWords(error));
    case Change::State::NotKept:
      return held == from
                 ? unchanged + QStringLiteral(" (the servo did not keep %1)").arg(to)
                 : QStringLiteral("%1: changed, %2 -> %3 (%4 was sent)").arg(key).arg(from).arg(held).arg(to);
    case Change::State::Unknown:
      break;
  }
  return QStringLiteral("%1: unknown, it was %2 and %3 was sent").arg(key).arg(from).arg(to);
}

QStringList dangersInWords(const servo::Settings &wanted, const servo::Settings &present) {
  QStringList texts;
  for (const Danger &danger : servo::dangersOf(wanted, present)) texts.append(dangerInWords(danger));
  return texts;
}

void reportingEach(const std::vector<Change> &changes, const std::function<void()> &act) {
  try {
    act();
  } catch (const Failure &failure) {
    QStringList lines;
    if (!failure.text.isEmpty()) lines.append(failure.text);
    for (const Change &change : changes) lines.append(outcomeInWords(change));
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
