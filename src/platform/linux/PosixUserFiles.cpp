#include "platform/linux/PosixUserFiles.h"

#include "posix/Files.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <cerrno>
#include <string>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tavril {

namespace {

constexpr mode_t fileMode = 0666;
constexpr mode_t folderMode = 0777;

/// 0, or the error number.
int openFor(const QByteArray &name, int flags) {
  return posix::openFile(name.constData(), flags, fileMode).isOpen() ? 0 : errno;
}

/// Makes the file where there is none yet.
int createNew(const QByteArray &name) {
  return openFor(name, O_WRONLY | O_CREAT | O_EXCL);
}

int createOrReplace(const QByteArray &name) {
  const int number = createNew(name);
  if (number != EEXIST) return number;
  struct stat status {};
  if (::lstat(name.constData(), &status) != 0) return errno;
  if (S_ISDIR(status.st_mode)) return EISDIR;
  if (S_ISREG(status.st_mode) && status.st_nlink == 1) return openFor(name, O_WRONLY | O_NOFOLLOW | O_TRUNC);
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
  std::string content;
  const int number = posix::readRegularFile(QFile::encodeName(path).constData(), posix::Links::Followed,
                                            static_cast<std::size_t>(largestSize), content);
  if (number != 0) return posixError(number, path);
  bytes = QByteArray::fromStdString(content);
  return {};
}

std::optional<Error> PosixUserFiles::write(const QString &path, const QByteArray &bytes) {
  posix::Descriptor file;
  int number =
      posix::openRegularFile(QFile::encodeName(path).constData(), O_WRONLY | O_NOFOLLOW | O_TRUNC, file);
  if (number == 0) {
    number = posix::writeAll(file.get(), {bytes.constData(), static_cast<std::size_t>(bytes.size())});
  }
  if (number == 0) return {};
  return posixError(number, path);
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
