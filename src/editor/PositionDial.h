#pragma once

#include <QPointF>

namespace tavril {

class EditorView;
class Function;
class Knob;
class Log;
struct Desktop;
struct SharedState;

/// The dial. It turns the place of the pointer into a goal position, shows it, and sends it if a servo was
/// found. Points are in the design's coordinates.
class PositionDial {
 public:
  PositionDial(SharedState &state, EditorView &view, Knob &knob, Function &commands, const Desktop &desktop);

  void mouseDown(QPointF location);
  void mouseDragged(QPointF location);
  void mouseUp();

  /// Has the effect of dragging the knob to this position and releasing it. A number beyond an end means the
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
