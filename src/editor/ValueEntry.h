#pragma once

#include <QString>

namespace tavril {

class Log;
class ModalAlert;
class ScreenElement;
class StringTable;
struct Desktop;
struct SharedState;

/// Checks what is entered into the fields of the settings. Nothing is sent from here. Main thread only.
class ValueEntry {
 public:
  ValueEntry(SharedState &state, const Desktop &desktop);

  /// Empty when the text is acceptable, else "condition error", after an alert that names the range. `cal`
  /// that is not empty allows minus signs, anywhere and any number of them.
  QString checkValue(const QString &text, int minvalue, int maxvalue, const QString &cal);
  /// The field's entry was committed: a bad one is put back to the text last read from the servo.
  void text(ScreenElement &sender);

 private:
  void refuse(int minvalue, int maxvalue);

  SharedState &state_;
  const StringTable &strings_;
  ModalAlert &alert_;
  Log &log_;
};

/// The text without the characters that an entry may have: digits, and minus signs if allowed.
QString leftoverOf(const QString &text, bool signAllowed);

}  // namespace tavril
