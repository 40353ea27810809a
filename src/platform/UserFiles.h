#pragma once

#include "platform/Error.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <optional>

namespace tavril {

/// Files that the user keeps in folders of his own and shares with other programs. Every operation returns
/// its error, or nothing when it succeeded. None waits for a pipe or has an effect on a device.
class UserFiles {
 public:
  virtual ~UserFiles() = default;

  /// Makes the folder, but none above it.
  virtual std::optional<Error> makeFolder(const QString &path) = 0;

  /// Makes an empty file, in place of the file that stands there. Where that is a link, it is the link that
  /// is replaced, and what it leads to stays as it is.
  virtual std::optional<Error> createEmpty(const QString &path) = 0;

  /// Reads a whole regular file; links are followed. More than `largestSize` bytes are an error.
  virtual std::optional<Error> read(const QString &path, qsizetype largestSize, QByteArray &bytes) = 0;

  /// Makes `bytes` the content of a regular file that is already there. A link is an error.
  virtual std::optional<Error> write(const QString &path, const QByteArray &bytes) = 0;

  /// Whether there is such a file and the user may take it out of its folder.
  virtual bool isDeletable(const QString &path) const = 0;
  /// Removes a file, a link or an empty folder.
  virtual std::optional<Error> remove(const QString &path) = 0;

  /// The names of all that is in the folder, sorted; none when it cannot be listed.
  virtual QStringList names(const QString &folder) const = 0;
};

}  // namespace tavril
