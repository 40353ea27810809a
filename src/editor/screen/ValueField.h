#pragma once

#include "editor/screen/EditLine.h"

#include <QFocusEvent>
#include <QWidget>

namespace tavril {

/// The value of a register. A field with the property "readout" is a read-out and takes no entry.
class ValueField : public EditLine {
  Q_OBJECT
  Q_PROPERTY(bool readout MEMBER readout_)
  Q_PROPERTY(bool alarm READ alarm)

 public:
  explicit ValueField(QWidget *parent = nullptr);

  /// Whether a read-out shows a number of errors above 0.
  bool alarm() const { return alarm_; }
  void setAlarm(bool alarm);

 Q_SIGNALS:
  /// Emitted once for each edit, when the user pressed Return or left the field.
  void committed();
  /// The user moved the keyboard's focus here. Not emitted when it returns with the window or from a menu.
  void entered();

 protected:
  void focusInEvent(QFocusEvent *event) override;
  void finish(End end, bool wasEdited) override;

 private:
  bool readout_ = false;
  bool alarm_ = false;
};

}  // namespace tavril
