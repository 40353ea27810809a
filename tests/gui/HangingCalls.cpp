// Preloaded into the program: makes one of its threads hang for good in a system call, as a driver that never
// answers would. TAVRIL_TEST_HANG names the thread; the file TAVRIL_TEST_HANGS is made when it hangs.
#include <array>
#include <csignal>
#include <cstdarg>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <dlfcn.h>

#include <fcntl.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/prctl.h>
#include <unistd.h>

namespace {

bool isThreadThatHangs() {
  std::array<char, 16> name{};
  ::prctl(PR_GET_NAME, name.data());
  const char *wanted = std::getenv("TAVRIL_TEST_HANG");
  return wanted && std::strcmp(name.data(), wanted) == 0;
}

[[noreturn]] void hang() {
  if (const char *path = std::getenv("TAVRIL_TEST_HANGS")) ::close(::open(path, O_CREAT | O_WRONLY, 0600));
  while (true) ::pause();
}

}  // namespace

extern "C" int ppoll(pollfd *descriptors, nfds_t count, const timespec *timeout, const sigset_t *signals) {
  if (isThreadThatHangs() && count > 0 && ::isatty(descriptors[0].fd) == 1) hang();
  static const auto real = reinterpret_cast<decltype(&ppoll)>(::dlsym(RTLD_NEXT, "ppoll"));
  return real(descriptors, count, timeout, signals);
}

extern "C" int ioctl(int descriptor, unsigned long request, ...) noexcept {
  std::va_list arguments;
  va_start(arguments, request);
  void *argument = va_arg(arguments, void *);
  va_end(arguments);
  if (request == TIOCMGET && isThreadThatHangs()) hang();
  static const auto real = reinterpret_cast<int (*)(int, unsigned long, ...)>(::dlsym(RTLD_NEXT, "ioctl"));
  return real(descriptor, request, argument);
}
