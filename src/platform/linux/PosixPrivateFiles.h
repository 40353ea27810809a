#pragma once

#include "platform/PrivateFiles.h"

#include <QByteArray>
#include <QString>

#include <optional>

namespace tavril {

/// Private files by POSIX calls: folders get mode 0700, files 0600. A file is replaced by writing a new one
/// beside it (".NAME.XXXXXX"), which is synced to the disk before it takes the name.
class PosixPrivateFiles final : public PrivateFiles {
 public:
  std::optional<Error> makeFolder(const QString &path) override;
  std::optional<Error> read(const QString &path, qsizetype largestSize,
                            std::optional<QByteArray> &bytes) override;
  std::optional<Error> replace(const QString &path, const QByteArray &bytes) override;
};

}  // namespace tavril
