#pragma once

#include "editor/screen/EditLine.h"

#include <QWidget>

namespace tavril {

/// An entry that reports each change, such as the position.
class EntryField : public EditLine {
  Q_OBJECT

 public:
  explicit EntryField(QWidget *parent = nullptr);

 Q_SIGNALS:
  /// Emitted before the first change of an edit.
  void began();
  /// Emitted after each change by the user.
  void changed();
  /// Emitted when the user leaves the entry after an edit, and for each Return, with or without an edit.
  void ended();

 protected:
  void finish(End end, bool wasEdited) override;

 private:
  void edited();

  bool editing_ = false;
};

}  // namespace tavril
