#pragma once

#include <QByteArray>

#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace tavril {

/// Takes an input apart from its beginning; when it is used up, it gives zeros and empty pieces. Simple on
/// purpose, so that inputs can be written by hand.
class FuzzInput {
 public:
  FuzzInput(const std::uint8_t *data, std::size_t size) : data_(data), left_(size) {}

  bool isEmpty() const { return left_ == 0; }
  std::uint8_t byte() {
    if (left_ == 0) return 0;
    --left_;
    return *data_++;
  }
  /// At most so many bytes.
  QByteArray bytes(std::size_t count) {
    count = std::min(count, left_);
    const QByteArray taken(reinterpret_cast<const char *>(data_), static_cast<qsizetype>(count));
    data_ += count;
    left_ -= count;
    return taken;
  }
  QByteArray rest() { return bytes(left_); }

 private:
  const std::uint8_t *data_;
  std::size_t left_;
};

}  // namespace tavril
