#pragma once

#include "platform/Error.h"

#include <QByteArray>
#include <QString>

#include <optional>

namespace tavril {

/// Files that are the user's alone. Every operation returns its error, or nothing when it succeeded.
class PrivateFiles {
 public:
  virtual ~PrivateFiles() = default;

  /// Makes the folder and those above it, as far as they are missing, for the user alone.
  virtual std::optional<Error> makeFolder(const QString &path) = 0;

  /// Reads a whole file into `bytes`, which stays empty of a value when there is none. Anything but a regular
  /// file is an error, and so are a symbolic link and a file of more than `largestSize` bytes.
  virtual std::optional<Error> read(const QString &path, qsizetype largestSize,
                                    std::optional<QByteArray> &bytes) = 0;

  /// Makes `bytes` the whole content of the file, readable for the user alone. Whatever happens, a crash
  /// included, the file then has either all of the new content or all of the old. A symbolic link is
  /// replaced, and what it leads to stays as it is.
  virtual std::optional<Error> replace(const QString &path, const QByteArray &bytes) = 0;
};

}  // namespace tavril
