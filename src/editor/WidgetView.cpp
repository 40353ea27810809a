#include "editor/WidgetView.h"

#include "editor/ButtonLabel.h"
#include "editor/KnobView.h"
#include "editor/ScreenCoordinates.h"
#include "editor/WidgetElement.h"
#include "look/Style.h"

#include <QColor>
#include <QPalette>
#include <QPlainTextEdit>
#include <QRectF>
#include <QVariant>
#include <QWidget>

namespace tavril {

namespace {

QStringView nameOf(ButtonName button) {
  switch (button) {
    case ButtonName::Relax:
      return u"relax";
    case ButtonName::Capture:
      return u"capture";
    case ButtonName::MotorSet:
      return u"motor_set";
    case ButtonName::Read:
      return u"read";
    case ButtonName::DetailSet:
      return u"detail_set";
  }
  return {};
}

QColor colourOf(LabelColor color) {
  return color == LabelColor::Black ? Style::clickedText() : Style::restText();
}

void colour(QWidget *widget, LabelColor color) {
  if (auto *label = qobject_cast<ButtonLabel *>(widget)) label->setTextColor(colourOf(color));
}

}  // namespace

WidgetView::WidgetView(QWidget &root) : root_(root) {}

WidgetView::~WidgetView() = default;

QWidget &WidgetView::widget(QStringView name) const {
  auto *found = root_.findChild<QWidget *>(name.toString());
  if (!found) qFatal("The screen design has no element named \"%s\".", qPrintable(name.toString()));
  return *found;
}

QWidget *WidgetView::widgetWithTag(int tag) const {
  const auto widgets = root_.findChildren<QWidget *>();
  for (QWidget *candidate : widgets) {
    const QVariant carried = candidate->property("tag");
    if (carried.isValid() && carried.toInt() == tag) return candidate;
  }
  return nullptr;
}

ScreenElement &WidgetView::over(QWidget &widget) {
  auto &element = elements_[&widget];
  if (!element) element = WidgetElement::over(widget);
  return *element;
}

ScreenElement &WidgetView::element(QStringView name) {
  return over(widget(name));
}

ScreenElement *WidgetView::controlWithTag(int tag) {
  QWidget *control = widgetWithTag(tag);
  return control ? &over(*control) : nullptr;
}

void WidgetView::setLabelColor(ButtonName button, LabelColor color) {
  colour(&widget(nameOf(button)), color);
}

void WidgetView::setLabelColor(int tag, LabelColor color) {
  colour(widgetWithTag(tag), color);
}

void WidgetView::setTitle(const QString &title) {
  root_.window()->setWindowTitle(title);
}

void WidgetView::setLabelFontSize(QStringView label, double size_pt) {
  Style::setLabelSize(widget(label), size_pt);
}

void WidgetView::setTextLook(QStringView textView, double size_pt, LabelColor color) {
  QWidget &frame = widget(textView);
  auto *inside = frame.findChild<QPlainTextEdit *>(QString(), Qt::FindDirectChildrenOnly);
  QWidget &view = inside ? *inside : frame;
  Style::setLabelSize(view, size_pt);
  QPalette palette = view.palette();
  if (palette.color(QPalette::Text) == colourOf(color)) return;
  palette.setColor(QPalette::Text, colourOf(color));
  view.setPalette(palette);
}

KnobView &WidgetView::knob() const {
  return static_cast<KnobView &>(widget(u"MotorPoint"));
}

DesignRect WidgetView::knobFrame() const {
  const QRectF frame = ScreenCoordinates::frameFromQt(knob().frame());
  return {frame.x(), frame.y(), frame.width(), frame.height()};
}

void WidgetView::setKnobFrame(const DesignRect &frame) {
  knob().setFrame(ScreenCoordinates::frameToQt(frame.x, frame.y, frame.width, frame.height));
}

}  // namespace tavril
