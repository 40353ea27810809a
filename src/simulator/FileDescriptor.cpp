#include "simulator/FileDescriptor.h"

#include <utility>

#include <unistd.h>

namespace tavril::simulator {

FileDescriptor::FileDescriptor(FileDescriptor &&other) noexcept
    : descriptor_(std::exchange(other.descriptor_, -1)) {}

FileDescriptor &FileDescriptor::operator=(FileDescriptor &&other) noexcept {
  if (this != &other) {
    reset();
    descriptor_ = std::exchange(other.descriptor_, -1);
  }
  return *this;
}

void FileDescriptor::reset() {
  if (descriptor_ >= 0) ::close(descriptor_);
  descriptor_ = -1;
}

}  // namespace tavril::simulator
