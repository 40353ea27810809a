#pragma once

#include <QPaintEvent>
#include <QRectF>
#include <QWidget>

namespace tavril {

/// The knob that travels round the dial. It takes no pointer events: the screen below knows what to do.
class KnobView : public QWidget {
  Q_OBJECT

 public:
  explicit KnobView(QWidget *parent = nullptr);

  /// Where it is drawn, in the parent's coordinates, between whole points as well. The widget is the smallest
  /// one round it.
  QRectF frame() const;
  void setFrame(const QRectF &frame);
  /// Pale as long as no position is known.
  void setKnown(bool isKnown);
  /// Brighter while the pointer could take it, and filled while it follows the pointer.
  void setPointer(bool isHovered, bool isPressed);
  /// Ringed while the dial has the keyboard's focus.
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
