#include "editor/screen/EditLine.h"

#include <QFocusEvent>
#include <QKeyEvent>
#include <QString>
#include <QValidator>

namespace tavril {

namespace {

class LengthCheck final : public QValidator {
 public:
  using QValidator::QValidator;

  State validate(QString &entry, int &) const override {
    return entry.size() > EditLine::longestEntry ? Invalid : Acceptable;
  }
};

}  // namespace

EditLine::EditLine(QWidget *parent) : QLineEdit(parent) {
  setValidator(new LengthCheck(this));
  connect(this, &QLineEdit::returnPressed, this, [this] { end(End::Return); });
}

void EditLine::keyPressEvent(QKeyEvent *event) {
  const bool isReturn = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
  if (isReturn && event->isAutoRepeat()) return;  // one Return, however long the key is held
  QLineEdit::keyPressEvent(event);
}

bool EditLine::isPassing(const QFocusEvent &event) {
  switch (event.reason()) {
    case Qt::ActiveWindowFocusReason:
    case Qt::PopupFocusReason:
    case Qt::MenuBarFocusReason:
      return true;
    default:
      return false;
  }
}

void EditLine::focusOutEvent(QFocusEvent *event) {
  QLineEdit::focusOutEvent(event);
  if (!isPassing(*event)) end(End::Leaving);
}

void EditLine::end(End end) {
  const bool wasEdited = isModified();
  setModified(false);
  finish(end, wasEdited);
}

}  // namespace tavril
