#pragma once

#include <QPointF>

namespace tavril {

class EditorView;
class Function;
class Knob;
class Log;
struct Desktop;
struct SharedState;

/// The dial: turns where the pointer is into a goal position, shows it and, once a servo was found, sends it
/// at once and every time. Points are in the design's coordinates. Main thread only; owns nothing that it is
/// given.
class PositionDial {
 public:
  PositionDial(SharedState &state, EditorView &view, Knob &knob, Function &commands, const Desktop &desktop);

  void mouseDown(QPointF location);
  void mouseDragged(QPointF location);
  void mouseUp();

  /// As if the knob had been dragged to exactly this position and let go there. Beyond 0 and 1023: to the
  /// end.
  void dragTo(int position);

 private:
  void turnTowards(QPointF location);
  void turn(float angle_deg);

  SharedState &state_;
  EditorView &view_;
  Knob &knob_;
  Function &commands_;
  Log &log_;
};

}  // namespace tavril
