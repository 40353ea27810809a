#include "editor/screen/ValueField.h"

#include <QFocusEvent>
#include <QStyle>

namespace tavril {

ValueField::ValueField(QWidget *parent) : EditLine(parent) {}

void ValueField::setAlarm(bool alarm) {
  if (alarm == alarm_) return;
  alarm_ = alarm;
  // A style sheet reads properties only when a widget is polished again.
  style()->unpolish(this);
  style()->polish(this);
}

void ValueField::focusInEvent(QFocusEvent *event) {
  EditLine::focusInEvent(event);
  if (!isPassing(*event)) Q_EMIT entered();
}

void ValueField::finish(End, bool wasEdited) {
  if (wasEdited) Q_EMIT committed();
}

}  // namespace tavril
