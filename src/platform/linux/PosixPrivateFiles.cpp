#include "platform/linux/PosixPrivateFiles.h"

#include <QByteArrayView>
#include <QDir>
#include <QFile>
#include <QFileDevice>
#include <QFileInfo>
#include <QIODevice>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <utility>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tavril {

namespace {

class Descriptor {
 public:
  explicit Descriptor(int value) : value_(value) {}
  ~Descriptor() {
    if (value_ >= 0) ::close(value_);
  }
  Descriptor(const Descriptor &) = delete;
  Descriptor &operator=(const Descriptor &) = delete;

  int get() const { return value_; }
  bool isOpen() const { return value_ >= 0; }

 private:
  int value_;
};

Error posixError(int number, const QString &path) {
  return {QString::fromUtf16(PosixErrorDomain),
          number,
          QStringLiteral("%1: %2").arg(path, QString::fromLocal8Bit(std::strerror(number))),
          {},
          nullptr};
}

template <typename Call>
auto uninterrupted(Call call) {
  auto result = call();
  while (result < 0 && errno == EINTR) result = call();
  return result;
}

/// Writes everything to the disk itself; otherwise returns the error number.
int writeThrough(int descriptor, QByteArrayView bytes) {
  while (!bytes.isEmpty()) {
    const auto written = uninterrupted(
        [&] { return ::write(descriptor, bytes.data(), static_cast<std::size_t>(bytes.size())); });
    if (written < 0) return errno;
    bytes = bytes.sliced(written);
  }
  return uninterrupted([&] { return ::fsync(descriptor); }) == 0 ? 0 : errno;
}

/// Removes the new files of savings that never came to their end. One that is still being written is locked
/// by its writer.
void removeLeftovers(const QFileInfo &target) {
  const QString prefix = u'.' + target.fileName() + u'.';
  constexpr qsizetype randomPart = 6;
  const QDir folder = target.dir();
  for (const QString &name : folder.entryList(QDir::Files | QDir::Hidden | QDir::System)) {
    if (!name.startsWith(prefix) || name.size() != prefix.size() + randomPart) continue;
    const QByteArray path = QFile::encodeName(folder.filePath(name));
    const Descriptor file(
        ::open(path.constData(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
    if (file.isOpen() && ::flock(file.get(), LOCK_EX | LOCK_NB) == 0) ::unlink(path.constData());
  }
}

}  // namespace

std::optional<Error> PosixPrivateFiles::makeFolder(const QString &path) {
  if (QFileInfo(path).isDir()) return {};
  const QString parent = QFileInfo(path).path();
  if (parent != path) {
    if (auto error = makeFolder(parent)) return error;
  }
  if (::mkdir(QFile::encodeName(path).constData(), S_IRWXU) == 0) return {};
  const int number = errno;
  if (number != EEXIST) return posixError(number, path);
  // Somebody else may have made it meanwhile; or something that is no folder stands there.
  if (QFileInfo(path).isDir()) return {};
  return posixError(ENOTDIR, path);
}

std::optional<Error> PosixPrivateFiles::read(const QString &path, qsizetype largestSize,
                                             std::optional<QByteArray> &bytes) {
  bytes.reset();
  // Opening a pipe or a terminal that stands there must neither wait nor have any effect.
  const Descriptor descriptor(
      ::open(QFile::encodeName(path).constData(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
  if (!descriptor.isOpen()) {
    if (errno == ENOENT) return {};
    return posixError(errno, path);
  }
  struct stat status {};
  if (::fstat(descriptor.get(), &status) != 0) return posixError(errno, path);
  if (S_ISDIR(status.st_mode)) return posixError(EISDIR, path);
  if (!S_ISREG(status.st_mode)) return posixError(EINVAL, path);
  if (status.st_size > largestSize) return posixError(EFBIG, path);

  QFile file;
  if (!file.open(descriptor.get(), QIODevice::ReadOnly)) return posixError(EIO, path);
  // One byte more than is right, in case the file grew since.
  QByteArray content = file.read(largestSize + 1);
  if (file.error() != QFileDevice::NoError) return posixError(EIO, path);
  if (content.size() > largestSize) return posixError(EFBIG, path);
  bytes = std::move(content);
  return {};
}

// Not done with QSaveFile, which writes through symbolic links and takes a failed sync for a success.
std::optional<Error> PosixPrivateFiles::replace(const QString &path, const QByteArray &bytes) {
  const QFileInfo target(path);
  const QByteArray folderName = QFile::encodeName(target.path());
  const QByteArray name = QFile::encodeName(path);
  removeLeftovers(target);

  QByteArray newName = folderName + "/." + QFile::encodeName(target.fileName()) + ".XXXXXX";
  const Descriptor file(::mkostemp(newName.data(), O_CLOEXEC));
  if (!file.isOpen()) return posixError(errno, path);
  // Only keeps the file from being taken for a leftover; where there are no locks, nothing is removed either.
  (void)::flock(file.get(), LOCK_EX | LOCK_NB);

  int number = writeThrough(file.get(), bytes);
  if (number == 0 && std::rename(newName.constData(), name.constData()) != 0) number = errno;
  if (number != 0) {
    ::unlink(newName.constData());
    return posixError(number, path);
  }
  // Without this the old content may be back after a power cut, though whole. Not every file system can do
  // it.
  const Descriptor folder(::open(folderName.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (folder.isOpen()) (void)::fsync(folder.get());
  return {};
}

}  // namespace tavril
