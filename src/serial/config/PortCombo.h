#pragma once

#include <QComboBox>

namespace tavril {

/// A combo box that draws its arrow itself, sharp at every scale: a dressed one gets none from its style.
class PortCombo final : public QComboBox {
  Q_OBJECT

 public:
  explicit PortCombo(QWidget *parent = nullptr);

 protected:
  void paintEvent(QPaintEvent *event) override;
};

}  // namespace tavril
