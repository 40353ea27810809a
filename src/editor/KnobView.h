#pragma once

#include <QPaintEvent>
#include <QRectF>
#include <QWidget>

namespace tavril {

/// The knob on the dial. It takes no pointer events; the screen below it handles them.
class KnobView : public QWidget {
  Q_OBJECT

 public:
  explicit KnobView(QWidget *parent = nullptr);

  /// Where it is drawn, in the parent's coordinates, with fractions. The widget is the smallest rectangle of
  /// whole points around it.
  QRectF frame() const;
  void setFrame(const QRectF &frame);
  /// The knob is pale if no position is known.
  void setKnown(bool isKnown);
  /// The knob is brighter while the pointer is on the dial, and filled while it follows the pointer.
  void setPointer(bool isHovered, bool isPressed);
  /// The knob has a ring while the dial has the focus.
  void setFocused(bool isFocused);

 protected:
  void paintEvent(QPaintEvent *event) override;

 private:
  void change(bool &state, bool value);

  QRectF frame_;
  bool isKnown_ = false;
  bool isHovered_ = false;
  bool isPressed_ = false;
  bool isFocused_ = false;
};

}  // namespace tavril
