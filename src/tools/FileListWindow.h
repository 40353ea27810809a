#pragma once

#include "look/SideWindow.h"
#include "tools/FileListView.h"
#include "tools/FileTable.h"

#include <QDialog>
#include <QWidget>

#include <memory>

namespace Ui {
class FileListWindow;
}

namespace tavril {

/// The list of the string tables in a folder.
class FileListWindow final : public SideWindow<QDialog>, private FileTable {
  Q_OBJECT

 public:
  /// Gives itself to `parent`.
  FileListWindow(FilePanels &panels, UserFiles &files, const TableFolder &tables, const StringTable &strings,
                 NotificationCenter &notifications, Log &log, QWidget *parent);
  ~FileListWindow() override;

  /// Lists the folder again.
  void load();
  const FileListView &controller() const { return controller_; }

 protected:
  void setTexts() override;

 private:
  void setRowHeight(int points) override;
  void reloadData() override;
  void focusContent();
  int selectedRow() const;
  void selectionDidChange();

  std::unique_ptr<Ui::FileListWindow> ui_;
  FileListView controller_;
};

}  // namespace tavril
