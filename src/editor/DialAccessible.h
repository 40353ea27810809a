#pragma once

#include <QAccessible>
#include <QAccessibleInterface>
#include <QAccessibleValueInterface>
#include <QAccessibleWidget>
#include <QObject>
#include <QString>
#include <QVariant>

namespace tavril {

class DialView;

/// The dial for assistive technologies: a value from 0 to 1023. Setting it has the same effect as the dial's
/// keys. Qt owns this object.
class DialAccessible final : public QAccessibleWidget, public QAccessibleValueInterface {
 public:
  explicit DialAccessible(DialView &dial);

  /// For QAccessible::installFactory(): an interface for dials, null for other objects.
  static QAccessibleInterface *make(const QString &className, QObject *object);

  void *interface_cast(QAccessible::InterfaceType type) override;
  QString text(QAccessible::Text type) const override;

  QVariant currentValue() const override;
  void setCurrentValue(const QVariant &value) override;
  QVariant maximumValue() const override;
  QVariant minimumValue() const override;
  QVariant minimumStepSize() const override;

 private:
  DialView &dial() const;
};

}  // namespace tavril
