#pragma once

#include <QComboBox>
#include <QPaintEvent>
#include <QWidget>

namespace tavril {

/// A combo box that draws its arrow itself, sharp at every scale: a dressed one gets none from its style. Its
/// list is as wide as its entries.
class PortCombo final : public QComboBox {
  Q_OBJECT

 public:
  explicit PortCombo(QWidget *parent = nullptr);

  void showPopup() override;

 Q_SIGNALS:
  /// The list is about to be shown.
  void opening();

 protected:
  void paintEvent(QPaintEvent *event) override;
};

}  // namespace tavril
