#pragma once

#include <QString>

namespace tavril {

/// A field, label or container of the screen, for code that knows no widgets. An element must live as long as
/// it is registered.
class ScreenElement {
 public:
  virtual ~ScreenElement() = default;

  virtual QString text() const = 0;
  virtual void setText(const QString &text) = 0;
  virtual bool isEnabled() const = 0;
  virtual void setEnabled(bool enabled) = 0;
  virtual bool isHidden() const = 0;
  virtual void setHidden(bool hidden) = 0;
  virtual QString toolTip() const = 0;
  virtual void setToolTip(const QString &toolTip) = 0;
  virtual QString identifier() const = 0;

  /// The number at the beginning of the text, see integerValueOf().
  int integerValue() const;
  /// Shows the number in decimal.
  void setIntegerValue(int value);
};

}  // namespace tavril
