#include "editor/ValueEntry.h"

#include "platform/Desktop.h"
#include "platform/IntegerValue.h"
#include "platform/Log.h"
#include "platform/ModalAlert.h"
#include "platform/ScreenElement.h"
#include "platform/StringTable.h"
#include "protocol/SharedState.h"
#include "wire/Registers.h"

#include <QChar>
#include <QStringView>

#include <algorithm>

namespace tavril {

// Kept: C83.
QString leftoverOf(const QString &text, bool signAllowed) {
  QString leftover = text;
  leftover.removeIf(
      [signAllowed](QChar c) { return (c >= u'0' && c <= u'9') || (signAllowed && c == u'-'); });
  return leftover;
}

namespace {

/// The setting that is typed into the field with this identifier, or nothing.
const wire::Register *settingIn(const QString &identifier) {
  const auto *row = std::ranges::find_if(wire::registers, [&](const wire::Register &candidate) {
    return !candidate.keys.identifier.empty() && identifier == QStringView(candidate.keys.identifier);
  });
  return row == wire::registers.end() ? nullptr : row;
}

}  // namespace

ValueEntry::ValueEntry(SharedState &state, const Desktop &desktop)
    : state_(state), strings_(desktop.strings), alert_(desktop.alert), log_(desktop.log) {}

QString ValueEntry::checkValue(const QString &text, int minvalue, int maxvalue, const QString &cal) {
  const QString leftover = leftoverOf(text, !cal.isEmpty());
  log_.write(leftover);
  if (leftover.isEmpty()) {
    if (text.isEmpty()) return {};  // Kept: C84.
    const int value = integerValueOf(text);
    if (value >= minvalue && value <= maxvalue) return {};
  }
  refuse(minvalue, maxvalue);
  return QStringLiteral("condition error");
}

void ValueEntry::text(ScreenElement &sender) {
  log_.write(QStringLiteral("text.tag=") + sender.identifier());
  const wire::Register *setting = settingIn(sender.identifier());
  if (!setting) return;
  const auto [minimum, maximum] = setting->range;
  const QString cal = minimum < 0 ? QStringLiteral("true") : QString();
  if (checkValue(sender.text(), minimum, maximum, cal).isEmpty()) return;
  const auto entry = state_.textFieldValue.constFind(QStringView(setting->keys.entry).toString());
  sender.setText(entry == state_.textFieldValue.constEnd() ? QString() : entry->text());
}

void ValueEntry::refuse(int minvalue, int maxvalue) {
  const QString range = strings_.text(u"Setting_value_is_out_of_range") + QString::number(minvalue) + u'~' +
                        QString::number(maxvalue);
  alert_.run({strings_.text(u"Error"), range, {strings_.text(u"Confirm")}});
}

}  // namespace tavril
