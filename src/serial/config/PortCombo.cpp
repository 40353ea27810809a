#include "serial/config/PortCombo.h"

#include "serial/config/PortDelegate.h"

#include <QAbstractItemView>
#include <QPainter>
#include <QPalette>
#include <QPen>
#include <QPointF>
#include <QPolygonF>

#include <algorithm>

namespace tavril {

PortCombo::PortCombo(QWidget *parent) : QComboBox(parent) {
  setItemDelegate(new PortDelegate(this));
}

void PortCombo::showPopup() {
  constexpr int widest = 640;
  Q_EMIT opening();
  view()->setMinimumWidth(std::clamp(view()->sizeHintForColumn(0), width(), std::max(widest, width())));
  QComboBox::showPopup();
}

void PortCombo::paintEvent(QPaintEvent *event) {
  QComboBox::paintEvent(event);
  constexpr double fromRight = 17;
  constexpr double halfWidth = 4.5;
  constexpr double halfHeight = 2.25;
  const QPointF middle(width() - fromRight, height() / 2.0);
  QPainter painter(this);
  painter.setRenderHint(QPainter::Antialiasing);
  painter.setPen(
      QPen(palette().color(QPalette::PlaceholderText), 1.8, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
  painter.drawPolyline(QPolygonF{middle + QPointF(-halfWidth, -halfHeight), middle + QPointF(0, halfHeight),
                                 middle + QPointF(halfWidth, -halfHeight)});
}

}  // namespace tavril
