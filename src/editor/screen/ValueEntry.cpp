#include "editor/screen/ValueEntry.h"

#include "platform/Desktop.h"
#include "platform/IntegerValue.h"
#include "platform/Log.h"
#include "platform/ModalAlert.h"
#include "platform/ScreenElement.h"
#include "platform/StringTable.h"
#include "protocol/SharedState.h"

#include <QChar>

#include <algorithm>

namespace tavril {

QString leftoverOf(const QString &text, bool signAllowed) {
  QString leftover = text;
  leftover.removeIf(
      [signAllowed](QChar c) { return (c >= u'0' && c <= u'9') || (signAllowed && c == u'-'); });
  return leftover;
}

ValueEntry::ValueEntry(SharedState &state, const Desktop &desktop)
    : state_(state), strings_(desktop.strings), alert_(desktop.alert), log_(desktop.log) {}

const EntryRange *ValueEntry::rangeOf(QStringView identifier) {
  const auto ranges = entryRanges();
  const auto found = std::ranges::find(ranges, identifier, &EntryRange::identifier);
  return found == ranges.end() ? nullptr : &*found;
}

QString ValueEntry::checkValue(const QString &text, int minvalue, int maxvalue, const QString &cal) {
  const QString leftover = leftoverOf(text, !cal.isEmpty());
  log_.write(leftover);
  if (leftover.isEmpty()) {
    if (text.isEmpty()) return {};
    const int value = integerValueOf(text);
    if (value >= minvalue && value <= maxvalue) return {};
  }
  refuse(minvalue, maxvalue);
  return QStringLiteral("condition error");
}

void ValueEntry::text(ScreenElement &sender) {
  log_.write(QStringLiteral("text.tag=") + sender.identifier());
  const EntryRange *range = rangeOf(sender.identifier());
  if (!range) return;
  const QString cal = range->signAllowed ? QStringLiteral("true") : QString();
  if (checkValue(sender.text(), range->minimum, range->maximum, cal).isEmpty()) return;
  const auto entry = state_.textFieldValue.constFind(range->entryKey.toString());
  sender.setText(entry == state_.textFieldValue.constEnd() ? QString() : entry->text());
}

void ValueEntry::refuse(int minvalue, int maxvalue) {
  const QString range = strings_.text(u"Setting_value_is_out_of_range") + QString::number(minvalue) + u'~' +
                        QString::number(maxvalue);
  alert_.run({strings_.text(u"Error"), range, {strings_.text(u"Confirm")}});
}

}  // namespace tavril
