#pragma once

#include "look/SideWindow.h"

#include <QWidget>

class QPlainTextEdit;

namespace tavril {

struct Desktop;

/// A window with the whole text of the licence, which is part of the program.
/// The licence itself has no language but its own.
class LicenceWindow final : public SideWindow<QWidget> {
  Q_OBJECT

 public:
  explicit LicenceWindow(const Desktop &desktop, QWidget *parent = nullptr);

 protected:
  void setTexts() override;

 private:
  QPlainTextEdit *text_;
};

}  // namespace tavril
