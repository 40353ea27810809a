#pragma once

#include "platform/UserFiles.h"

#include <QMap>
#include <QSet>

namespace tavril {

/// The user's files in memory. There are the folders that files were put into and those that were made. An
/// operation whose name is in `failing` fails, and `locked` files cannot be deleted.
class MemoryUserFiles final : public UserFiles {
 public:
  std::optional<Error> makeFolder(const QString &path) override {
    if (failing.contains(QStringLiteral("makeFolder")) || folders.contains(path)) return error(path);
    if (!folders.contains(folderOf(path))) return error(path);
    folders.insert(path);
    return {};
  }

  std::optional<Error> createEmpty(const QString &path) override {
    if (failing.contains(QStringLiteral("createEmpty")) || !folders.contains(folderOf(path)))
      return error(path);
    contents[path] = QByteArray();
    return {};
  }

  std::optional<Error> read(const QString &path, qsizetype largestSize, QByteArray &bytes) override {
    const auto found = contents.constFind(path);
    if (found == contents.cend() || found->size() > largestSize) return error(path);
    bytes = *found;
    return {};
  }

  std::optional<Error> write(const QString &path, const QByteArray &bytes) override {
    if (!contents.contains(path)) return error(path);
    if (failing.contains(QStringLiteral("write")) && !bytes.isEmpty()) return error(path);
    contents[path] = bytes;
    return {};
  }

  bool isDeletable(const QString &path) const override {
    return contents.contains(path) && !locked.contains(path);
  }

  std::optional<Error> remove(const QString &path) override {
    if (failing.contains(QStringLiteral("remove")) || contents.remove(path) == 0) return error(path);
    return {};
  }

  QStringList names(const QString &folder) const override {
    QStringList found;
    for (auto file = contents.cbegin(); file != contents.cend(); ++file) {
      if (folderOf(file.key()) == folder) found.append(file.key().section(u'/', -1));
    }
    return found;
  }

  void put(const QString &path, const QByteArray &bytes) {
    contents[path] = bytes;
    folders.insert(folderOf(path));
  }

  QMap<QString, QByteArray> contents;
  QSet<QString> folders;
  QSet<QString> failing;
  QSet<QString> locked;

 private:
  static QString folderOf(const QString &path) { return path.section(u'/', 0, -2); }
  static Error error(const QString &path) {
    return {QString::fromUtf16(PosixErrorDomain), 5, path + QStringLiteral(": it did not work"), {}, nullptr};
  }
};

}  // namespace tavril
