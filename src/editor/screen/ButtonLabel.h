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

/// A label that can be clicked with the pointer or, with the focus, by Space or Enter. Its text colour is set
/// independently, and its face follows: dark below a light text, light below a dark one. An alert that opens
/// during a click cancels the click. The property "strong" marks the main button, "quiet" a button without a
/// face.
class ButtonLabel : public QAbstractButton {
  Q_OBJECT
  Q_PROPERTY(bool strong MEMBER strong_)
  Q_PROPERTY(bool quiet MEMBER quiet_)

 public:
  explicit ButtonLabel(QWidget *parent = nullptr);

  QColor textColor() const { return textColor_; }
  void setTextColor(const QColor &colour);
  /// The current background of the text.
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
