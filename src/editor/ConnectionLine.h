#pragma once

#include "protocol/ConnectionState.h"

#include <QLabel>
#include <QPaintEvent>
#include <QWidget>

namespace tavril {

/// The connection state as a text with a lamp, on a band of its own, to be seen from across the room. States
/// differ in the lamp's shape as well as in colour.
class ConnectionLine : public QLabel {
  Q_OBJECT

 public:
  explicit ConnectionLine(QWidget *parent = nullptr);

  /// From now on the lamp shows this state. A change is seen when the text changes, which goes with it.
  void follow(const ConnectionState &state) { followed_ = &state; }
  ConnectionState state() const;

 protected:
  void paintEvent(QPaintEvent *event) override;

 private:
  const ConnectionState *followed_ = nullptr;
};

}  // namespace tavril
