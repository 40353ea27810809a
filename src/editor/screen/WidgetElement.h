#pragma once

#include "platform/ScreenElement.h"

#include <QPointer>
#include <QString>
#include <QWidget>

#include <memory>

namespace tavril {

/// A widget as a screen element. Its identifier is the widget's property "identifier". If the widget has been
/// deleted, the element is empty and hidden, and setting it does nothing.
class WidgetElement : public ScreenElement {
 public:
  /// The element for the kind of widget. Fields, labels, buttons and text views have a text; the frame around
  /// a text view has the text of its view. All others, such as containers, have an empty text that cannot be
  /// set. Setting the text of a field is not an edit by the user, and the field then shows the beginning of
  /// the text.
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
