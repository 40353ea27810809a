#pragma once

#include "editor/DialGeometry.h"

namespace tavril {

class EditorView;

/// The dot on the dial. It is placed relative to where it was when the screen loaded.
class Knob {
 public:
  explicit Knob(EditorView &view) : view_(view) {}

  /// Computes the dial's centre from where the knob is now.
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
