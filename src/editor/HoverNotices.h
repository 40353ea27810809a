#pragma once

#include "platform/KeyedText.h"

#include <QPointF>
#include <QString>
#include <QStringView>

namespace tavril {

class EditorView;
class StringTable;
struct Desktop;
struct RegisterRow;
struct SharedState;

/// Explains the row of the parameter list that the pointer has come to, or the keyboard's focus. A notice
/// stays until the next row. Points are in the design's coordinates. Main thread only; owns nothing that it
/// is given.
class HoverNotices {
 public:
  HoverNotices(SharedState &state, EditorView &view, const Desktop &desktop);

  /// Forgets the last notice.
  void reset();
  void mouseMoved(QPointF location);
  /// The field of the row whose notice has this key has got the focus.
  void focusCame(QStringView noticeKey);

 private:
  void take(const RegisterRow &row);
  void show();

  SharedState &state_;
  EditorView &view_;
  const StringTable &strings_;
  KeyedText str;  ///< the notice shown last
};

}  // namespace tavril
