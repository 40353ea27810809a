#include "editor/screen/EntryField.h"

#include <QLineEdit>

namespace tavril {

EntryField::EntryField(QWidget *parent) : EditLine(parent) {
  connect(this, &QLineEdit::textEdited, this, &EntryField::edited);
}

void EntryField::edited() {
  if (!editing_) {
    editing_ = true;
    Q_EMIT began();
  }
  Q_EMIT changed();
}

void EntryField::finish(End end, bool wasEdited) {
  editing_ = false;
  if (end == End::Return || wasEdited) Q_EMIT ended();
}

}  // namespace tavril
