#pragma once

#include "platform/UserFiles.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <optional>

namespace tavril {

/// The user's files by POSIX calls. New files and folders get the mode that the user's mask leaves of 0666
/// and 0777. May be used from any thread.
class PosixUserFiles final : public UserFiles {
 public:
  std::optional<Error> makeFolder(const QString &path) override;
  std::optional<Error> createEmpty(const QString &path) override;
  std::optional<Error> read(const QString &path, qsizetype largestSize, QByteArray &bytes) override;
  std::optional<Error> write(const QString &path, const QByteArray &bytes) override;
  bool isDeletable(const QString &path) const override;
  std::optional<Error> remove(const QString &path) override;
  QStringList names(const QString &folder) const override;
};

}  // namespace tavril
