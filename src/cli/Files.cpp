#include "cli/Files.h"

#include "cli/Failure.h"
#include "platform/Error.h"
#include "posix/Files.h"

#include <QChar>
#include <QStringDecoder>
#include <QStringView>

#include <QLatin1Char>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tavril::cli {

namespace {

constexpr char16_t firstKept = 0xDC80;
constexpr char16_t lastKept = 0xDCFF;
constexpr mode_t readableForAll = 0644;

bool isKept(QChar unit) {
  return unit.unicode() >= firstKept && unit.unicode() <= lastKept;
}

/// How many bytes of valid UTF-8 these begin with, at most one character; 0: none.
qsizetype characterAt(QByteArrayView bytes) {
  for (qsizetype length = 1; length <= 4 && length <= bytes.size(); ++length) {
    QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    const QString text = decoder(bytes.first(length));
    if (!decoder.hasError() && !text.contains(QChar::ReplacementCharacter)) return length;
  }
  return bytes.startsWith("\xEF\xBF\xBD") ? 3 : 0;  // the replacement character itself
}

[[noreturn]] void failToWrite(const QString &path, int error) {
  throw Failure{ExitCode::Failed,
                QStringLiteral("%1 could not be written: %2.").arg(shown(path), systemErrorText(error))};
}

[[noreturn]] void refuseKind(const QString &path, bool isFolder) {
  if (isFolder) {
    throw Failure{ExitCode::Failed, QStringLiteral("%1 is a folder: name a file.").arg(shown(path))};
  }
  throw Failure{
      ExitCode::Failed,
      QStringLiteral("%1 is not a regular file, so it was left as it is. For a stream, write - instead.")
          .arg(shown(path))};
}

/// What stands at the path, links followed; nothing where there is nothing.
std::optional<struct stat> statusOf(const QByteArray &name) {
  struct stat status {};
  if (::stat(name.constData(), &status) != 0) return std::nullopt;
  return status;
}

bool isLink(const QByteArray &name) {
  struct stat status {};
  return ::lstat(name.constData(), &status) == 0 && S_ISLNK(status.st_mode);
}

std::string_view viewOf(const QByteArray &bytes) {
  return {bytes.constData(), static_cast<std::size_t>(bytes.size())};
}

/// The path behind all links; the path itself where nothing is there yet.
QByteArray behindLinks(const QByteArray &name) {
  const std::unique_ptr<char, decltype(&::free)> real(::realpath(name.constData(), nullptr), &::free);
  return real ? QByteArray(real.get()) : name;
}

}  // namespace

QString textOf(const QByteArray &bytes) {
  QString text;
  const QByteArrayView all(bytes);
  for (qsizetype at = 0; at < all.size();) {
    const qsizetype length = characterAt(all.sliced(at));
    if (length > 0) {
      const QByteArrayView character = all.sliced(at, length);
      // A name may have one; the decoder would drop it.
      text +=
          character == byteOrderMark ? QString(QChar(QChar::ByteOrderMark)) : QString::fromUtf8(character);
      at += length;
    } else {
      text += QChar(static_cast<char16_t>(firstKept - 0x80 + static_cast<unsigned char>(all[at])));
      ++at;
    }
  }
  return text;
}

QByteArray bytesOf(const QString &text) {
  QByteArray bytes;
  for (qsizetype at = 0; at < text.size();) {
    if (isKept(text[at])) {
      bytes += static_cast<char>(text[at].unicode() & 0xFF);
      ++at;
      continue;
    }
    const bool isPair = text[at].isHighSurrogate() && at + 1 < text.size() && text[at + 1].isLowSurrogate();
    bytes += text.mid(at, isPair ? 2 : 1).toUtf8();
    at += isPair ? 2 : 1;
  }
  return bytes;
}

QString shown(const QString &text) {
  QString line;
  for (qsizetype at = 0; at < text.size(); ++at) {
    const QChar unit = text[at];
    const bool isPair = unit.isHighSurrogate() && at + 1 < text.size() && text[at + 1].isLowSurrogate();
    const char32_t character = isPair ? QChar::surrogateToUcs4(unit, text[at + 1]) : unit.unicode();
    if (QChar::isPrint(character)) {
      line += QStringView(text).mid(at, isPair ? 2 : 1);
    } else {
      line += QStringLiteral("\\u%1").arg(uint{character}, 4, 16, QLatin1Char('0'));
    }
    if (isPair) ++at;
  }
  return line;
}

QByteArray readFile(const QString &path, qint64 largest) {
  const auto most = static_cast<std::size_t>(largest);
  std::string content;
  const int error =
      path == u"-" ? posix::readAll(STDIN_FILENO, most, content)
                   : posix::readRegularFile(bytesOf(path).constData(), posix::Links::Followed, most, content);
  if (error == 0) return QByteArray::fromStdString(content);
  if (error == EFBIG) {
    throw Failure{
        ExitCode::Failed,
        QStringLiteral("%1 is too large: at most %2 bytes are read.").arg(shown(path)).arg(largest)};
  }
  if (path != u"-" && (error == EISDIR || error == EINVAL)) {
    throw Failure{
        ExitCode::Failed,
        QStringLiteral("%1 is not a regular file, so it was not read. For a stream, write - instead.")
            .arg(shown(path))};
  }
  throw Failure{ExitCode::Failed,
                QStringLiteral("%1 could not be read: %2.").arg(shown(path), systemErrorText(error))};
}

void expectNewFile(const QString &path, bool mayReplace) {
  const QByteArray name = bytesOf(path);
  const auto status = statusOf(name);
  if (status && !S_ISREG(status->st_mode)) refuseKind(path, S_ISDIR(status->st_mode));
  if (!status && isLink(name)) {
    throw Failure{ExitCode::Failed,
                  QStringLiteral("%1 is a link that leads nowhere: name a file.").arg(shown(path))};
  }
  if (mayReplace || !status) return;
  throw Failure{
      ExitCode::Failed,
      QStringLiteral("%1 already exists: name another file, or replace it with --force.").arg(shown(path))};
}

void saveFile(const QString &path, const QByteArray &content, bool mayReplace) {
  expectNewFile(path, mayReplace);
  const QByteArray target = behindLinks(bytesOf(path));
  posix::ReplacementFile file(target.constData(), readableForAll);
  if (file.error() != 0) failToWrite(path, file.error());
  if (const auto replaced = statusOf(target)) {
    // Only the superuser can give a file away. Who cannot keep the owner still may replace the file.
    const bool keepsOwner = ::fchown(file.descriptor(), replaced->st_uid, replaced->st_gid) == 0;
    const mode_t mode = replaced->st_mode & (keepsOwner ? ALLPERMS : ACCESSPERMS);
    if (::fchmod(file.descriptor(), mode) != 0) failToWrite(path, errno);
  }
  if (const int error = file.write(viewOf(content))) failToWrite(path, error);
  // Once more: something may have come into being meanwhile.
  expectNewFile(path, mayReplace);
  if (const int error = file.takePlace()) failToWrite(path, error);
}

GrowingFile::GrowingFile(const QString &path, bool mayReplace) : path_(path) {
  expectNewFile(path, mayReplace);
  const int flags = O_WRONLY | O_CREAT | (mayReplace ? 0 : O_EXCL);
  const int error = posix::openRegularFile(bytesOf(path).constData(), flags, file_, readableForAll);
  if (error == EISDIR || error == EINVAL) refuseKind(path, error == EISDIR);
  if (error != 0) failToWrite(path, error);
  if (::ftruncate(file_.get(), 0) != 0) failToWrite(path, errno);
}

void GrowingFile::add(const QByteArray &bytes) {
  const off_t before = ::lseek(file_.get(), 0, SEEK_CUR);
  const int error = posix::writeAll(file_.get(), viewOf(bytes));
  if (error == 0) return;
  // What fitted is half of a line. If even this fails, the error is the same.
  if (before < 0 || ::ftruncate(file_.get(), before) != 0) failToWrite(path_, error);
  failToWrite(path_, error);
}

}  // namespace tavril::cli
