#pragma once

#include "tools/FileSystemFunction.h"

#include <QString>
#include <QStringList>
#include <QStringView>

#include <memory>

namespace tavril {

class FilePanels;
class FileSystem;
class Log;
class ScreenElement;
class StringTable;
class TableFolder;
class UserFiles;

/// Makes a string table out of a file of keys and a file of values. Errors are logged and not shown.
class MultiLangConverter final : public FileSystemFunction {
 public:
  struct Outlets {
    ScreenElement &keypath;    ///< shows the key file's path
    ScreenElement &valuepath;  ///< shows the value file's path
  };

  MultiLangConverter(const Outlets &outlets, FilePanels &panels, UserFiles &files, TableFolder &tables,
                     const StringTable &strings, Log &log);
  ~MultiLangConverter() override;

  void viewDidLoad();

  /// Lets the user choose the key file and reads it. A file that cannot be read counts as one without lines.
  void key();
  /// The same with the value file.
  void value();
  /// Lets the user choose a file for the table, and writes it.
  void converter();

  void FileResult(const QString &result) override;

  const QString &filepath() const { return filepath_; }  ///< of the file last opened
  const QStringList &filepatharray() const { return filepatharray_; }
  const QStringList &keyArray() const { return keyArray_; }
  const QStringList &valueArray() const { return valueArray_; }
  const FileSystem *fileSystem() const { return FileSystem_.get(); }

 private:
  void choose(QStringView title, QStringList &lines, ScreenElement &path);
  void readLines(QStringList &lines);
  void write(const QString &folder, const QString &name);
  void logList(const QStringList &list);

  Outlets outlets_;
  FilePanels &panels_;
  UserFiles &files_;
  TableFolder &tables_;
  const StringTable &strings_;
  Log &log_;
  QString filepath_;
  QStringList filepatharray_;
  QStringList keyArray_;
  QStringList valueArray_;
  std::unique_ptr<FileSystem> FileSystem_;  ///< a new one for each conversion
};

}  // namespace tavril
