#pragma once

#include <QFocusEvent>
#include <QKeyEvent>
#include <QLineEdit>
#include <QWidget>

namespace tavril {

/// An entry line. An edit is what the user has changed since the program set the text or the last edit was
/// finished (isModified()). An edit that makes the text longer than `longestEntry` is refused as a whole, so
/// that nothing is cut off. When another window or a menu takes the focus, the edit is not finished, because
/// the focus returns.
class EditLine : public QLineEdit {
  Q_OBJECT

 public:
  enum class End { Return, Leaving };

  static constexpr int longestEntry = 32;

  explicit EditLine(QWidget *parent = nullptr);

 protected:
  /// Whether the focus only moves to a window, menu or panel on top, or returns from there.
  static bool isPassing(const QFocusEvent &event);
  /// Called when the user has finished the edit. isModified() is already false, so that consequences of this
  /// call do not finish the edit twice.
  virtual void finish(End end, bool wasEdited) = 0;

  void keyPressEvent(QKeyEvent *event) override;
  void focusOutEvent(QFocusEvent *event) override;

 private:
  void end(End end);
};

}  // namespace tavril
