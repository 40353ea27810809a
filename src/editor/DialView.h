#pragma once

#include <QFocusEvent>
#include <QKeyEvent>
#include <QPaintEvent>
#include <QString>
#include <QWidget>

#include <optional>

namespace tavril {

/// The dial behind the knob: its scale, the live arc of 300 degrees, filled up to the position, and the
/// position in figures. The centre of the widget is the dial's centre. It takes no pointer events, but it can
/// have the focus, and its keys request other positions.
class DialView : public QWidget {
  Q_OBJECT

 public:
  explicit DialView(QWidget *parent = nullptr);

  std::optional<int> position() const { return position_; }
  /// 0 to 1023, or nothing if no position is known.
  void setPosition(std::optional<int> position);
  /// The position of the knob. If none is known, the knob is at the top of the dial.
  int knobPosition() const;
  /// The position as text, or a dash.
  QString figures() const;
  /// Requests a position; a number beyond an end means the end.
  void requestPosition(int position);

 Q_SIGNALS:
  /// The user wants this position, 0 to 1023. The dial itself has not changed.
  void positionRequested(int position);
  void focusChanged(bool hasFocus);

 protected:
  void paintEvent(QPaintEvent *event) override;
  void keyPressEvent(QKeyEvent *event) override;
  void focusInEvent(QFocusEvent *event) override;
  void focusOutEvent(QFocusEvent *event) override;

 private:
  std::optional<int> position_;
};

}  // namespace tavril
