#pragma once

#include <QKeyEvent>
#include <QWidget>

class QPlainTextEdit;

namespace tavril {

class StringTable;

/// A window with the whole text of the licence, which is part of the program. Escape closes it.
class LicenceWindow final : public QWidget {
  Q_OBJECT

 public:
  explicit LicenceWindow(QWidget *parent = nullptr);

  /// The title. The licence itself has no language but its own.
  void setTexts(const StringTable &strings);

 protected:
  void keyPressEvent(QKeyEvent *event) override;

 private:
  QPlainTextEdit *text_;
};

}  // namespace tavril
