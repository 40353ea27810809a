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

/// Shows a frame, to be read and copied, not typed into. A text too long for one line is broken between its
/// words: after its label where the rest then fits, otherwise into lines of equal numbers of words. What
/// needs more lines than there is room for ends in an ellipsis.
class FrameField : public QLineEdit {
  Q_OBJECT

 public:
  explicit FrameField(QWidget *parent = nullptr);

  /// The lines as they are shown.
  QStringList lines() const;

  /// Instead of the cursor, which is not shown, the whole field is what a scrolled window has to bring in
  /// view.
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
