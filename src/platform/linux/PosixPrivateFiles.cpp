#include "platform/linux/PosixPrivateFiles.h"

#include "posix/Files.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <cerrno>
#include <string>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tavril {

namespace {

constexpr qsizetype randomPart = posix::ReplacementFile::randomPart;

/// Removes the new files of savings that never came to their end. One that is still being written is locked
/// by its writer.
void removeLeftovers(const QFileInfo &target) {
  const QString prefix = u'.' + target.fileName() + u'.';
  const QDir folder = target.dir();
  for (const QString &name : folder.entryList(QDir::Files | QDir::Hidden | QDir::System)) {
    if (!name.startsWith(prefix) || name.size() != prefix.size() + randomPart) continue;
    const QByteArray path = QFile::encodeName(folder.filePath(name));
    const posix::Descriptor file = posix::openFile(path.constData(), O_RDONLY | O_NOFOLLOW);
    if (file.isOpen() && ::flock(file.get(), LOCK_EX | LOCK_NB) == 0) ::unlink(path.constData());
  }
}

}  // namespace

std::optional<Error> PosixPrivateFiles::makeFolder(const QString &path) {
  const posix::FileError error = posix::makeFolders(QFile::encodeName(path).toStdString());
  if (!error.happened()) return {};
  return posixError(error.number, QFile::decodeName(error.path.c_str()));
}

std::optional<Error> PosixPrivateFiles::read(const QString &path, qsizetype largestSize,
                                             std::optional<QByteArray> &bytes) {
  bytes.reset();
  std::string content;
  const int number = posix::readRegularFile(QFile::encodeName(path).constData(), posix::Links::Refused,
                                            static_cast<std::size_t>(largestSize), content);
  if (number == ENOENT) return {};
  if (number != 0) return posixError(number, path);
  bytes = QByteArray::fromStdString(content);
  return {};
}

// Not done with QSaveFile, which writes through symbolic links and takes a failed sync for a success.
std::optional<Error> PosixPrivateFiles::replace(const QString &path, const QByteArray &bytes) {
  removeLeftovers(QFileInfo(path));
  posix::ReplacementFile file(QFile::encodeName(path).constData(), S_IRUSR | S_IWUSR);
  int number = file.error();
  if (number == 0) {
    // Only keeps the file from being taken for a leftover; where there are no locks, nothing is removed
    // either.
    (void)::flock(file.descriptor(), LOCK_EX | LOCK_NB);
    number = file.write({bytes.constData(), static_cast<std::size_t>(bytes.size())});
  }
  if (number == 0) number = file.takePlace();
  if (number == 0) return {};
  return posixError(number, path);
}

}  // namespace tavril
