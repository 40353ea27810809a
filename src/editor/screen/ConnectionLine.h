#pragma once

#include <QLabel>
#include <QPaintEvent>
#include <QString>
#include <QWidget>

namespace tavril {

/// The connection state as a text with a lamp, on a band of its own, to be seen from across the room. What
/// the lamp shows follows from the text, because the text is all that the rest of the program sets. States
/// differ in the lamp's shape as well as in colour.
class ConnectionLine : public QLabel {
  Q_OBJECT

 public:
  enum class State { NotConnected, Initialising, Connected };

  explicit ConnectionLine(QWidget *parent = nullptr);

  /// What the text reads when not connected, and what it begins with when connected.
  void setKnownTexts(const QString &notConnected, const QString &connectedBeginning);
  State state() const;

 protected:
  void paintEvent(QPaintEvent *event) override;

 private:
  QString notConnected_;
  QString connectedBeginning_;
};

}  // namespace tavril
