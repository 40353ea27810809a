#pragma once

#include <QString>

namespace tavril {

/// The delegate of a FileSystem.
class FileSystemFunction {
 public:
  virtual ~FileSystemFunction() = default;

  /// Gets one outcome, or the text of the file that was read.
  virtual void FileResult(const QString &result) = 0;
};

}  // namespace tavril
