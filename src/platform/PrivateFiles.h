#pragma once

#include "platform/Error.h"

#include <QByteArray>
#include <QString>

#include <optional>

namespace tavril {

/// Files that only the user may read. Every operation returns its error, or nothing if it succeeded.
class PrivateFiles {
 public:
  virtual ~PrivateFiles() = default;

  /// Makes the folder and its missing parents, for the user only.
  virtual std::optional<Error> makeFolder(const QString &path) = 0;

  /// Reads a whole file into `bytes`, which has no value if there is no file. A symbolic link, any other file
  /// that is not regular, and a file of more than `largestSize` bytes are errors.
  virtual std::optional<Error> read(const QString &path, qsizetype largestSize,
                                    std::optional<QByteArray> &bytes) = 0;

  /// Replaces the content of the file, which only the user may read. Even after a crash, the file has either
  /// all of the new content or all of the old. A symbolic link is replaced; its target is not changed.
  virtual std::optional<Error> replace(const QString &path, const QByteArray &bytes) = 0;
};

}  // namespace tavril
