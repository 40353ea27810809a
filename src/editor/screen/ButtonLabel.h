#pragma once

#include <QAbstractButton>
#include <QColor>
#include <QEvent>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPaintEvent>
#include <QSize>
#include <QWidget>

namespace tavril {

/// A label that can be pushed, by the pointer, or with Space or Enter when it has the focus. Its text colour
/// is set apart from all else, and its face follows: dark below a light text, light below a dark one.
/// An alert that comes up during a click ends it: the click is not carried out.
/// The property "strong" marks the button that one is here for, "quiet" one without a face of its own.
class ButtonLabel : public QAbstractButton {
  Q_OBJECT
  Q_PROPERTY(bool strong MEMBER strong_)
  Q_PROPERTY(bool quiet MEMBER quiet_)

 public:
  explicit ButtonLabel(QWidget *parent = nullptr);

  QColor textColor() const { return textColor_; }
  void setTextColor(const QColor &colour);
  /// What the text is put on right now.
  QColor faceColor() const;

  QSize sizeHint() const override;

 protected:
  bool event(QEvent *event) override;
  void mousePressEvent(QMouseEvent *event) override;
  void keyPressEvent(QKeyEvent *event) override;
  void paintEvent(QPaintEvent *event) override;

 private:
  QColor textColor_;
  bool strong_ = false;
  bool quiet_ = false;
  bool isInterrupted_ = false;
};

}  // namespace tavril
