#pragma once

#include <QString>

namespace tavril {

class EditorView;
class Function;
class Knob;
class Log;
class ModalAlert;
struct Desktop;
struct SharedState;

/// The entry of the goal position, 0 to 1023. It is checked at every keystroke and sent when editing ends.
/// Notifications of other fields check the position entry as well.
class PositionEntry {
 public:
  PositionEntry(SharedState &state, EditorView &view, Knob &knob, Function &commands, const Desktop &desktop);

  /// `object` describes the field that is edited, for the log.
  void controlTextDidBeginEditing(const QString &object);
  void controlTextDidChange();
  void controlTextDidEndEditing();

 private:
  QString entry() const;
  bool isPosition(const QString &text, bool hasOnlyDigits) const;
  void refuse();

  SharedState &state_;
  EditorView &view_;
  Knob &knob_;
  Function &commands_;
  ModalAlert &alert_;
  Log &log_;
};

}  // namespace tavril
