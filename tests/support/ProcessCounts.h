#pragma once

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <malloc.h>
#include <thread>

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
/// Whether there are this many threads, or soon will be: one that was joined is counted until the kernel has
/// done away with it, which on a busy machine is a little later.
inline bool threadsComeTo(std::size_t number) {
  const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(10);
  while (threads() != number && std::chrono::steady_clock::now() < end) std::this_thread::yield();
  return threads() == number;
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
