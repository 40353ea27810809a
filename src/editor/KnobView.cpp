#include "editor/KnobView.h"

#include "editor/Style.h"

#include <QPainter>

namespace tavril {

KnobView::KnobView(QWidget *parent) : QWidget(parent) {
  setAttribute(Qt::WA_TransparentForMouseEvents);
}

void KnobView::paintEvent(QPaintEvent *) {
  QPainter painter(this);
  painter.setRenderHint(QPainter::Antialiasing);
  const QPointF centre = QRectF(rect()).center();
  const double radius = qMin(width(), height()) / 2.0;
  painter.setPen(QPen(Style::well, 2));
  painter.setBrush(Style::text);
  painter.drawEllipse(centre, radius - 1, radius - 1);
  painter.setPen(Qt::NoPen);
  painter.setBrush(Style::strongFace);
  painter.drawEllipse(centre, 4, 4);
}

}  // namespace tavril
