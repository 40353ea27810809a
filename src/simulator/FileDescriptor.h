#pragma once

namespace tavril::simulator {

/// Owns a file descriptor and closes it.
class FileDescriptor {
 public:
  FileDescriptor() = default;
  explicit FileDescriptor(int descriptor) : descriptor_(descriptor) {}
  FileDescriptor(FileDescriptor &&other) noexcept;
  FileDescriptor &operator=(FileDescriptor &&other) noexcept;
  ~FileDescriptor() { reset(); }

  int get() const { return descriptor_; }
  bool valid() const { return descriptor_ >= 0; }
  void reset();

 private:
  int descriptor_ = -1;
};

}  // namespace tavril::simulator
