#pragma once

#include <QEvent>
#include <QHideEvent>
#include <QKeyEvent>
#include <QPaintEvent>
#include <QPointer>
#include <QShowEvent>
#include <QWidget>

namespace tavril {

/// A container over the whole screen with one panel in its middle. While it is shown, it dims what is below,
/// takes all pointer events and keeps the keyboard's focus among the buttons of the panel. Escape presses the
/// button with the identifier "cancel" or, if there is none, "close". When it is hidden, the focus goes back
/// to where it was, and an unfinished edit continues.
class PanelBackdrop : public QWidget {
  Q_OBJECT

 public:
  explicit PanelBackdrop(QWidget *parent = nullptr);

  /// Takes the panel over and keeps it centred.
  void setPanel(QWidget *panel);

  /// Emitted for each request to show or hide the panel, even if it is shown or hidden already.
  void setVisible(bool visible) override;

 Q_SIGNALS:
  /// Emitted before the panel is shown or hidden.
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
