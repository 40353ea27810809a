#include "editor/DialView.h"

#include "editor/Style.h"

#include <QPainter>
#include <QtMath>

namespace tavril {

namespace {

constexpr double knobRadius = 66;
constexpr double faceRadius = 92;
constexpr double arcWidth = 10;
constexpr double tickRadius = 80;
constexpr double zeroAngle_deg = -60;  ///< position 0, at the lower right
constexpr double liveArc_deg = 300;
constexpr double unitsPerDegree = 3.41;
constexpr int tickStep_deg = 10;
constexpr int ticksPerMark = 5;

QPointF onRim(QPointF centre, double radius, double angle_deg) {
  const double angle = qDegreesToRadians(angle_deg);
  return centre + QPointF(radius * std::cos(angle), -radius * std::sin(angle));
}

void drawScale(QPainter &painter, QPointF centre) {
  constexpr int ticks = static_cast<int>(liveArc_deg) / tickStep_deg;
  for (int tick = 0; tick <= ticks; ++tick) {
    const bool isMark = tick % ticksPerMark == 0;
    const double angle = zeroAngle_deg + tick * tickStep_deg;
    painter.setPen(QPen(isMark ? Style::disabledText : Style::edge, isMark ? 1.6 : 1.2));
    painter.drawLine(onRim(centre, tickRadius, angle), onRim(centre, tickRadius + (isMark ? 8 : 4), angle));
  }
}

void drawArc(QPainter &painter, QPointF centre, const QColor &colour, double angle_deg) {
  constexpr int steps = 16;  // of Qt's arcs per degree
  const QRectF square(centre.x() - knobRadius, centre.y() - knobRadius, 2 * knobRadius, 2 * knobRadius);
  painter.setPen(QPen(colour, arcWidth, Qt::SolidLine, Qt::RoundCap));
  painter.drawArc(square, qRound(zeroAngle_deg * steps), qRound(angle_deg * steps));
}

void drawFigures(QPainter &painter, QPointF centre, std::optional<int> position) {
  QFont figures = Style::textFont(24);
  figures.setWeight(QFont::DemiBold);
  painter.setFont(figures);
  painter.setPen(position ? Style::text : Style::mutedText);
  painter.drawText(QRectF(centre.x() - 45, centre.y() - 18, 90, 30), Qt::AlignCenter,
                   position ? QString::number(*position) : QStringLiteral("\u2013"));
  if (!position) return;
  painter.setFont(Style::textFont(11));
  painter.setPen(Style::mutedText);
  painter.drawText(QRectF(centre.x() - 45, centre.y() + 12, 90, 18), Qt::AlignCenter,
                   QString::number(qRound(*position / unitsPerDegree)) + QStringLiteral("\u00b0"));
}

}  // namespace

DialView::DialView(QWidget *parent) : QWidget(parent) {
  setAttribute(Qt::WA_TransparentForMouseEvents);
}

void DialView::setPosition(std::optional<int> position) {
  if (position == position_) return;
  position_ = position;
  update();
}

void DialView::paintEvent(QPaintEvent *) {
  QPainter painter(this);
  painter.setRenderHint(QPainter::Antialiasing);
  const QPointF centre = QRectF(rect()).center();

  painter.setPen(QPen(Style::hairline, 1));
  painter.setBrush(Style::recess);
  painter.drawEllipse(centre, faceRadius, faceRadius);
  drawScale(painter, centre);
  painter.setBrush(Qt::NoBrush);
  drawArc(painter, centre, Style::hairline.lighter(125), liveArc_deg);
  if (position_ && *position_ > 0) drawArc(painter, centre, Style::accent, *position_ / unitsPerDegree);
  drawFigures(painter, centre, position_);
}

}  // namespace tavril
