#include "posix/LineFile.h"

#include <cerrno>
#include <cstddef>
#include <thread>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tavril::posix {

namespace {

/// More than a person fills in a lifetime. It keeps a file that is something else from filling the memory.
constexpr std::size_t largestPart = std::size_t{1} << 30;

int sync(int descriptor) {
  return uninterrupted([&] { return ::fsync(descriptor); }) == 0 ? 0 : errno;
}

}  // namespace

FileError LineFile::failed(FileError::Step step, int number) const {
  return {step, number, path_};
}

FileError LineFile::open(int flags) {
  if (const int number = openRegularFile(path_, flags | O_NOFOLLOW, file_, S_IRUSR | S_IWUSR)) {
    return failed(FileError::Step::Open, number);
  }
  return {};
}

FileError LineFile::openToRead() {
  return open(O_RDONLY);
}

FileError LineFile::openToAppend(std::chrono::milliseconds patience) {
  if (auto error = makeFolders(folderOf(path_)); error.happened()) return error;
  struct stat status {};
  do {
    if (auto error = open(O_RDWR | O_CREAT | O_APPEND); error.happened()) return error;
    if (auto error = lock(patience); error.happened()) return error;
    if (::fstat(file_.get(), &status) != 0) return failed(FileError::Step::Open, errno);
  } while (status.st_nlink == 0);  // removed while we waited
  size_ = status.st_size;
  return {};
}

FileError LineFile::lock(std::chrono::milliseconds patience) const {
  const auto end = std::chrono::steady_clock::now() + patience;
  while (::flock(file_.get(), LOCK_EX | LOCK_NB) != 0) {
    const int number = errno;
    if (number != EWOULDBLOCK || std::chrono::steady_clock::now() >= end) {
      return failed(FileError::Step::Lock, number);
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(2));
  }
  return {};
}

FileError LineFile::readFrom(std::int64_t offset, std::string &bytes) const {
  if (::lseek(file_.get(), offset, SEEK_SET) < 0) return failed(FileError::Step::Read, errno);
  if (const int number = readAll(file_.get(), largestPart, bytes)) {
    return failed(FileError::Step::Read, number);
  }
  return {};
}

FileError LineFile::append(std::string_view lines) const {
  // Whoever writes the first line has synced the folder, so nobody has to sync that of a file with lines.
  if (size_ == 0) syncFolder(folderOf(path_));
  FileError error;
  if (const int number = writeAll(file_.get(), lines)) {
    error = failed(FileError::Step::Write, number);
  } else if (const int reason = sync(file_.get())) {
    error = failed(FileError::Step::Sync, reason);
  }
  if (error.happened()) {
    // If this fails as well, a torn line stays behind, which the caller's next line must not continue.
    (void)uninterrupted([&] { return ::ftruncate(file_.get(), size_); });
  }
  return error;
}

}  // namespace tavril::posix
