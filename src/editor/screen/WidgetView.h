#pragma once

#include "editor/screen/EditorView.h"

#include <QHash>
#include <QString>
#include <QStringView>

#include <memory>
#include <unordered_map>

class QWidget;

namespace tavril {

class KnobView;

/// A screen or panel of widgets as its controller sees it. Elements are found below the root widget by their
/// object names, controls by their property "tag".
class WidgetView final : public EditorView, public PanelView {
 public:
  explicit WidgetView(QWidget &root);
  ~WidgetView() override;

  /// If there is no such element, the program has an error and ends with a message.
  ScreenElement &element(QStringView name) override;
  ScreenElement *controlWithTag(int tag) override;
  void setLabelColor(QStringView label, LabelColor color) override;
  void setLabelColor(int tag, LabelColor color) override;
  /// Sets the title of the root's window.
  void setTitle(const QString &title) override;
  void setLabelFontSize(QStringView label, double size_pt) override;
  /// For the frame around a text view, sets the look of its view.
  void setTextLook(QStringView textView, double size_pt, LabelColor color) override;
  DesignRect knobFrame() const override;
  void setKnobFrame(const DesignRect &frame) override;

 private:
  QWidget &widget(QStringView name) const;
  KnobView &knob() const;
  QWidget *widgetWithTag(int tag) const;
  ScreenElement &over(QWidget &widget);

  QWidget &root_;
  std::unordered_map<QWidget *, std::unique_ptr<ScreenElement>> elements_;
};

}  // namespace tavril
