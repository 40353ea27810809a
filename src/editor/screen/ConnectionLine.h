#pragma once

#include "protocol/ConnectionState.h"

#include <QLabel>
#include <QPaintEvent>
#include <QWidget>

namespace tavril {

/// The connection state as a text and a lamp, which can be seen from across the room. The lamp's shape
/// differs with the state as well as its colour.
class ConnectionLine : public QLabel {
  Q_OBJECT

 public:
  explicit ConnectionLine(QWidget *parent = nullptr);

  /// Makes the lamp show this state. A change is painted when the text, which changes with it, is set.
  void follow(const ConnectionState &state) { followed_ = &state; }
  ConnectionState state() const;

 protected:
  void paintEvent(QPaintEvent *event) override;

 private:
  const ConnectionState *followed_ = nullptr;
};

}  // namespace tavril
