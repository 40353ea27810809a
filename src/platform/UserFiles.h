#pragma once

#include "platform/Error.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <optional>

namespace tavril {

/// Files in the user's own folders, which other programs use as well. Every operation returns its error, or
/// nothing if it succeeded. None waits for a pipe or has an effect on a device.
class UserFiles {
 public:
  virtual ~UserFiles() = default;

  /// Makes the folder, whose parent must exist.
  virtual std::optional<Error> makeFolder(const QString &path) = 0;

  /// Makes an empty file, or replaces an existing one. A link is replaced; its target is not changed.
  virtual std::optional<Error> createEmpty(const QString &path) = 0;

  /// Reads a whole regular file; links are followed. More than `largestSize` bytes are an error.
  virtual std::optional<Error> read(const QString &path, qsizetype largestSize, QByteArray &bytes) = 0;

  /// Replaces the content of an existing regular file. A link is an error.
  virtual std::optional<Error> write(const QString &path, const QByteArray &bytes) = 0;

  /// Whether the file exists and the user may remove it from its folder.
  virtual bool isDeletable(const QString &path) const = 0;
  /// Removes a file, a link or an empty folder.
  virtual std::optional<Error> remove(const QString &path) = 0;

  /// The names of everything in the folder, sorted; none if it cannot be listed.
  virtual QStringList names(const QString &folder) const = 0;
};

}  // namespace tavril
