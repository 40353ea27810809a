#pragma once

#include "platform/PlainTitle.h"
#include "platform/ScreenElement.h"

#include <QAction>
#include <QPointer>
#include <QString>

namespace tavril {

/// A menu item, or a menu by its own item, as a screen element: its title is the text.
class ActionElement final : public ScreenElement {
 public:
  explicit ActionElement(QAction *action) : action_(action) {}

  QString text() const override { return action_ ? textOfTitle(action_->text()) : QString(); }
  void setText(const QString &text) override {
    if (action_) action_->setText(plainTitle(text));
  }
  bool isEnabled() const override { return action_ && action_->isEnabled(); }
  void setEnabled(bool enabled) override {
    if (action_) action_->setEnabled(enabled);
  }
  bool isHidden() const override { return !action_ || !action_->isVisible(); }
  void setHidden(bool hidden) override {
    if (action_) action_->setVisible(!hidden);
  }
  QString toolTip() const override { return action_ ? action_->toolTip() : QString(); }
  void setToolTip(const QString &toolTip) override {
    if (action_) action_->setToolTip(toolTip);
  }
  QString identifier() const override { return action_ ? action_->objectName() : QString(); }

 private:
  QPointer<QAction> action_;
};

}  // namespace tavril
