#pragma once

#include <cstddef>
#include <cstdint>
#include <mutex>
#include <optional>
#include <random>
#include <set>

namespace tavril {

/// Makes the system calls on terminals fail at random, beneath everything of ours: EINTR, EAGAIN, EIO, ENXIO,
/// ENODEV and ENOSPC at every call (ENOMEM at poll and ppoll), short reads and short writes. One at a time;
/// while it lives, the calls of this program on descriptors that it opened below /dev/pts/ are asked for.
/// Needs the linker's --wrap for each of the calls, see tests/serial/CMakeLists.txt. Thread-safe.
class SystemCallFaults {
 public:
  SystemCallFaults();
  ~SystemCallFaults();
  SystemCallFaults(const SystemCallFaults &) = delete;
  SystemCallFaults &operator=(const SystemCallFaults &) = delete;

  /// From now on a call fails with this probability, and moves less than it could with the same.
  void arm(std::uint32_t seed, double probability);
  /// From now on every call does what it can.
  void disarm() { arm(0, 0); }

  int failures() const;
  int shortened() const;
  /// Terminals that are open now.
  std::size_t openTerminals() const;

  // For the calls themselves.
  void opened(int descriptor);
  void closed(int descriptor);
  /// The error with which a call on this descriptor fails, if it does. -1 stands for a terminal to be opened.
  std::optional<int> failure(int descriptor);
  /// How much of so many bytes a call on this descriptor moves.
  std::size_t part(int descriptor, std::size_t count);
  static SystemCallFaults *active();

 private:
  bool happens(int descriptor);

  mutable std::mutex mutex_;
  std::mt19937 random_;
  double probability_ = 0;
  std::set<int> terminals_;
  int failures_ = 0;
  int shortened_ = 0;
};

}  // namespace tavril
