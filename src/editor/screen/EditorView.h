#pragma once

#include <QString>
#include <QStringView>

namespace tavril {

class ScreenElement;

enum class LabelColor { White, Black };

/// A rectangle in the design's coordinates: origin at the lower left of the screen, y upwards, in points.
struct DesignRect {
  double x = 0;
  double y = 0;
  double width = 0;
  double height = 0;
};

/// The main screen as its controller sees it. The elements live as long as the view.
class EditorView {
 public:
  virtual ~EditorView() = default;

  /// The element of this name; names are those of the screen design.
  virtual ScreenElement &element(QStringView name) = 0;
  /// The control that carries the tag, or nothing.
  virtual ScreenElement *controlWithTag(int tag) = 0;
  virtual void setLabelColor(QStringView label, LabelColor color) = 0;
  virtual void setTitle(const QString &title) = 0;
  /// Font size of a label in points; 0 is the platform's default size.
  virtual void setLabelFontSize(QStringView label, double size_pt) = 0;
  /// Font size in points and colour of a text view.
  virtual void setTextLook(QStringView textView, double size_pt, LabelColor color) = 0;
  /// Frame of the dial's knob.
  virtual DesignRect knobFrame() const = 0;
  virtual void setKnobFrame(const DesignRect &frame) = 0;
};

/// A panel over the main screen as its controller sees it.
class PanelView {
 public:
  virtual ~PanelView() = default;

  virtual ScreenElement &element(QStringView name) = 0;
  /// Sets the colour of the label with the tag. Does nothing if there is no such label.
  virtual void setLabelColor(int tag, LabelColor color) = 0;
};

}  // namespace tavril
