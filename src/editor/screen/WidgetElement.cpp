#include "editor/screen/WidgetElement.h"

#include "platform/PlainTitle.h"
#include "platform/PlainToolTip.h"

#include <QAbstractButton>
#include <QChar>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QVariant>

namespace tavril {

namespace {

/// The property with the tool tip as it was set, before it was made safe to show.
constexpr char plainToolTipProperty[] = "plainToolTip";

QString textOf(const QLineEdit &line) {
  return line.text();
}

void put(QLineEdit &line, const QString &text) {
  line.setText(text);
  line.setCursorPosition(0);
}

QString textOf(const QPlainTextEdit &view) {
  // The unchanged text; toPlainText() would turn no-break spaces into spaces.
  return view.document()->toRawText().replace(QChar::ParagraphSeparator, u'\n');
}

void put(QPlainTextEdit &view, const QString &text) {
  view.setPlainText(text);
}

QString textOf(const QLabel &label) {
  return label.buddy() ? textOfTitle(label.text()) : label.text();
}

void put(QLabel &label, const QString &text) {
  label.setText(label.buddy() ? plainTitle(text) : text);
}

QString textOf(const QAbstractButton &button) {
  return textOfTitle(button.text());
}

void put(QAbstractButton &button, const QString &text) {
  button.setText(plainTitle(text));
}

/// A widget of a kind that has a text.
template <typename Widget>
class TextElement : public WidgetElement {
 public:
  explicit TextElement(Widget &widget) : WidgetElement(widget) {}

  QString text() const override { return target() ? textOf(*target()) : QString(); }
  void setText(const QString &text) override {
    if (target() && textOf(*target()) != text) put(*target(), text);
  }

 protected:
  Widget *target() const { return static_cast<Widget *>(widget()); }
};

class LineElement final : public TextElement<QLineEdit> {
 public:
  using TextElement::TextElement;

  // Even if the text stays the same, because this ends an edit.
  void setText(const QString &text) override {
    if (target()) put(*target(), text);
  }
  void setEnabled(bool enabled) override {
    // Disabling the widget takes its focus, which is not the same as the user's leaving the field.
    if (!enabled && target()) target()->setModified(false);
    TextElement::setEnabled(enabled);
  }
};

/// A frame around a text view. The text is that of the view, all else is that of the frame.
class FramedTextElement final : public WidgetElement {
 public:
  FramedTextElement(QWidget &frame, QPlainTextEdit &view) : WidgetElement(frame), view_(view) {}

  QString text() const override { return view_.text(); }
  void setText(const QString &text) override { view_.setText(text); }

 private:
  TextElement<QPlainTextEdit> view_;
};

/// Any other widget: a container.
class ContainerElement final : public WidgetElement {
 public:
  explicit ContainerElement(QWidget &widget) : WidgetElement(widget) {}
};

}  // namespace

std::unique_ptr<ScreenElement> WidgetElement::over(QWidget &widget) {
  if (auto *line = qobject_cast<QLineEdit *>(&widget)) return std::make_unique<LineElement>(*line);
  if (auto *label = qobject_cast<QLabel *>(&widget)) return std::make_unique<TextElement<QLabel>>(*label);
  if (auto *button = qobject_cast<QAbstractButton *>(&widget)) {
    return std::make_unique<TextElement<QAbstractButton>>(*button);
  }
  if (auto *view = qobject_cast<QPlainTextEdit *>(&widget)) {
    return std::make_unique<TextElement<QPlainTextEdit>>(*view);
  }
  if (auto *inside = widget.findChild<QPlainTextEdit *>(QString(), Qt::FindDirectChildrenOnly)) {
    return std::make_unique<FramedTextElement>(widget, *inside);
  }
  return std::make_unique<ContainerElement>(widget);
}

bool WidgetElement::isEnabled() const {
  return widget_ && widget_->isEnabled();
}

void WidgetElement::setEnabled(bool enabled) {
  if (widget_) widget_->setEnabled(enabled);
}

bool WidgetElement::isHidden() const {
  return !widget_ || widget_->isHidden();
}

void WidgetElement::setHidden(bool hidden) {
  if (widget_) widget_->setHidden(hidden);
}

QString WidgetElement::toolTip() const {
  if (!widget_) return {};
  const QVariant plain = widget_->property(plainToolTipProperty);
  return plain.isValid() ? plain.toString() : widget_->toolTip();
}

void WidgetElement::setToolTip(const QString &toolTip) {
  if (!widget_) return;
  widget_->setProperty(plainToolTipProperty, toolTip);
  widget_->setToolTip(plainToolTip(toolTip));
}

QString WidgetElement::identifier() const {
  return widget_ ? widget_->property("identifier").toString() : QString();
}

}  // namespace tavril
