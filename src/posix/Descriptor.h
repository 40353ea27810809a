#pragma once

#include <cerrno>
#include <utility>

#include <unistd.h>

namespace tavril::posix {

/// A descriptor that is closed with its object. Can be moved, but not copied.
class Descriptor {
 public:
  Descriptor() = default;
  explicit Descriptor(int value) : value_(value) {}
  Descriptor(Descriptor &&other) noexcept : value_(std::exchange(other.value_, none)) {}
  Descriptor &operator=(Descriptor &&other) noexcept {
    std::swap(value_, other.value_);
    return *this;
  }
  Descriptor(const Descriptor &) = delete;
  Descriptor &operator=(const Descriptor &) = delete;
  ~Descriptor() {
    if (isOpen()) ::close(value_);
  }

  int get() const { return value_; }
  bool isOpen() const { return value_ >= 0; }

 private:
  static constexpr int none = -1;

  int value_ = none;
};

/// Makes the call again whenever a signal has interrupted it.
template <typename Call>
auto uninterrupted(Call call) {
  auto result = call();
  while (result < 0 && errno == EINTR) result = call();
  return result;
}

}  // namespace tavril::posix
