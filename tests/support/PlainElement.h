#pragma once

#include "platform/ScreenElement.h"

#include <QString>

#include <utility>

namespace tavril {

/// A screen element without a widget. The read-out without a window and the tests register it.
class PlainElement final : public ScreenElement {
 public:
  explicit PlainElement(QString identifier = {}) : identifier_(std::move(identifier)) {}

  QString text() const override { return text_; }
  void setText(const QString &text) override { text_ = text; }
  bool isEnabled() const override { return enabled_; }
  void setEnabled(bool enabled) override { enabled_ = enabled; }
  bool isHidden() const override { return hidden_; }
  void setHidden(bool hidden) override { hidden_ = hidden; }
  QString toolTip() const override { return toolTip_; }
  void setToolTip(const QString &toolTip) override { toolTip_ = toolTip; }
  QString identifier() const override { return identifier_; }

 private:
  QString identifier_;
  QString text_;
  QString toolTip_;
  bool enabled_ = true;
  bool hidden_ = false;
};

}  // namespace tavril
