#pragma once

#include <QString>

namespace tavril {

class FileSystemFunction;
class Log;
class UserFiles;

/// Works on one file at a time, named by its folder and its name, and tells each outcome to its delegate as a
/// text. Main thread only.
class FileSystem {
 public:
  FileSystem(UserFiles &files, Log &log) : files_(files), log_(log) {}

  /// Not owned; nothing when nobody wants to hear.
  FileSystemFunction *delegate = nullptr;

  // Kept: C87.

  /// Makes a folder, but none above it.
  void CreatFolder(const QString &folder, const QString &FolderName);
  /// Makes an empty file, also in place of one that is there. Reports success, whatever happened.
  void CreatFile(const QString &folder, const QString &FileName);
  /// Reports the whole text of a file.
  void ReadFile(const QString &folder, const QString &FileName);
  /// Removes a file. Reports nothing when it may not be removed, or is not there.
  void DeleteFile(const QString &folder, const QString &FileName);

 private:
  QString fullPath(const QString &folder, const QString &name);
  void report(const QString &result) const;

  UserFiles &files_;
  Log &log_;
};

}  // namespace tavril
