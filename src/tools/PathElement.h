#pragma once

#include "platform/ScreenElement.h"

#include <QString>

class QLineEdit;

namespace tavril {

/// A field that shows the path of a file, as a screen element. Its tool tip is the whole path.
class PathElement final : public ScreenElement {
 public:
  explicit PathElement(QLineEdit &field) : field_(field) {}

  QString text() const override;
  void setText(const QString &text) override;
  bool isEnabled() const override;
  void setEnabled(bool enabled) override;
  bool isHidden() const override;
  void setHidden(bool hidden) override;
  QString toolTip() const override;
  void setToolTip(const QString &toolTip) override;
  QString identifier() const override;

 private:
  QLineEdit &field_;
};

}  // namespace tavril
