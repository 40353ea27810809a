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

/// A screen or panel of widgets as its controller sees it: elements are found by the object names below the
/// root widget, controls by their property "tag". The root must outlive the view. Main thread only.
class WidgetView final : public EditorView, public PanelView {
 public:
  explicit WidgetView(QWidget &root);
  ~WidgetView() override;

  /// A name that is not there is a mistake of the program and ends it with a message.
  ScreenElement &element(QStringView name) override;
  ScreenElement *controlWithTag(int tag) override;
  void setLabelColor(QStringView label, LabelColor color) override;
  void setLabelColor(int tag, LabelColor color) override;
  /// The title of the window that the root stands in.
  void setTitle(const QString &title) override;
  void setLabelFontSize(QStringView label, double size_pt) override;
  /// A frame round a text view passes it on.
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
