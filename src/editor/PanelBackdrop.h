#pragma once

#include <QPointer>
#include <QWidget>

namespace tavril {

/// A container over the whole screen that holds one panel in its middle. While it is shown it dims what lies
/// below, takes all pointer events, keeps the keyboard's focus among the panel's buttons, and Escape presses
/// the button with the identifier "cancel". Hidden, it gives the focus back.
class PanelBackdrop : public QWidget {
  Q_OBJECT

 public:
  explicit PanelBackdrop(QWidget *parent = nullptr);

  /// Takes the panel over and keeps it centred.
  void setPanel(QWidget *panel);

 protected:
  bool event(QEvent *event) override;
  void keyPressEvent(QKeyEvent *event) override;
  void showEvent(QShowEvent *event) override;
  void hideEvent(QHideEvent *event) override;
  void paintEvent(QPaintEvent *event) override;
  bool focusNextPrevChild(bool next) override;

 private:
  QPointer<QWidget> focusBefore_;
};

}  // namespace tavril
