#include "editor/AccessibleRoles.h"

#include "editor/MsgPanel.h"
#include "editor/ServoPicture.h"
#include "editor/WaitPanel.h"

#include <QAccessible>
#include <QAccessibleInterface>
#include <QAccessibleWidget>
#include <QLabel>
#include <QObject>
#include <QString>
#include <QWidget>

namespace tavril {

namespace {

/// Both texts are read off the panel's labels when they are asked for, because the labels are all that the
/// rest of the program sets.
class AccessiblePanel final : public QAccessibleWidget {
 public:
  explicit AccessiblePanel(QWidget *panel) : QAccessibleWidget(panel, QAccessible::Dialog) {}

  QString text(QAccessible::Text kind) const override {
    const auto labels = widget()->findChildren<QLabel *>(QString(), Qt::FindDirectChildrenOnly);
    if (kind == QAccessible::Name) return labels.value(0)->text();
    if (kind == QAccessible::Description) return labels.value(1)->text();
    return QAccessibleWidget::text(kind);
  }
};

QAccessibleInterface *interfaceFor(const QString &, QObject *object) {
  auto *panel = qobject_cast<QWidget *>(object);
  if (qobject_cast<MsgPanel *>(object) || qobject_cast<WaitPanel *>(object)) {
    return new AccessiblePanel(panel);
  }
  if (qobject_cast<ServoPicture *>(object)) return new QAccessibleWidget(panel, QAccessible::Graphic);
  return nullptr;
}

}  // namespace

void AccessibleRoles::install() {
  QAccessible::installFactory(interfaceFor);
}

}  // namespace tavril
