#include "editor/PositionDial.h"

#include "editor/DialPointer.h"
#include "editor/EditorView.h"
#include "editor/Knob.h"
#include "platform/Desktop.h"
#include "platform/Log.h"
#include "platform/ScreenElement.h"
#include "protocol/Function.h"
#include "protocol/SharedState.h"

#include <QString>

#include <QLatin1String>
#include <algorithm>

namespace tavril {

namespace {

/// "First quadrant" and so on. Kept: C78.
QString nameOf(dial::Quadrant quadrant) {
  switch (quadrant) {
    case dial::Quadrant::First:
      return QStringLiteral("第一象限");
    case dial::Quadrant::Second:
      return QStringLiteral("第二象限");
    case dial::Quadrant::Third:
      return QStringLiteral("第三象限");
    case dial::Quadrant::Fourth:
      return QStringLiteral("第四象限");
    case dial::Quadrant::None:
      break;
  }
  return {};
}

}  // namespace

PositionDial::PositionDial(SharedState &state, EditorView &view, Knob &knob, Function &commands,
                           const Desktop &desktop)
    : state_(state), view_(view), knob_(knob), commands_(commands), log_(desktop.log) {}

void PositionDial::mouseDown(QPointF location) {
  if (dial::isSensitive(location.x(), location.y())) {
    turnTowards(location);
    state_.TextMouseFlag = QLatin1String("");
  } else {
    state_.TextMouseFlag = QStringLiteral("MouseDown");  // Kept: C79.
    log_.write(QStringLiteral("Other Area"));
  }
}

void PositionDial::mouseDragged(QPointF location) {
  state_.limitFlag = QStringLiteral("MouseIn");
  if (dial::isSensitive(location.x(), location.y())) turnTowards(location);
}

void PositionDial::mouseUp() {
  state_.limitFlag = QLatin1String("");
  log_.write(QStringLiteral("MouseUp"));
}

void PositionDial::dragTo(int position) {
  state_.limitFlag = QStringLiteral("MouseIn");
  turn(dial::angleFor(std::clamp(position, 0, dial::highestPosition)));
  mouseUp();
}

void PositionDial::turnTowards(QPointF location) {
  const dial::Direction direction = dial::directionOf(location.x(), location.y());
  if (direction.quadrant != dial::Quadrant::None) log_.write(nameOf(direction.quadrant));
  // Kept: C77.
  log_.write(QString::asprintf("angel=%f", static_cast<double>(direction.angle_deg)));
  turn(direction.angle_deg);
}

void PositionDial::turn(float angle_deg) {
  const dial::Reading reading = dial::readingAt(angle_deg);
  log_.write(QString::asprintf("a=%f,b=%f", static_cast<double>(reading.knob.a),
                               static_cast<double>(reading.knob.b)));
  // Kept: C76.
  view_.element(u"TXcmd").setIntegerValue(dial::wholeCoordinate(dial::centreX, reading.knob.a));
  view_.element(u"RXcmd").setIntegerValue(dial::wholeCoordinate(dial::centreY, reading.knob.b));
  knob_.place(reading.knob);
  if (reading.exactPosition) {
    log_.write(QString::asprintf("calfloat=%f", static_cast<double>(*reading.exactPosition)));
  }
  ScreenElement &entry = view_.element(u"angle");
  entry.setText(QString::number(reading.position));
  // Kept: C80.
  if (state_.CanUseTavril == u"true") commands_.SetServoPosition(entry.integerValue());
}

}  // namespace tavril
