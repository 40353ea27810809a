#pragma once

#include "platform/PrivateFiles.h"

#include <QMap>

namespace tavril {

/// Private files that are just a table. Operations fail while `failure` is set.
class MemoryFiles final : public PrivateFiles {
 public:
  std::optional<Error> makeFolder(const QString &) override { return failure; }

  std::optional<Error> read(const QString &path, qsizetype largestSize,
                            std::optional<QByteArray> &bytes) override {
    bytes.reset();
    if (failure) return failure;
    if (!contents.contains(path)) return {};
    if (contents[path].size() > largestSize) return Error{QStringLiteral("memory"), 1, {}, {}, nullptr};
    bytes = contents[path];
    return {};
  }

  std::optional<Error> replace(const QString &path, const QByteArray &bytes) override {
    if (failure) return failure;
    contents[path] = bytes;
    ++replacements;
    return {};
  }

  QMap<QString, QByteArray> contents;
  std::optional<Error> failure;
  int replacements = 0;
};

}  // namespace tavril
