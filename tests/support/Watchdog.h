#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <string>
#include <thread>
#include <utility>

namespace tavril {

/// Ends a program that hangs, with words that say where it was: a deadlock cannot be told otherwise.
/// Thread-safe.
class Watchdog {
 public:
  explicit Watchdog(std::chrono::seconds patience) : thread_([this, patience] { watch(patience); }) {}
  ~Watchdog() {
    say({});
    thread_.join();
  }
  Watchdog(const Watchdog &) = delete;
  Watchdog &operator=(const Watchdog &) = delete;

  /// The program has come this far.
  void pat(std::string where) { say(std::move(where)); }

 private:
  void say(std::string where) {
    {
      const std::lock_guard lock(mutex_);
      over_ = where.empty();
      where_ = std::move(where);
      ++pats_;
    }
    patted_.notify_all();
  }
  void watch(std::chrono::seconds patience) {
    std::unique_lock lock(mutex_);
    while (!over_) {
      const long before = pats_;
      if (patted_.wait_for(lock, patience, [&] { return pats_ != before; })) continue;
      std::fprintf(stderr, "Hangs: %s\n", where_.c_str());
      std::abort();
    }
  }

  std::mutex mutex_;
  std::condition_variable patted_;
  std::string where_ = "at the beginning";
  long pats_ = 0;
  bool over_ = false;
  std::thread thread_;
};

}  // namespace tavril
