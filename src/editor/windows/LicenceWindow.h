#pragma once

#include "look/SideWindow.h"

#include <QWidget>

class QPlainTextEdit;

namespace tavril {

struct Desktop;

/// A window with the text of the licence, which is compiled into the program. The licence is in English in
/// each language.
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
