#pragma once

#include <QFocusEvent>
#include <QKeyEvent>
#include <QLineEdit>
#include <QWidget>

namespace tavril {

/// A line that is edited and then left. An edit is what the user changed since the program last set the text
/// or the edit was last finished (isModified()). An edit that would make it longer than `longestEntry` is
/// refused as a whole, so that nothing is cut. Another window or a menu taking the focus is no leaving: the
/// line has it again afterwards.
class EditLine : public QLineEdit {
  Q_OBJECT

 public:
  enum class End { Return, Leaving };

  static constexpr int longestEntry = 32;

  explicit EditLine(QWidget *parent = nullptr);

 protected:
  /// Whether the focus only goes to a window, menu or panel on top, or returns from there.
  static bool isPassing(const QFocusEvent &event);
  /// The user is done with the line. Called with isModified() already false, so that whatever this leads to
  /// finds no edit left to be finished once more.
  virtual void finish(End end, bool wasEdited) = 0;

  void keyPressEvent(QKeyEvent *event) override;
  void focusOutEvent(QFocusEvent *event) override;

 private:
  void end(End end);
};

}  // namespace tavril
