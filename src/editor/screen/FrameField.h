#pragma once

#include <QFocusEvent>
#include <QLineEdit>
#include <QMouseEvent>
#include <QPaintEvent>
#include <QRect>
#include <QString>
#include <QStringList>
#include <QVariant>
#include <QWidget>

namespace tavril {

/// Shows a frame that can be read and copied. A text that is too long for one line is broken between words:
/// after its label if the rest then fits, otherwise into lines with equal numbers of words. What still does
/// not fit is replaced by an ellipsis.
class FrameField : public QLineEdit {
  Q_OBJECT

 public:
  explicit FrameField(QWidget *parent = nullptr);

  /// The lines as they are shown.
  QStringList lines() const;

  /// The whole field, not the hidden cursor, is what a scrolled window brings into view.
  QVariant inputMethodQuery(Qt::InputMethodQuery query) const override;

 protected:
  void paintEvent(QPaintEvent *event) override;
  void mousePressEvent(QMouseEvent *event) override;
  void mouseMoveEvent(QMouseEvent *event) override;
  void mouseDoubleClickEvent(QMouseEvent *event) override;
  void focusInEvent(QFocusEvent *event) override;

 private:
  QRect textArea() const;
  bool fits(const QString &line) const;
};

}  // namespace tavril
