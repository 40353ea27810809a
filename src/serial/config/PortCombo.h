#pragma once

#include <QComboBox>
#include <QPaintEvent>
#include <QWidget>

namespace tavril {

/// A combo box that draws its arrow itself, because a combo box with a style sheet has none. Its list is as
/// wide as its entries.
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
