#pragma once

#include <QString>

namespace tavril {

/// Whoever wants to hear how the work of a FileSystem ended.
class FileSystemFunction {
 public:
  virtual ~FileSystemFunction() = default;

  /// One outcome, or the text of the file that was read.
  virtual void FileResult(const QString &result) = 0;
};

}  // namespace tavril
