#include "editor/DialAccessible.h"

#include "editor/DialPointer.h"
#include "editor/DialView.h"

namespace tavril {

DialAccessible::DialAccessible(DialView &dial) : QAccessibleWidget(&dial, QAccessible::Dial) {}

QAccessibleInterface *DialAccessible::make(const QString &, QObject *object) {
  auto *dial = qobject_cast<DialView *>(object);
  return dial ? new DialAccessible(*dial) : nullptr;
}

DialView &DialAccessible::dial() const {
  return static_cast<DialView &>(*widget());
}

void *DialAccessible::interface_cast(QAccessible::InterfaceType type) {
  if (type == QAccessible::ValueInterface) return static_cast<QAccessibleValueInterface *>(this);
  return QAccessibleWidget::interface_cast(type);
}

QString DialAccessible::text(QAccessible::Text type) const {
  return type == QAccessible::Value ? dial().figures() : QAccessibleWidget::text(type);
}

QVariant DialAccessible::currentValue() const {
  return dial().knobPosition();
}

void DialAccessible::setCurrentValue(const QVariant &value) {
  dial().requestPosition(value.toInt());
}

QVariant DialAccessible::maximumValue() const {
  return dial::highestPosition;
}

QVariant DialAccessible::minimumValue() const {
  return 0;
}

QVariant DialAccessible::minimumStepSize() const {
  return 1;
}

}  // namespace tavril
