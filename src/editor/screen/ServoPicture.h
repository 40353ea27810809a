#pragma once

#include <QPaintEvent>
#include <QWidget>

namespace tavril {

/// A drawing of the servo. Decoration only.
class ServoPicture : public QWidget {
  Q_OBJECT

 public:
  explicit ServoPicture(QWidget *parent = nullptr);

 protected:
  void paintEvent(QPaintEvent *event) override;
};

}  // namespace tavril
