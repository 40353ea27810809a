#include "editor/PositionEntry.h"

#include "editor/EditorView.h"
#include "editor/Knob.h"
#include "editor/ValueEntry.h"
#include "platform/Desktop.h"
#include "platform/IntegerValue.h"
#include "platform/Log.h"
#include "platform/ModalAlert.h"
#include "platform/ScreenElement.h"
#include "protocol/Function.h"
#include "protocol/SharedState.h"

namespace tavril {

PositionEntry::PositionEntry(SharedState &state, EditorView &view, Knob &knob, Function &commands,
                             const Desktop &desktop)
    : state_(state),
      view_(view),
      knob_(knob),
      commands_(commands),
      alert_(desktop.alert),
      log_(desktop.log) {}

void PositionEntry::controlTextDidBeginEditing(const QString &object) {
  log_.write(QStringLiteral("BeginEditing=") + entry());
  log_.write(QStringLiteral("obj=") + object);
}

void PositionEntry::controlTextDidChange() {
  const QString text = entry();
  const QString leftover = leftoverOf(text, false);
  log_.write(leftover);
  if (isPosition(text, leftover.isEmpty())) {
    const dial::Offset offset = knob_.showPosition(integerValueOf(text));
    log_.write(QString::asprintf("a=%f,b=%f", static_cast<double>(offset.a), static_cast<double>(offset.b)));
  } else {
    refuse();
  }
  log_.write(QStringLiteral("DidChange=") + entry());
}

void PositionEntry::controlTextDidEndEditing() {
  const QString text = entry();
  log_.write(QStringLiteral("EndEditing=") + text);
  const QString leftover = leftoverOf(text, false);
  log_.write(leftover);
  if (state_.TextMouseFlag == u"MouseDown") return;
  if (!isPosition(text, leftover.isEmpty())) {
    refuse();
    return;
  }
  knob_.showPosition(integerValueOf(text));
  if (state_.CanUseTavril == u"true") commands_.SetServoPosition(integerValueOf(text));
}

QString PositionEntry::entry() const {
  return view_.element(u"angle").text();
}

// Kept: C86.
bool PositionEntry::isPosition(const QString &text, bool hasOnlyDigits) const {
  const int value = integerValueOf(text);
  return hasOnlyDigits && value >= 0 && value < dial::positionEnd;
}

void PositionEntry::refuse() {
  // Kept: C85.
  alert_.run(
      {QStringLiteral("Error"), QStringLiteral("Please enter 0~1023 integer."), {QStringLiteral("OK")}});
}

}  // namespace tavril
