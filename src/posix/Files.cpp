#include "posix/Files.h"

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <utility>

#include <fcntl.h>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tavril::posix {

namespace {

constexpr int harmless = O_NONBLOCK | O_NOCTTY | O_CLOEXEC;

int whyNotRegular(mode_t mode) {
  if (S_ISDIR(mode)) return EISDIR;
  return S_ISREG(mode) ? 0 : EINVAL;
}

/// Where the name of the file begins in its path.
std::size_t nameAt(const std::string &path) {
  return path.rfind('/') + 1;  // 0 when there is no slash
}

bool isFolder(const std::string &path) {
  struct stat status {};
  return ::stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

/// Empty when the system has no random bytes, with errno.
std::string randomName() {
  constexpr std::string_view characters = "0123456789abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ";
  std::array<unsigned char, ReplacementFile::randomPart> numbers{};
  if (::getentropy(numbers.data(), numbers.size()) != 0) return {};
  std::string name;
  for (const unsigned char number : numbers) name += characters[number % characters.size()];
  return name;
}

}  // namespace

Descriptor openFile(const std::string &path, int flags, mode_t mode) {
  return Descriptor(uninterrupted([&] { return ::open(path.c_str(), flags | harmless, mode); }));
}

int openRegularFile(const std::string &path, int flags, Descriptor &file, mode_t mode) {
  Descriptor opened = openFile(path, flags, mode);
  struct stat status {};
  if (!opened.isOpen() || ::fstat(opened.get(), &status) != 0) return errno;
  if (const int reason = whyNotRegular(status.st_mode)) return reason;
  file = std::move(opened);
  return 0;
}

int readRegularFile(const std::string &path, Links links, std::size_t largest, std::string &bytes) {
  bytes.clear();
  struct stat status {};
  const bool follows = links == Links::Followed;
  if ((follows ? ::stat(path.c_str(), &status) : ::lstat(path.c_str(), &status)) != 0) return errno;
  if (S_ISLNK(status.st_mode)) return ELOOP;
  if (const int reason = whyNotRegular(status.st_mode)) return reason;
  if (static_cast<std::size_t>(status.st_size) > largest) return EFBIG;
  Descriptor file;
  // Something else may stand there by now.
  if (const int reason = openRegularFile(path, O_RDONLY | (follows ? 0 : O_NOFOLLOW), file)) return reason;
  return readAll(file.get(), largest, bytes);
}

int readAll(int descriptor, std::size_t largest, std::string &bytes) {
  bytes.clear();
  std::array<char, 65536> buffer;
  for (;;) {
    const auto got = uninterrupted([&] { return ::read(descriptor, buffer.data(), buffer.size()); });
    if (got < 0) return errno;
    if (got == 0) return 0;
    bytes.append(buffer.data(), static_cast<std::size_t>(got));
    if (bytes.size() > largest) break;
  }
  bytes.clear();
  return EFBIG;
}

int writeAll(int descriptor, std::string_view bytes) {
  while (!bytes.empty()) {
    const auto written = uninterrupted([&] { return ::write(descriptor, bytes.data(), bytes.size()); });
    if (written < 0) return errno;
    bytes.remove_prefix(static_cast<std::size_t>(written));
  }
  return 0;
}

std::string folderOf(const std::string &path) {
  const std::size_t slash = path.rfind('/');
  if (slash == std::string::npos) return ".";
  return slash == 0 ? "/" : path.substr(0, slash);
}

void syncFolder(const std::string &path) {
  const Descriptor opened = openFile(path, O_RDONLY | O_DIRECTORY);
  if (opened.isOpen()) (void)::fsync(opened.get());
}

FileError makeFolders(const std::string &path) {
  if (isFolder(path)) return {};
  const std::string parent = folderOf(path);
  if (parent != path) {
    if (auto error = makeFolders(parent); error.happened()) return error;
  }
  if (::mkdir(path.c_str(), S_IRWXU) == 0) {
    syncFolder(parent);
    return {};
  }
  const int number = errno;
  if (number != EEXIST) return {FileError::Step::MakeFolder, number, path};
  // Somebody else may have made it meanwhile; or something that is no folder stands there.
  if (isFolder(path)) return {};
  return {FileError::Step::MakeFolder, ENOTDIR, path};
}

std::string userDataFolder() {
  const char *chosen = std::getenv("XDG_DATA_HOME");
  if (chosen != nullptr && chosen[0] == '/') return chosen;
  const char *home = std::getenv("HOME");
  if (home == nullptr || home[0] == '\0') {
    const struct passwd *user = ::getpwuid(::geteuid());
    home = user != nullptr ? user->pw_dir : "/";
  }
  return std::string(home) + "/.local/share";
}

ReplacementFile::ReplacementFile(std::string target, mode_t mode) : target_(std::move(target)) {
  do {
    const std::string random = randomName();
    if (!random.empty()) {
      name_ = target_.substr(0, nameAt(target_)) + "." + target_.substr(nameAt(target_)) + "." + random;
      file_ = openFile(name_, O_RDWR | O_CREAT | O_EXCL, mode);
    }
    error_ = file_.isOpen() ? 0 : errno;
  } while (error_ == EEXIST);
  if (error_ != 0) name_.clear();
}

ReplacementFile::~ReplacementFile() {
  if (!name_.empty()) ::unlink(name_.c_str());
}

int ReplacementFile::write(std::string_view bytes) {
  if (const int error = writeAll(file_.get(), bytes)) return error;
  return uninterrupted([&] { return ::fsync(file_.get()); }) == 0 ? 0 : errno;
}

int ReplacementFile::takePlace() {
  if (std::rename(name_.c_str(), target_.c_str()) != 0) return errno;
  name_.clear();
  // Without this the old content may be back after a power cut, though whole.
  syncFolder(folderOf(target_));
  return 0;
}

}  // namespace tavril::posix
