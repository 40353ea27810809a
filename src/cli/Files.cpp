#include "cli/Files.h"

#include "cli/Failure.h"

#include <QChar>
#include <QRandomGenerator>
#include <QStringDecoder>
#include <QStringView>

#include <QLatin1Char>
#include <array>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <optional>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tavril::cli {

namespace {

constexpr char16_t firstKept = 0xDC80;
constexpr char16_t lastKept = 0xDCFF;
/// Opening a pipe must not wait, and opening a terminal must not make it ours.
constexpr int harmless = O_NONBLOCK | O_NOCTTY | O_CLOEXEC;

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

QString because(int error) {
  return QString::fromLocal8Bit(std::strerror(error));
}

[[noreturn]] void failToWrite(const QString &path, int error) {
  throw Failure{ExitCode::Failed,
                QStringLiteral("%1 could not be written: %2.").arg(shown(path), because(error))};
}

[[noreturn]] void refuseKind(const QString &path, mode_t mode) {
  if (S_ISDIR(mode)) {
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

bool writeAll(int descriptor, const QByteArray &bytes) {
  qsizetype done = 0;
  while (done < bytes.size()) {
    const ssize_t written =
        ::write(descriptor, bytes.constData() + done, static_cast<std::size_t>(bytes.size() - done));
    if (written < 0 && errno == EINTR) continue;
    if (written <= 0) return false;
    done += written;
  }
  return true;
}

int openFile(const QByteArray &name, int flags) {
  constexpr mode_t readableForAll = 0644;
  int descriptor = -1;
  do {
    descriptor = ::open(name.constData(), flags | harmless, readableForAll);
  } while (descriptor < 0 && errno == EINTR);
  return descriptor;
}

/// The path behind all links; the path itself where nothing is there yet.
QByteArray behindLinks(const QByteArray &name) {
  const std::unique_ptr<char, decltype(&::free)> real(::realpath(name.constData(), nullptr), &::free);
  return real ? QByteArray(real.get()) : name;
}

QByteArray readAll(int descriptor, qint64 largest, bool &isWhole) {
  QByteArray content;
  std::array<char, 65536> buffer{};
  while (content.size() <= largest) {
    const ssize_t got = ::read(descriptor, buffer.data(), buffer.size());
    if (got < 0 && errno == EINTR) continue;
    isWhole = got >= 0;
    if (got <= 0) break;
    content.append(buffer.data(), got);
  }
  return content;
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
  const bool isInput = path == u"-";
  const QByteArray name = bytesOf(path);
  const auto fail = [&](int error) {
    throw Failure{ExitCode::Failed,
                  QStringLiteral("%1 could not be read: %2.").arg(shown(path), because(error))};
  };
  // Asked first, because a device may act as soon as it is opened.
  if (!isInput) {
    const auto status = statusOf(name);
    if (!status) fail(errno);
    if (!S_ISREG(status->st_mode)) {
      throw Failure{
          ExitCode::Failed,
          QStringLiteral("%1 is not a regular file, so it was not read. For a stream, write - instead.")
              .arg(shown(path))};
    }
  }
  const int descriptor = isInput ? STDIN_FILENO : openFile(name, O_RDONLY);
  if (descriptor < 0) fail(errno);
  bool isWhole = true;
  QByteArray content = readAll(descriptor, largest, isWhole);
  const int error = errno;
  if (!isInput) ::close(descriptor);
  if (!isWhole) fail(error);
  if (content.size() > largest) {
    throw Failure{
        ExitCode::Failed,
        QStringLiteral("%1 is too large: at most %2 bytes are read.").arg(shown(path)).arg(largest)};
  }
  return content;
}

void expectNewFile(const QString &path, bool mayReplace) {
  const QByteArray name = bytesOf(path);
  const auto status = statusOf(name);
  if (status && !S_ISREG(status->st_mode)) refuseKind(path, status->st_mode);
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
  // A name that nobody can know beforehand: others may have files in the folder, too.
  const QByteArray passing =
      target + ".new" + QByteArray::number(QRandomGenerator::system()->generate64(), 36);
  const int descriptor = openFile(passing, O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW);
  if (descriptor < 0) failToWrite(path, errno);
  const auto giveUp = [&](int error) {
    ::close(descriptor);
    ::unlink(passing.constData());
    failToWrite(path, error);
  };
  if (const auto replaced = statusOf(target)) {
    // Only the superuser can give a file away. Who cannot keep the owner still may replace the file.
    const bool keepsOwner = ::fchown(descriptor, replaced->st_uid, replaced->st_gid) == 0;
    const mode_t mode = replaced->st_mode & (keepsOwner ? ALLPERMS : ACCESSPERMS);
    if (::fchmod(descriptor, mode) != 0) giveUp(errno);
  }
  if (!writeAll(descriptor, content) || ::fsync(descriptor) != 0) giveUp(errno);
  // Once more: something may have come into being meanwhile.
  try {
    expectNewFile(path, mayReplace);
  } catch (const Failure &) {
    ::close(descriptor);
    ::unlink(passing.constData());
    throw;
  }
  if (std::rename(passing.constData(), target.constData()) != 0) giveUp(errno);
  ::close(descriptor);
}

GrowingFile::GrowingFile(const QString &path, bool mayReplace) : path_(path) {
  expectNewFile(path, mayReplace);
  const int flags = O_WRONLY | O_CREAT | (mayReplace ? 0 : O_EXCL);
  descriptor_ = openFile(bytesOf(path), flags);
  if (descriptor_ < 0) failToWrite(path, errno);
  struct stat status {};
  const bool isRegular = ::fstat(descriptor_, &status) == 0 && S_ISREG(status.st_mode);
  if (isRegular && ::ftruncate(descriptor_, 0) == 0) return;
  const int error = errno;
  ::close(descriptor_);
  if (!isRegular) refuseKind(path, status.st_mode);
  failToWrite(path, error);
}

GrowingFile::~GrowingFile() {
  ::close(descriptor_);
}

void GrowingFile::add(const QByteArray &bytes) {
  const off_t before = ::lseek(descriptor_, 0, SEEK_CUR);
  if (writeAll(descriptor_, bytes)) return;
  const int error = errno;
  // What fitted is half of a line. If even this fails, the error is the same.
  if (before < 0 || ::ftruncate(descriptor_, before) != 0) failToWrite(path_, error);
  failToWrite(path_, error);
}

}  // namespace tavril::cli
