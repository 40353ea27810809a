#pragma once

#include <QEvent>
#include <QHideEvent>
#include <QKeyEvent>
#include <QPaintEvent>
#include <QPointer>
#include <QShowEvent>
#include <QWidget>

namespace tavril {

/// A container over the whole screen that holds one panel in its middle. While it is shown it dims what lies
/// below, takes all pointer events, keeps the keyboard's focus among the panel's buttons, and Escape presses
/// the panel's cancel button: the one with the identifier "cancel", or without such a one "close". Hidden, it
/// gives the focus back. A field that was being edited goes on being edited then.
class PanelBackdrop : public QWidget {
  Q_OBJECT

 public:
  explicit PanelBackdrop(QWidget *parent = nullptr);

  /// Takes the panel over and keeps it centred.
  void setPanel(QWidget *panel);

  /// Tells of every request, also of one to show what is up already.
  void setVisible(bool visible) override;

 Q_SIGNALS:
  /// Somebody is about to show or hide the panel.
  void changing();

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
