#include "editor/DoctorMark.h"

#include "look/Style.h"

#include <QColor>
#include <QPainter>
#include <QPen>
#include <QPointF>
#include <QPolygonF>
#include <QRectF>

namespace tavril {

namespace {

constexpr int side = 22;
constexpr double radius = 8;

}  // namespace

DoctorMark::DoctorMark(QWidget *parent) : QWidget(parent) {
  setFixedSize(side, side);
}

void DoctorMark::setState(std::optional<doctor::State> state) {
  state_ = state;
  isRunning_ = false;
  update();
}

void DoctorMark::setRunning() {
  state_.reset();
  isRunning_ = true;
  update();
}

void DoctorMark::paintEvent(QPaintEvent *) {
  QPainter painter(this);
  painter.setRenderHint(QPainter::Antialiasing);
  painter.translate(side / 2.0, side / 2.0);
  const QRectF disc(-radius, -radius, 2 * radius, 2 * radius);
  const auto pen = [&](const QColor &colour) {
    painter.setPen(QPen(colour, 2.2, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
  };
  if (!state_) {
    pen(isRunning_ ? Style::warningText() : Style::mutedText());
    painter.drawEllipse(disc);
    if (isRunning_) {
      painter.setBrush(Style::warningText());
      painter.drawPie(disc, 90 * 16, 180 * 16);
    }
    return;
  }
  switch (*state_) {
    case doctor::State::Passed:
      pen(Style::accent());
      painter.drawPolyline(QPolygonF{{-6, 0}, {-2, 5}, {7, -5}});
      break;
    case doctor::State::Warning:
      pen(Style::warningText());
      painter.drawPolygon(QPolygonF{{0, -8}, {8.5, 7}, {-8.5, 7}});
      painter.drawLine(QPointF(0, -2), QPointF(0, 2));
      break;
    case doctor::State::Failed:
      pen(Style::warningText());
      painter.setBrush(Style::warningText());
      painter.drawEllipse(disc);
      pen(Style::card());
      painter.drawLine(QPointF(-3.5, -3.5), QPointF(3.5, 3.5));
      painter.drawLine(QPointF(-3.5, 3.5), QPointF(3.5, -3.5));
      break;
    case doctor::State::Skipped:
      pen(Style::mutedText());
      painter.drawLine(QPointF(-5, 0), QPointF(5, 0));
      break;
  }
}

}  // namespace tavril
