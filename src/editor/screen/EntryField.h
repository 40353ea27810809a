#pragma once

#include "editor/screen/EditLine.h"

#include <QWidget>

namespace tavril {

/// An entry whose every change counts, such as the position.
class EntryField : public EditLine {
  Q_OBJECT

 public:
  explicit EntryField(QWidget *parent = nullptr);

 Q_SIGNALS:
  /// Before the first change of an edit.
  void began();
  /// After each change by the user.
  void changed();
  /// When the user left the entry after an edit, and for each Return, with or without an edit.
  void ended();

 protected:
  void finish(End end, bool wasEdited) override;

 private:
  void edited();

  bool editing_ = false;
};

}  // namespace tavril
