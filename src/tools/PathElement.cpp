#include "tools/PathElement.h"

#include "platform/PlainToolTip.h"

#include <QLineEdit>

namespace tavril {

QString PathElement::text() const {
  return field_.text();
}

void PathElement::setText(const QString &text) {
  field_.setText(text);
  // A tool tip could take the name of a file for markup.
  field_.setToolTip(plainToolTip(text));
}

bool PathElement::isEnabled() const {
  return field_.isEnabled();
}

void PathElement::setEnabled(bool enabled) {
  field_.setEnabled(enabled);
}

bool PathElement::isHidden() const {
  return field_.isHidden();
}

void PathElement::setHidden(bool hidden) {
  field_.setHidden(hidden);
}

QString PathElement::toolTip() const {
  return field_.toolTip();
}

void PathElement::setToolTip(const QString &toolTip) {
  field_.setToolTip(toolTip);
}

QString PathElement::identifier() const {
  return field_.objectName();
}

}  // namespace tavril
