#pragma once

#include "posix/Descriptor.h"

#include <QByteArray>
#include <QByteArrayView>
#include <QString>

namespace tavril::cli {

/// The text of bytes that came from the system, such as an argument or the name of a file. Bytes that are not
/// valid UTF-8 are kept as halves of characters (U+DC80 to U+DCFF), so that bytesOf() gives them back.
QString textOf(const QByteArray &bytes);
QByteArray bytesOf(const QString &text);

/// U+FEFF, which some editors put in front of a file.
inline constexpr QByteArrayView byteOrderMark("\xEF\xBB\xBF");

/// The text as one line of a terminal may show it. What was typed or stands in a file could have line ends,
/// the codes with which terminals are told what to do, or half of a character.
QString shown(const QString &text);

/// The content of a regular file, or of the standard input for "-". Throws a Failure when it cannot be read,
/// when it has more than `largest` bytes, or for anything that is not a regular file.
QByteArray readFile(const QString &path, qint64 largest);

/// Throws the Failure that saveFile() would for what stands at the path now; before the work is begun.
void expectNewFile(const QString &path, bool mayReplace);

/// Writes the file at one stroke: afterwards it has all of the new content, or stays as it was. A symbolic
/// link counts as a file that is there, and what it leads to is replaced. A file that is replaced keeps its
/// mode, and its owner as far as the user may set it. Only a regular file is ever replaced. Throws a Failure.
void saveFile(const QString &path, const QByteArray &content, bool mayReplace);

/// A regular file that grows line by line.
class GrowingFile {
 public:
  /// Throws a Failure, as saveFile() does, and leaves anything but a regular file as it is.
  GrowingFile(const QString &path, bool mayReplace);

  /// Throws a Failure when not all of it could be written; then nothing of it stands in the file.
  void add(const QByteArray &bytes);

 private:
  const QString path_;
  posix::Descriptor file_;
};

}  // namespace tavril::cli
