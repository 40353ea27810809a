#pragma once

#include <QString>

namespace tavril {

class Log;
class ModalAlert;
class ScreenElement;
class StringTable;
struct Desktop;
struct SharedState;

/// Checks entries in the fields of the settings. It sends nothing.
class ValueEntry {
 public:
  ValueEntry(SharedState &state, const Desktop &desktop);

  /// Returns an empty text if the entry is acceptable. Otherwise shows an alert with the range and returns
  /// "condition error". If `cal` is not empty, any number of minus signs is allowed, anywhere.
  QString checkValue(const QString &text, int minvalue, int maxvalue, const QString &cal);
  /// The user committed the entry. If it is not acceptable, it is replaced by the text last read from the
  /// servo.
  void text(ScreenElement &sender);

 private:
  void refuse(int minvalue, int maxvalue);

  SharedState &state_;
  const StringTable &strings_;
  ModalAlert &alert_;
  Log &log_;
};

/// Removes all characters that an entry may have: digits and, if allowed, minus signs.
QString leftoverOf(const QString &text, bool signAllowed);

}  // namespace tavril
