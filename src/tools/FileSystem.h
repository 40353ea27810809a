#pragma once

#include <QString>

namespace tavril {

class FileSystemFunction;
class Log;
class UserFiles;

/// Works on one file at a time, named by its folder and its name, and reports each outcome to its delegate as
/// a text.
class FileSystem {
 public:
  FileSystem(UserFiles &files, Log &log) : files_(files), log_(log) {}

  /// May be null.
  FileSystemFunction *delegate = nullptr;

  // Kept: C87.

  /// Makes a folder whose parent exists.
  void CreatFolder(const QString &folder, const QString &FolderName);
  /// Makes an empty file, or empties an existing one. Reports success, whatever happened.
  void CreatFile(const QString &folder, const QString &FileName);
  /// Reports the whole text of a file.
  void ReadFile(const QString &folder, const QString &FileName);
  /// Removes a file. Reports nothing if the user may not remove it, or if it does not exist.
  void DeleteFile(const QString &folder, const QString &FileName);

 private:
  QString fullPath(const QString &folder, const QString &name);
  void report(const QString &result) const;

  UserFiles &files_;
  Log &log_;
};

}  // namespace tavril
