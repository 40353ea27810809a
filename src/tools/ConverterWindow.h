#pragma once

#include "look/SideWindow.h"
#include "tools/MultiLangConverter.h"
#include "tools/PathElement.h"

#include <QDialog>
#include <QWidget>

#include <memory>

namespace Ui {
class ConverterWindow;
}

namespace tavril {

/// The converter's screen: two files to choose and a table to save.
class ConverterWindow final : public SideWindow<QDialog> {
  Q_OBJECT

 public:
  /// Gives itself to `parent`.
  ConverterWindow(FilePanels &panels, UserFiles &files, TableFolder &tables, const StringTable &strings,
                  NotificationCenter &notifications, Log &log, QWidget *parent);
  ~ConverterWindow() override;

  const MultiLangConverter &controller() const { return controller_; }

 protected:
  void setTexts() override;

 private:
  void chosen();

  std::unique_ptr<Ui::ConverterWindow> ui_;
  PathElement keypath_;
  PathElement valuepath_;
  MultiLangConverter controller_;
};

}  // namespace tavril
