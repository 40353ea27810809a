#include "editor/screen/ButtonLabel.h"

#include "look/Style.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QPen>
#include <QPointF>
#include <QRectF>
#include <QStyle>

namespace tavril {

namespace {

constexpr int sidePadding = 12;
constexpr double radius = 6;

bool isDark(const QColor &colour) {
  return colour.lightnessF() < 0.5F;
}

}  // namespace

ButtonLabel::ButtonLabel(QWidget *parent) : QAbstractButton(parent), textColor_(Style::restText()) {
  setFocusPolicy(Qt::TabFocus);  // and a press takes it
  setAttribute(Qt::WA_Hover);
}

void ButtonLabel::setTextColor(const QColor &colour) {
  if (colour == textColor_) return;
  textColor_ = colour;
  update();
}

QColor ButtonLabel::faceColor() const {
  if (!isEnabled()) return Style::card();
  if (isDark(textColor_)) return Style::flashFace();
  if (strong_) return Style::strongFace();
  return quiet_ ? Style::card() : Style::face();
}

QSize ButtonLabel::sizeHint() const {
  const QSize text = fontMetrics().size(Qt::TextSingleLine | Qt::TextShowMnemonic, this->text());
  return {text.width() + 2 * sidePadding, qMax(30, text.height() + 8)};
}

bool ButtonLabel::event(QEvent *event) {
  if (event->type() == QEvent::WindowBlocked) {
    isInterrupted_ = true;
    // The alert gets the real release. A release beside the button makes the press ineffective.
    const QPointF beside(-1, -1);
    QMouseEvent release(QEvent::MouseButtonRelease, beside, mapToGlobal(beside), Qt::LeftButton, Qt::NoButton,
                        Qt::NoModifier);
    mouseReleaseEvent(&release);
  }
  return QAbstractButton::event(event);
}

void ButtonLabel::mousePressEvent(QMouseEvent *event) {
  isInterrupted_ = false;
  // The edited field commits before the button acts, which may raise an alert.
  setFocus(Qt::MouseFocusReason);
  if (!isInterrupted_) QAbstractButton::mousePressEvent(event);
}

void ButtonLabel::keyPressEvent(QKeyEvent *event) {
  if (event->key() != Qt::Key_Return && event->key() != Qt::Key_Enter) {
    QAbstractButton::keyPressEvent(event);
  } else if (!event->isAutoRepeat()) {
    click();
  }
}

void ButtonLabel::paintEvent(QPaintEvent *) {
  QPainter painter(this);
  painter.setRenderHint(QPainter::Antialiasing);
  const QRectF frame = QRectF(rect()).adjusted(1, 1, -1, -1);

  QColor edge = strong_ ? Style::strongEdge() : Style::edge();
  if (quiet_ || !isEnabled()) edge = quiet_ ? Qt::transparent : Style::edge();
  if (isEnabled() && (underMouse() || isDown())) edge = Style::mutedText();
  QPen pen(edge, isDown() ? 2 : 1);
  if (!isEnabled()) pen.setStyle(Qt::DashLine);
  painter.setPen(pen);
  painter.setBrush(faceColor());
  painter.drawRoundedRect(frame.adjusted(0.5, 0.5, -0.5, -0.5), radius, radius);

  if (hasFocus()) Style::drawFocusRing(painter, rect(), strong_ ? Style::restText() : Style::accent());
  painter.setPen(isEnabled() ? textColor_ : Style::disabledText());
  style()->drawItemText(&painter, rect(), Qt::AlignCenter | Qt::TextSingleLine | Qt::TextShowMnemonic,
                        palette(), isEnabled(), text());
}

}  // namespace tavril
