#include "tests/serial/SystemCallFaults.h"

#include <array>
#include <atomic>
#include <cerrno>
#include <cstdarg>
#include <string_view>

#include <fcntl.h>
#include <poll.h>
#include <termios.h>
#include <unistd.h>

namespace tavril {

namespace {

// The calls are plain functions, so what they ask has to be found without being handed over.
std::atomic<SystemCallFaults *> theFaults = nullptr;

std::optional<int> failureOf(int descriptor) {
  SystemCallFaults *faults = SystemCallFaults::active();
  return faults ? faults->failure(descriptor) : std::nullopt;
}

std::size_t partOf(int descriptor, std::size_t count) {
  SystemCallFaults *faults = SystemCallFaults::active();
  return faults ? faults->part(descriptor, count) : count;
}

int failed(int error) {
  errno = error;
  return -1;
}

}  // namespace

SystemCallFaults::SystemCallFaults() {
  theFaults = this;
}

SystemCallFaults::~SystemCallFaults() {
  theFaults = nullptr;
}

SystemCallFaults *SystemCallFaults::active() {
  return theFaults;
}

void SystemCallFaults::arm(std::uint32_t seed, double probability) {
  const std::lock_guard lock(mutex_);
  random_.seed(seed);
  probability_ = probability;
}

int SystemCallFaults::failures() const {
  const std::lock_guard lock(mutex_);
  return failures_;
}

int SystemCallFaults::shortened() const {
  const std::lock_guard lock(mutex_);
  return shortened_;
}

std::size_t SystemCallFaults::openTerminals() const {
  const std::lock_guard lock(mutex_);
  return terminals_.size();
}

void SystemCallFaults::opened(int descriptor) {
  const std::lock_guard lock(mutex_);
  terminals_.insert(descriptor);
}

void SystemCallFaults::closed(int descriptor) {
  const std::lock_guard lock(mutex_);
  terminals_.erase(descriptor);
}

bool SystemCallFaults::happens(int descriptor) {
  if (probability_ <= 0 || (descriptor >= 0 && !terminals_.contains(descriptor))) return false;
  return std::bernoulli_distribution(probability_)(random_);
}

std::optional<int> SystemCallFaults::failure(int descriptor) {
  static constexpr std::array errors{EINTR, EAGAIN, EIO, ENXIO, ENODEV, ENOSPC};
  const std::lock_guard lock(mutex_);
  if (!happens(descriptor)) return std::nullopt;
  ++failures_;
  return errors[random_() % errors.size()];
}

std::size_t SystemCallFaults::part(int descriptor, std::size_t count) {
  const std::lock_guard lock(mutex_);
  if (count < 2 || !happens(descriptor)) return count;
  ++shortened_;
  return 1 + random_() % (count - 1);
}

}  // namespace tavril

// The linker leads every call of our own code here, and `__real_` to the call itself. The names are the
// linker's.
// NOLINTBEGIN(bugprone-reserved-identifier)
extern "C" {

int __real_open(const char *path, int flags, ...);
int __real_close(int descriptor);
ssize_t __real_read(int descriptor, void *buffer, size_t count);
ssize_t __real_write(int descriptor, const void *buffer, size_t count);
int __real_fcntl(int descriptor, int command, ...);
int __real_ioctl(int descriptor, unsigned long request, ...);
int __real_flock(int descriptor, int operation);
int __real_poll(pollfd *watched, nfds_t count, int timeout);
int __real_ppoll(pollfd *watched, nfds_t count, const timespec *timeout, const sigset_t *signals);
int __real_tcgetattr(int descriptor, termios *attributes);
int __real_tcsetattr(int descriptor, int when, const termios *attributes);

int __wrap_open(const char *path, int flags, ...) {
  va_list arguments;
  va_start(arguments, flags);
  const auto mode = (flags & O_CREAT) != 0 ? va_arg(arguments, mode_t) : 0;
  va_end(arguments);
  const bool terminal = std::string_view(path).starts_with("/dev/pts/") && tavril::SystemCallFaults::active();
  if (!terminal) return __real_open(path, flags, mode);
  if (const auto error = tavril::failureOf(-1)) return tavril::failed(*error);
  const int descriptor = __real_open(path, flags, mode);
  if (descriptor >= 0) tavril::SystemCallFaults::active()->opened(descriptor);
  return descriptor;
}

// As on Linux, the descriptor is gone whatever the call says.
int __wrap_close(int descriptor) {
  const auto error = tavril::failureOf(descriptor);
  if (auto *faults = tavril::SystemCallFaults::active()) faults->closed(descriptor);
  const int result = __real_close(descriptor);
  return error ? tavril::failed(*error) : result;
}

ssize_t __wrap_read(int descriptor, void *buffer, size_t count) {
  if (const auto error = tavril::failureOf(descriptor)) return tavril::failed(*error);
  return __real_read(descriptor, buffer, tavril::partOf(descriptor, count));
}

ssize_t __wrap_write(int descriptor, const void *buffer, size_t count) {
  if (const auto error = tavril::failureOf(descriptor)) return tavril::failed(*error);
  return __real_write(descriptor, buffer, tavril::partOf(descriptor, count));
}

int __wrap_fcntl(int descriptor, int command, ...) {
  va_list arguments;
  va_start(arguments, command);
  void *argument = va_arg(arguments, void *);
  va_end(arguments);
  if (const auto error = tavril::failureOf(descriptor)) return tavril::failed(*error);
  return __real_fcntl(descriptor, command, argument);
}

int __wrap_ioctl(int descriptor, unsigned long request, ...) {
  va_list arguments;
  va_start(arguments, request);
  void *argument = va_arg(arguments, void *);
  va_end(arguments);
  if (const auto error = tavril::failureOf(descriptor)) return tavril::failed(*error);
  return __real_ioctl(descriptor, request, argument);
}

int __wrap_flock(int descriptor, int operation) {
  if (const auto error = tavril::failureOf(descriptor)) return tavril::failed(*error);
  return __real_flock(descriptor, operation);
}

// These two give none of the others, and ENOMEM only here, so that a test can tell where an error has come
// from.
int __wrap_poll(pollfd *watched, nfds_t count, int timeout) {
  if (const auto error = tavril::failureOf(watched->fd)) {
    return tavril::failed(*error == EINTR ? EINTR : ENOMEM);
  }
  return __real_poll(watched, count, timeout);
}

int __wrap_ppoll(pollfd *watched, nfds_t count, const timespec *timeout, const sigset_t *signals) {
  if (const auto error = tavril::failureOf(watched->fd)) {
    return tavril::failed(*error == EINTR ? EINTR : ENOMEM);
  }
  return __real_ppoll(watched, count, timeout, signals);
}

int __wrap_tcgetattr(int descriptor, termios *attributes) {
  if (const auto error = tavril::failureOf(descriptor)) return tavril::failed(*error);
  return __real_tcgetattr(descriptor, attributes);
}

int __wrap_tcsetattr(int descriptor, int when, const termios *attributes) {
  if (const auto error = tavril::failureOf(descriptor)) return tavril::failed(*error);
  return __real_tcsetattr(descriptor, when, attributes);
}

}  // extern "C"
// NOLINTEND(bugprone-reserved-identifier)
