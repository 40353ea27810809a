#pragma once

#include <QLineEdit>

namespace tavril {

/// A line that is edited and then left. An edit is what the user changed since the program last set the text
/// or the edit was last finished (isModified()). Another window or a menu taking the focus is no leaving: the
/// line has it again afterwards.
class EditLine : public QLineEdit {
  Q_OBJECT

 public:
  enum class End { Return, Leaving };

  explicit EditLine(QWidget *parent = nullptr);

 protected:
  /// The user is done with the line. Called with isModified() already false, so that whatever this leads to
  /// finds no edit left to be finished once more.
  virtual void finish(End end, bool wasEdited) = 0;

  void keyPressEvent(QKeyEvent *event) override;
  void focusOutEvent(QFocusEvent *event) override;

 private:
  void end(End end);
};

}  // namespace tavril
