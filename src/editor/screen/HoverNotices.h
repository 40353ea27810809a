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

/// Shows the notice of the parameter row under the pointer or with the keyboard's focus. A notice stays until
/// the next one. Points are in the design's coordinates.
class HoverNotices {
 public:
  HoverNotices(SharedState &state, EditorView &view, const Desktop &desktop);

  /// Forgets the last notice.
  void reset();
  void mouseMoved(QPointF location);
  /// The field whose row has this notice has got the focus.
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
