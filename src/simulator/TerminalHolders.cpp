#include "simulator/TerminalHolders.h"

#include <array>
#include <cstdio>
#include <filesystem>
#include <fstream>

#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

namespace tavril::simulator {
namespace {

namespace fs = std::filesystem;

/// The locks of other users' processes are visible, too.
bool isLocked(const std::string &path) {
  struct stat status {};
  if (::stat(path.c_str(), &status) != 0) return false;
  std::array<char, 64> place{};
  std::snprintf(place.data(), place.size(), " %02x:%02x:%llu ", major(status.st_dev), minor(status.st_dev),
                static_cast<unsigned long long>(status.st_ino));
  std::ifstream locks("/proc/locks");
  for (std::string line; std::getline(locks, line);) {
    if (line.find(place.data()) != std::string::npos) return true;
  }
  return false;
}

bool hasOpen(const fs::path &process, const std::string &path, int own) {
  const bool isSelf = process.filename() == std::to_string(::getpid());
  std::error_code error;
  for (fs::directory_iterator entry(process / "fd", error), end; !error && entry != end;
       entry.increment(error)) {
    std::error_code gone;
    if (fs::read_symlink(entry->path(), gone) != path) continue;
    if (!isSelf || entry->path().filename() != std::to_string(own)) return true;
  }
  return false;
}

}  // namespace

bool isHeldByOthers(const std::string &path, int own) {
  if (isLocked(path)) return true;
  std::error_code error;
  for (fs::directory_iterator entry("/proc", error), end; !error && entry != end; entry.increment(error)) {
    const std::string name = entry->path().filename();
    if (name.find_first_not_of("0123456789") == std::string::npos && hasOpen(entry->path(), path, own))
      return true;
  }
  return false;
}

}  // namespace tavril::simulator
