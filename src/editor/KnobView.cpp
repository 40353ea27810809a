#include "editor/KnobView.h"

#include "look/Style.h"

#include <QColor>
#include <QPainter>
#include <QPen>
#include <QPointF>
#include <QRectF>

namespace tavril {

KnobView::KnobView(QWidget *parent) : QWidget(parent) {
  setAttribute(Qt::WA_TransparentForMouseEvents);
}

QRectF KnobView::frame() const {
  return frame_.isNull() ? QRectF(geometry()) : frame_;
}

void KnobView::setFrame(const QRectF &frame) {
  if (frame == frame_) return;
  frame_ = frame;
  setGeometry(frame.toAlignedRect());
  update();
}

void KnobView::setKnown(bool isKnown) {
  change(isKnown_, isKnown);
}

void KnobView::setPointer(bool isHovered, bool isPressed) {
  change(isHovered_, isHovered);
  change(isPressed_, isPressed);
}

void KnobView::setFocused(bool isFocused) {
  change(isFocused_, isFocused);
}

void KnobView::change(bool &state, bool value) {
  if (state == value) return;
  state = value;
  update();
}

void KnobView::paintEvent(QPaintEvent *) {
  QPainter painter(this);
  painter.setRenderHint(QPainter::Antialiasing);
  const QPointF centre = frame().center() - pos();
  const double radius = qMin(frame().width(), frame().height()) / 2.0;

  QColor face = isKnown_ ? Style::text() : Style::edge();
  if (isHovered_) face = isKnown_ ? Style::restText() : Style::disabledText();
  if (isPressed_) face = Style::flashFace();
  painter.setPen(QPen(isFocused_ ? Style::accent() : Style::well(), 2));
  painter.setBrush(face);
  painter.drawEllipse(centre, radius - 1, radius - 1);
  if (isFocused_) {
    // A dark ring sets the face apart from the ring of the focus.
    painter.setPen(QPen(Style::well(), 1.5));
    painter.drawEllipse(centre, radius - 2.75, radius - 2.75);
  }
  painter.setPen(Qt::NoPen);
  painter.setBrush(isKnown_ || isPressed_ ? Style::strongFace() : Style::recess());
  const double middle = isPressed_ ? 5 : 4;
  painter.drawEllipse(centre, middle, middle);
}

}  // namespace tavril
