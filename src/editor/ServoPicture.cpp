#include "editor/ServoPicture.h"

#include "look/Style.h"

#include <QColor>
#include <QPainter>
#include <QPainterPath>
#include <QPen>
#include <QPointF>
#include <QRectF>

#include <utility>

namespace tavril {

namespace {

constexpr QColor casing{0x2b, 0x32, 0x3d};
constexpr QColor casingEdge{0x3b, 0x45, 0x53};
constexpr QColor lid{0x32, 0x3a, 0x46};
constexpr QColor flange{0x25, 0x2b, 0x34};
constexpr QColor metal{0x4a, 0x56, 0x66};
constexpr QColor label{0x22, 0x28, 0x31};

void drawCable(QPainter &painter, double bottom) {
  painter.setBrush(Qt::NoBrush);
  for (const auto &[offset, colour] :
       {std::pair(-4.0, metal), std::pair(0.0, Style::strongEdge()), std::pair(4.0, metal)}) {
    QPainterPath cable(QPointF(82, 156 + offset));
    cable.cubicTo(QPointF(50, 158 + offset), QPointF(56, bottom - 26 + offset), QPointF(0, bottom + offset));
    painter.setPen(QPen(colour, 2.4));
    painter.drawPath(cable);
  }
}

void drawCase(QPainter &painter) {
  painter.setPen(QPen(casingEdge, 1));
  painter.setBrush(casing);
  painter.drawRoundedRect(QRectF(82.5, 84.5, 106, 98), 7, 7);
  painter.setBrush(lid);
  painter.drawRoundedRect(QRectF(82.5, 76.5, 106, 22), 6, 6);
  painter.setBrush(flange);
  painter.drawRoundedRect(QRectF(64.5, 106.5, 142, 12), 3, 3);
  painter.setPen(Qt::NoPen);
  painter.setBrush(Style::recess());
  for (const double x : {72.5, 198.5}) painter.drawEllipse(QPointF(x, 112.5), 2.5, 2.5);
  painter.setBrush(label);
  painter.drawRoundedRect(QRectF(96, 132, 79, 36), 4, 4);
  painter.setBrush(Style::strongEdge());
  painter.drawRoundedRect(QRectF(104, 142, 30, 3), 1.5, 1.5);
  painter.setBrush(metal);
  painter.drawRoundedRect(QRectF(104, 150, 52, 3), 1.5, 1.5);
  painter.drawRoundedRect(QRectF(104, 157, 42, 3), 1.5, 1.5);
}

void drawHorn(QPainter &painter) {
  const QPointF axis(148, 66);
  painter.setPen(QPen(metal, 1));
  painter.setBrush(lid.lighter(110));
  painter.drawEllipse(axis, 24, 24);
  painter.setPen(QPen(casing, 1));
  painter.setBrush(metal);
  painter.drawRoundedRect(QRectF(axis.x() - 6, 18, 12, 54), 6, 6);
  painter.setPen(Qt::NoPen);
  painter.setBrush(Style::recess());
  for (const double y : {26.0, 37.0}) painter.drawEllipse(QPointF(axis.x(), y), 2, 2);
  painter.setBrush(Style::accent());
  painter.drawEllipse(axis, 7, 7);
}

}  // namespace

ServoPicture::ServoPicture(QWidget *parent) : QWidget(parent) {
  setAttribute(Qt::WA_TransparentForMouseEvents);
}

void ServoPicture::paintEvent(QPaintEvent *) {
  QPainter painter(this);
  painter.setRenderHint(QPainter::Antialiasing);
  const QRectF frame = QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5);
  QPainterPath outline;
  outline.addRoundedRect(frame, 8, 8);
  painter.setPen(QPen(Style::hairline(), 1));
  painter.setBrush(Style::recess());
  painter.drawPath(outline);
  painter.setClipPath(outline);
  drawCable(painter, height() - 12);
  drawCase(painter);
  drawHorn(painter);
}

}  // namespace tavril
