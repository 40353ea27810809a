#include "editor/ConnectionLine.h"

#include "look/Style.h"

#include <QColor>
#include <QPainter>
#include <QPen>
#include <QPointF>
#include <QRectF>

namespace tavril {

namespace {

constexpr int lampRoom = 44;
constexpr double lampRadius = 9;

QColor colourOf(ConnectionState state) {
  switch (state) {
    case ConnectionState::Connected:
      return Style::accent();
    case ConnectionState::Initialising:
      return Style::warningText();
    case ConnectionState::NotConnected:
      break;
  }
  return Style::mutedText();
}

/// An empty ring, a ring half full, a full disc.
void drawLamp(QPainter &painter, QPointF centre, ConnectionState state) {
  const QColor colour = colourOf(state);
  const QRectF square(centre.x() - lampRadius, centre.y() - lampRadius, 2 * lampRadius, 2 * lampRadius);
  painter.setPen(Qt::NoPen);
  painter.setBrush(colour);
  if (state == ConnectionState::Connected) painter.drawEllipse(square);
  if (state == ConnectionState::Initialising) painter.drawPie(square, 90 * 16, 180 * 16);
  painter.setPen(QPen(colour, 2.5));
  painter.setBrush(Qt::NoBrush);
  painter.drawEllipse(square);
}

}  // namespace

ConnectionLine::ConnectionLine(QWidget *parent) : QLabel(parent) {
  setContentsMargins(lampRoom, 4, 8, 4);
}

ConnectionState ConnectionLine::state() const {
  return followed_ ? *followed_ : ConnectionState::NotConnected;
}

void ConnectionLine::paintEvent(QPaintEvent *event) {
  {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF band = QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5);
    painter.setPen(QPen(state() == ConnectionState::NotConnected ? Style::hairline() : colourOf(state()), 1));
    painter.setBrush(Style::recess());
    painter.drawRoundedRect(band, 8, 8);
    drawLamp(painter, {lampRoom / 2.0, height() / 2.0}, state());
  }
  QLabel::paintEvent(event);
}

}  // namespace tavril
