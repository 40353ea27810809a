#pragma once

#include "platform/ScreenElement.h"

#include <QPointer>
#include <QString>
#include <QWidget>

#include <memory>

namespace tavril {

/// A widget as a screen element. Its identifier is the widget's property "identifier". A widget that is gone
/// reads as empty and hidden, and takes nothing.
class WidgetElement : public ScreenElement {
 public:
  /// The element that fits the widget: fields, labels, buttons and text views have its text, also a frame
  /// round a text view; for all else, such as containers, the text is empty and cannot be set. A text that is
  /// set in a field is not an edit of the user, and its beginning is shown.
  static std::unique_ptr<ScreenElement> over(QWidget &widget);

  QString text() const override { return {}; }
  void setText(const QString &) override {}
  bool isEnabled() const override;
  void setEnabled(bool enabled) override;
  bool isHidden() const override;
  void setHidden(bool hidden) override;
  QString toolTip() const override;
  void setToolTip(const QString &toolTip) override;
  QString identifier() const override;

 protected:
  explicit WidgetElement(QWidget &widget) : widget_(&widget) {}

  QWidget *widget() const { return widget_; }

 private:
  QPointer<QWidget> widget_;
};

}  // namespace tavril
