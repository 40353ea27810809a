#pragma once

#include <algorithm>
#include <cstddef>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <malloc.h>

#include <unistd.h>

/// What this process holds of the system, as the kernel and the C library see it.
namespace tavril::process {

inline std::size_t entriesOf(const char *folder) {
  const std::filesystem::directory_iterator all(folder);
  return static_cast<std::size_t>(std::distance(begin(all), end(all)));
}

/// The one that counts them included.
inline std::size_t descriptors() {
  return entriesOf("/proc/self/fd");
}
inline std::size_t threads() {
  return entriesOf("/proc/self/task");
}
/// Resident memory.
inline std::size_t residentBytes() {
  std::ifstream file("/proc/self/statm");
  std::size_t total = 0;
  std::size_t resident = 0;
  file >> total >> resident;
  return resident * static_cast<std::size_t>(::sysconf(_SC_PAGESIZE));
}
/// What the program has allocated and not freed; 0 under a sanitizer, which allocates for itself.
inline std::size_t allocatedBytes() {
  const struct mallinfo2 info = ::mallinfo2();
  return info.uordblks + info.hblkhd;
}

}  // namespace tavril::process
