#pragma once

#include <QWidget>

namespace tavril {

/// The knob that travels round the dial. It takes no pointer events: the screen below knows what to do.
class KnobView : public QWidget {
  Q_OBJECT

 public:
  explicit KnobView(QWidget *parent = nullptr);

 protected:
  void paintEvent(QPaintEvent *event) override;
};

}  // namespace tavril
