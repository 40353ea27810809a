#include "editor/dial/DialView.h"

#include "editor/dial/DialPointer.h"
#include "look/Style.h"

#include <QAccessible>
#include <QAccessibleInterface>
#include <QAccessibleValueChangeEvent>
#include <QAccessibleValueInterface>
#include <QAccessibleWidget>
#include <QColor>
#include <QFont>
#include <QKeyEvent>
#include <QObject>
#include <QPainter>
#include <QPen>
#include <QPointF>
#include <QRectF>
#include <QVariant>
#include <QtMath>

#include <algorithm>
#include <array>
#include <cmath>

namespace tavril {

namespace {

constexpr double faceRadius = 92;
constexpr double focusRadius = faceRadius - 0.5;  ///< of a wider line, which ends where the face does
constexpr double arcWidth = 10;
constexpr double zeroAngle_deg = -60;  ///< position 0, at the lower right
constexpr double liveArc_deg = 300;
constexpr double tickRadius = 79;
constexpr double tickLength = 5;
constexpr double markLength = 9;
constexpr int tickStep_deg = 10;
constexpr std::array marks_deg{0, 60, 150, 240, 300};  ///< from position 0: the ends and the two axes

constexpr int restPosition = 511;  ///< where the knob stands before anything is known
constexpr int step = 1;
constexpr int page = 10;

QPointF onRim(QPointF centre, double radius, double angle_deg) {
  const double angle = qDegreesToRadians(angle_deg);
  return centre + QPointF(radius * std::cos(angle), -radius * std::sin(angle));
}

void drawScale(QPainter &painter, QPointF centre) {
  for (int travel = 0; travel <= static_cast<int>(liveArc_deg); travel += tickStep_deg) {
    const bool isMark = std::find(marks_deg.begin(), marks_deg.end(), travel) != marks_deg.end();
    const double angle = zeroAngle_deg + travel;
    painter.setPen(
        QPen(isMark ? Style::mutedText() : Style::edge(), isMark ? 2 : 1.2, Qt::SolidLine, Qt::FlatCap));
    painter.drawLine(onRim(centre, tickRadius, angle),
                     onRim(centre, tickRadius + (isMark ? markLength : tickLength), angle));
  }
}

void drawArc(QPainter &painter, QPointF centre, const QColor &colour, double span_deg) {
  constexpr int steps = 16;  // of Qt's arcs per degree
  constexpr double radius = dial::knobRadius;
  const QRectF square(centre.x() - radius, centre.y() - radius, 2 * radius, 2 * radius);
  painter.setPen(QPen(colour, arcWidth, Qt::SolidLine, Qt::RoundCap));
  painter.drawArc(square, qRound(zeroAngle_deg * steps), qRound(span_deg * steps));
}

void drawFigures(QPainter &painter, QPointF centre, const QString &figures, std::optional<int> position) {
  QFont font = Style::textFont(24);
  font.setWeight(QFont::DemiBold);
  painter.setFont(font);
  painter.setPen(position ? Style::text() : Style::mutedText());
  painter.drawText(QRectF(centre.x() - 45, centre.y() - 18, 90, 30), Qt::AlignCenter, figures);
  if (!position) return;
  painter.setFont(Style::textFont(11));
  painter.setPen(Style::mutedText());
  painter.drawText(QRectF(centre.x() - 45, centre.y() + 12, 90, 18), Qt::AlignCenter,
                   QString::number(qRound(*position / dial::unitsPerDegree)) + QStringLiteral("\u00b0"));
}

/// The dial for assistive technologies: a value from 0 to 1023. Setting it has the same effect as the keys.
/// Qt owns this object.
class DialAccessible final : public QAccessibleWidget, public QAccessibleValueInterface {
 public:
  explicit DialAccessible(DialView &dial) : QAccessibleWidget(&dial, QAccessible::Dial) {}

  static QAccessibleInterface *make(const QString &, QObject *object) {
    auto *dial = qobject_cast<DialView *>(object);
    return dial ? new DialAccessible(*dial) : nullptr;
  }

  void *interface_cast(QAccessible::InterfaceType type) override {
    if (type == QAccessible::ValueInterface) return static_cast<QAccessibleValueInterface *>(this);
    return QAccessibleWidget::interface_cast(type);
  }
  QString text(QAccessible::Text type) const override {
    return type == QAccessible::Value ? dial().figures() : QAccessibleWidget::text(type);
  }

  QVariant currentValue() const override { return dial().knobPosition(); }
  void setCurrentValue(const QVariant &value) override { dial().requestPosition(value.toInt()); }
  QVariant maximumValue() const override { return dial::highestPosition; }
  QVariant minimumValue() const override { return 0; }
  QVariant minimumStepSize() const override { return 1; }

 private:
  DialView &dial() const { return static_cast<DialView &>(*widget()); }
};

}  // namespace

DialView::DialView(QWidget *parent) : QWidget(parent) {
  QAccessible::installFactory(&DialAccessible::make);
  setAttribute(Qt::WA_TransparentForMouseEvents);
  setFocusPolicy(Qt::TabFocus);
}

void DialView::setPosition(std::optional<int> position) {
  if (position == position_) return;
  position_ = position;
  update();
  QAccessibleValueChangeEvent changed(this, knobPosition());
  QAccessible::updateAccessibility(&changed);
}

int DialView::knobPosition() const {
  return position_.value_or(restPosition);
}

QString DialView::figures() const {
  return position_ ? QString::number(*position_) : QStringLiteral("\u2013");
}

void DialView::requestPosition(int position) {
  if (isEnabled()) Q_EMIT positionRequested(std::clamp(position, 0, dial::highestPosition));
}

void DialView::keyPressEvent(QKeyEvent *event) {
  const bool isPlain = !(event->modifiers() & ~(Qt::KeypadModifier | Qt::ShiftModifier));
  switch (isPlain ? event->key() : Qt::Key_unknown) {
    case Qt::Key_Up:
    case Qt::Key_Right:
      return requestPosition(knobPosition() + step);
    case Qt::Key_Down:
    case Qt::Key_Left:
      return requestPosition(knobPosition() - step);
    case Qt::Key_PageUp:
      return requestPosition(knobPosition() + page);
    case Qt::Key_PageDown:
      return requestPosition(knobPosition() - page);
    case Qt::Key_Home:
      return requestPosition(0);
    case Qt::Key_End:
      return requestPosition(dial::highestPosition);
    default:
      QWidget::keyPressEvent(event);
  }
}

void DialView::focusInEvent(QFocusEvent *event) {
  QWidget::focusInEvent(event);
  Q_EMIT focusChanged(true);
}

void DialView::focusOutEvent(QFocusEvent *event) {
  QWidget::focusOutEvent(event);
  Q_EMIT focusChanged(false);
}

void DialView::paintEvent(QPaintEvent *) {
  QPainter painter(this);
  painter.setRenderHint(QPainter::Antialiasing);
  const QPointF centre = QRectF(rect()).center();

  painter.setPen(QPen(Style::hairline(), 1));
  painter.setBrush(Style::recess());
  painter.drawEllipse(centre, faceRadius, faceRadius);
  painter.setBrush(Qt::NoBrush);
  if (hasFocus()) {
    painter.setPen(QPen(Style::accent(), 2));
    painter.drawEllipse(centre, focusRadius, focusRadius);
  }
  drawScale(painter, centre);
  drawArc(painter, centre, Style::arcGround(), liveArc_deg);
  if (position_ && *position_ > 0)
    drawArc(painter, centre, Style::accent(), *position_ / dial::unitsPerDegree);
  drawFigures(painter, centre, figures(), position_);
}

}  // namespace tavril
