#pragma once

#include <csignal>
#include <stdexcept>

#include <sys/resource.h>

namespace tavril {

/// While it lives, no file of this process grows beyond a size, as on a disk that is full: writing fails with
/// EFBIG. Holds for the superuser too.
class FileSizeLimit {
 public:
  explicit FileSizeLimit(rlim_t bytes) {
    handler_ = std::signal(SIGXFSZ, SIG_IGN);
    if (::getrlimit(RLIMIT_FSIZE, &former_) != 0) throw std::runtime_error("getrlimit");
    const rlimit limited{bytes, former_.rlim_max};
    if (::setrlimit(RLIMIT_FSIZE, &limited) != 0) throw std::runtime_error("setrlimit");
  }
  ~FileSizeLimit() {
    ::setrlimit(RLIMIT_FSIZE, &former_);
    std::signal(SIGXFSZ, handler_);
  }
  FileSizeLimit(const FileSizeLimit &) = delete;
  FileSizeLimit &operator=(const FileSizeLimit &) = delete;

 private:
  rlimit former_{};
  void (*handler_)(int) = SIG_DFL;
};

}  // namespace tavril
