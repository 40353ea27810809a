#pragma once

#include <QByteArrayView>
#include <QString>

#include <optional>

namespace tavril {

class UserFiles;

/// A whole text file in UTF-8, without the byte order mark that it may begin with. If the file is too large,
/// cannot be read, or has bytes that are not valid UTF-8, there is no text, and `problem` says why.
struct TextFile {
  /// In bytes: four times the limit of a string table.
  static constexpr qsizetype largestSize = 16 * 1024 * 1024;

  std::optional<QString> text;
  QString problem;

  static TextFile read(UserFiles &files, const QString &path);
  /// Nothing if the bytes are not valid UTF-8.
  static std::optional<QString> decode(QByteArrayView bytes);
};

}  // namespace tavril
