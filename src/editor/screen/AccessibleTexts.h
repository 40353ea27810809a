#pragma once

class QWidget;

namespace tavril {

class StringTable;

/// What a screen reader says of those elements of the main screen that have no caption of their own to be
/// named by. Value fields are named by their captions and described by their tool tips already.
class AccessibleTexts {
 public:
  /// Names the elements of the screen anew; to be called again when the language has changed. Main thread
  /// only.
  static void put(QWidget &screen, const StringTable &strings);
};

}  // namespace tavril
