#pragma once

#include "editor/dial/DialGeometry.h"

namespace tavril {

class EditorView;

/// The dot on the dial. Every placement is relative to where it stood when the screen loaded. Main thread
/// only.
class Knob {
 public:
  explicit Knob(EditorView &view) : view_(view) {}

  /// Takes the centre of the knob's travel from where it stands now.
  void takeCentre();
  /// Places the knob for a position and gives the offset from the centre.
  dial::Offset showPosition(int position);
  void place(const dial::Offset &offset);

 private:
  EditorView &view_;
  int MotorPointX = 0;
  int MotorPointY = 0;
};

}  // namespace tavril
