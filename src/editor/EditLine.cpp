#include "editor/EditLine.h"

#include <QFocusEvent>
#include <QKeyEvent>

namespace tavril {

EditLine::EditLine(QWidget *parent) : QLineEdit(parent) {
  connect(this, &QLineEdit::returnPressed, this, [this] { end(End::Return); });
}

void EditLine::keyPressEvent(QKeyEvent *event) {
  const bool isReturn = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
  if (isReturn && event->isAutoRepeat()) return;  // one Return, however long the key is held
  QLineEdit::keyPressEvent(event);
}

void EditLine::focusOutEvent(QFocusEvent *event) {
  QLineEdit::focusOutEvent(event);
  switch (event->reason()) {
    case Qt::ActiveWindowFocusReason:
    case Qt::PopupFocusReason:
    case Qt::MenuBarFocusReason:
      return;
    default:
      end(End::Leaving);
  }
}

void EditLine::end(End end) {
  const bool wasEdited = isModified();
  setModified(false);
  finish(end, wasEdited);
}

}  // namespace tavril
