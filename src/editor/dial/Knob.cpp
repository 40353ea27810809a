#include "editor/dial/Knob.h"

#include "editor/screen/EditorView.h"

namespace tavril {

namespace {

// At rest the knob stands this far above the centre of its travel, near the top of the dial.
constexpr double restAboveCentre = 65;

}  // namespace

void Knob::takeCentre() {
  const DesignRect frame = view_.knobFrame();
  MotorPointX = static_cast<int>(frame.x);
  MotorPointY = static_cast<int>(frame.y - restAboveCentre);
}

dial::Offset Knob::showPosition(int position) {
  const dial::Offset offset = dial::knobOffset(dial::dialAngle(position));
  place(offset);
  return offset;
}

void Knob::place(const dial::Offset &offset) {
  const float x = offset.a + static_cast<float>(MotorPointX);
  const float y = offset.b + static_cast<float>(MotorPointY);
  view_.setKnobFrame({static_cast<double>(x), static_cast<double>(y), dial::knobSize, dial::knobSize});
}

}  // namespace tavril
