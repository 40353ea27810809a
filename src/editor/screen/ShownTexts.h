#pragma once

#include <QString>

namespace tavril {

class TextChange;
struct SharedState;

/// The texts that the screen and its panels show at the moment and that no layout pass looks up again: the
/// connection line, the message line, the question, what is waited for, the notice, and the tool tips of the
/// fields. Main thread only.
struct ShownTexts {
  /// Puts all of them, and the status lists kept for later notices, into another language.
  static void change(SharedState &state, const TextChange &change);
  /// The notice in the other language, with the list of what the servo reports if it has one.
  static QString notice(const QString &notice, const TextChange &change);
};

}  // namespace tavril
