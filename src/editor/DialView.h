#pragma once

#include <QWidget>

#include <optional>

namespace tavril {

/// The dial behind the knob: its scale, the live arc of 300 degrees with the part up to the position filled,
/// and the position in figures. The centre of the widget is the dial's centre. It takes no pointer events.
class DialView : public QWidget {
  Q_OBJECT

 public:
  explicit DialView(QWidget *parent = nullptr);

  std::optional<int> position() const { return position_; }
  /// 0 to 1023, or nothing as long as no position is known.
  void setPosition(std::optional<int> position);

 protected:
  void paintEvent(QPaintEvent *event) override;

 private:
  std::optional<int> position_;
};

}  // namespace tavril
