#pragma once

#include "tools/FileSystemFunction.h"

#include <QString>
#include <QStringList>

#include <memory>

namespace tavril {

class FilePanels;
class FileSystem;
class FileTable;
class Log;
class StringTable;
class TableFolder;
class UserFiles;

/// Lists the string tables of a folder, reads the one that is selected into the log, and deletes it. Errors
/// are logged and not shown. Reading and deleting use the folder that was listed, even if the last conversion
/// went to another one.
class FileListView final : public FileSystemFunction {
 public:
  FileListView(FileTable &FileTableView, FilePanels &panels, UserFiles &files, const TableFolder &tables,
               const StringTable &strings, Log &log);
  ~FileListView() override;

  /// Lists the folder of the last conversion. Load the table afterwards.
  void viewDidLoad();

  /// Lets the user choose a file. Kept: C89.
  void open();
  /// Deletes the selected file. Kept: C90.
  void cancel();

  int numberOfRowsInTableView() const;
  /// The cell's text in the column of this identifier.
  QString viewForTableColumn(const QString &identifier, int row);
  /// The user has selected this row. A row that does not exist changes nothing.
  void tableViewSelectionDidChange(int row);

  void FileResult(const QString &result) override;

  /// The folder that was listed.
  const QString &folder() const { return folder_; }
  const QStringList &hFiles() const { return hFiles_; }
  const QStringList &a() const { return a_; }
  const QString &SelectFileName() const { return SelectFileName_; }

 private:
  void list();

  FileTable &FileTableView_;
  FilePanels &panels_;
  UserFiles &files_;
  const TableFolder &tables_;
  const StringTable &strings_;
  Log &log_;
  QString folder_;
  QStringList hFiles_;
  QStringList a_;
  QString SelectFileName_;
  std::unique_ptr<FileSystem> FileSystem_;
};

}  // namespace tavril
