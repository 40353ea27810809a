#pragma once

#include <QByteArrayView>
#include <QString>

#include <optional>

namespace tavril {

class UserFiles;

/// A whole text file in UTF-8, without the byte order mark that it may begin with. A file that is too large,
/// cannot be read, or is not valid UTF-8 as a whole has no text, but a problem to tell of.
struct TextFile {
  /// In bytes: four times what the program takes for a string table, and little enough for any memory.
  static constexpr qsizetype largestSize = 16 * 1024 * 1024;

  std::optional<QString> text;
  QString problem;

  static TextFile read(UserFiles &files, const QString &path);
  /// Nothing when the bytes are not valid UTF-8.
  static std::optional<QString> decode(QByteArrayView bytes);
};

}  // namespace tavril
