#include "platform/linux/PosixUserFiles.h"

#include <QDir>
#include <QFile>
#include <QFileDevice>
#include <QFileInfo>
#include <QIODevice>

#include <cerrno>
#include <cstring>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tavril {

namespace {

/// Opening a pipe must not wait, and opening a terminal must not make it ours.
constexpr int harmless = O_NONBLOCK | O_NOCTTY | O_CLOEXEC;
constexpr mode_t fileMode = 0666;
constexpr mode_t folderMode = 0777;

Error posixError(int number, const QString &path) {
  return {QString::fromUtf16(PosixErrorDomain),
          number,
          QStringLiteral("%1: %2").arg(path, QString::fromLocal8Bit(std::strerror(number))),
          {},
          nullptr};
}

int openFile(const QByteArray &name, int flags) {
  int descriptor = ::open(name.constData(), flags | harmless, fileMode);
  while (descriptor < 0 && errno == EINTR) descriptor = ::open(name.constData(), flags | harmless, fileMode);
  return descriptor;
}

/// Hands the descriptor to `file`, which closes it, if it is a regular file; otherwise returns the error
/// number. `size` is that of the file.
int adopt(int descriptor, QIODevice::OpenMode mode, QFile &file, off_t &size) {
  if (descriptor < 0) return errno;
  int number = 0;
  struct stat status {};
  if (::fstat(descriptor, &status) != 0) {
    number = errno;
  } else if (S_ISDIR(status.st_mode)) {
    number = EISDIR;
  } else if (!S_ISREG(status.st_mode)) {
    number = EINVAL;
  } else if (!file.open(descriptor, mode, QFileDevice::AutoCloseHandle)) {
    number = EIO;
  }
  size = status.st_size;
  if (number != 0) ::close(descriptor);
  return number;
}

/// Makes the file where there is none yet; otherwise returns the error number.
int createNew(const QByteArray &name) {
  const int descriptor = openFile(name, O_WRONLY | O_CREAT | O_EXCL);
  if (descriptor < 0) return errno;
  ::close(descriptor);
  return 0;
}

int makeEmpty(const QByteArray &name) {
  const int descriptor = openFile(name, O_WRONLY | O_NOFOLLOW | O_TRUNC);
  if (descriptor < 0) return errno;
  ::close(descriptor);
  return 0;
}

int createOrReplace(const QByteArray &name) {
  const int number = createNew(name);
  if (number != EEXIST) return number;
  struct stat status {};
  if (::lstat(name.constData(), &status) != 0) return errno;
  if (S_ISDIR(status.st_mode)) return EISDIR;
  if (S_ISREG(status.st_mode) && status.st_nlink == 1) return makeEmpty(name);
  // A link of either kind: emptying it would empty a file of another name, such as one of those just read.
  if (::unlink(name.constData()) != 0) return errno;
  return createNew(name);
}

}  // namespace

std::optional<Error> PosixUserFiles::makeFolder(const QString &path) {
  if (::mkdir(QFile::encodeName(path).constData(), folderMode) == 0) return {};
  return posixError(errno, path);
}

std::optional<Error> PosixUserFiles::createEmpty(const QString &path) {
  const int number = createOrReplace(QFile::encodeName(path));
  if (number == 0) return {};
  return posixError(number, path);
}

std::optional<Error> PosixUserFiles::read(const QString &path, qsizetype largestSize, QByteArray &bytes) {
  bytes.clear();
  QFile file;
  off_t size = 0;
  const int number = adopt(openFile(QFile::encodeName(path), O_RDONLY), QIODevice::ReadOnly, file, size);
  if (number != 0) return posixError(number, path);
  if (size > largestSize) return posixError(EFBIG, path);
  // One byte more than is right, in case the file grew since.
  QByteArray content = file.read(largestSize + 1);
  if (file.error() != QFileDevice::NoError) return posixError(EIO, path);
  if (content.size() > largestSize) return posixError(EFBIG, path);
  bytes = std::move(content);
  return {};
}

std::optional<Error> PosixUserFiles::write(const QString &path, const QByteArray &bytes) {
  QFile file;
  off_t size = 0;
  const int number = adopt(openFile(QFile::encodeName(path), O_WRONLY | O_NOFOLLOW | O_TRUNC),
                           QIODevice::WriteOnly | QIODevice::Unbuffered, file, size);
  if (number != 0) return posixError(number, path);
  errno = 0;
  if (file.write(bytes) == bytes.size()) return {};
  return posixError(errno != 0 ? errno : EIO, path);
}

// By the rights of the folder: those of a file have no say in whether it can be removed.
bool PosixUserFiles::isDeletable(const QString &path) const {
  struct stat status {};
  if (::lstat(QFile::encodeName(path).constData(), &status) != 0) return false;
  const QByteArray folder = QFile::encodeName(QFileInfo(path).path());
  if (::faccessat(AT_FDCWD, folder.constData(), W_OK | X_OK, AT_EACCESS) != 0) return false;
  struct stat folderStatus {};
  if (::stat(folder.constData(), &folderStatus) != 0) return false;
  const bool sticky = (folderStatus.st_mode & S_ISVTX) != 0;
  const uid_t user = ::geteuid();
  return !sticky || user == 0 || user == status.st_uid || user == folderStatus.st_uid;
}

std::optional<Error> PosixUserFiles::remove(const QString &path) {
  const QByteArray name = QFile::encodeName(path);
  struct stat status {};
  const bool isFolder = ::lstat(name.constData(), &status) == 0 && S_ISDIR(status.st_mode);
  if ((isFolder ? ::rmdir(name.constData()) : ::unlink(name.constData())) == 0) return {};
  return posixError(errno, path);
}

QStringList PosixUserFiles::names(const QString &folder) const {
  // QDir takes an empty path for the folder that the program was started in.
  if (folder.isEmpty()) return {};
  return QDir(folder).entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot,
                                QDir::Name);
}

}  // namespace tavril
