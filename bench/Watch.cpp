// Loaded into a program that is measured (LD_PRELOAD), which is unchanged otherwise. Tells on the descriptor
// that TAVRIL_WATCH names, one line each, with the time of the monotonic clock in nanoseconds: "painted" when
// the first window has been drawn, "sent" when the first command went out. With TAVRIL_STAY in the
// environment the program does not end by itself.
#include <QBackingStore>
#include <QCoreApplication>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <time.h>

#include <unistd.h>

namespace {

template <typename Function>
Function next(const char *name) {
  return reinterpret_cast<Function>(::dlsym(RTLD_NEXT, name));
}

using Write = ssize_t (*)(int, const void *, size_t);

ssize_t reallyWrite(int descriptor, const void *bytes, size_t count) {
  static const auto write = next<Write>("write");
  return write(descriptor, bytes, count);
}

void tell(const char *what) {
  const char *descriptor = std::getenv("TAVRIL_WATCH");
  if (!descriptor) return;
  timespec now{};
  ::clock_gettime(CLOCK_MONOTONIC, &now);
  char line[64];
  const int length =
      std::snprintf(line, sizeof line, "%s %lld\n", what, now.tv_sec * 1'000'000'000LL + now.tv_nsec);
  reallyWrite(std::atoi(descriptor), line, static_cast<size_t>(length));
}

void tellOnce(std::atomic<bool> &told, const char *what) {
  if (!told.exchange(true)) tell(what);
}

std::atomic<bool> hasPainted = false;
std::atomic<bool> hasSent = false;

}  // namespace

void QBackingStore::flush(const QRegion &region, QWindow *window, const QPoint &offset) {
  using Flush = void (*)(QBackingStore *, const QRegion &, QWindow *, const QPoint &);
  static const auto flush = next<Flush>("_ZN13QBackingStore5flushERK7QRegionP7QWindowRK6QPoint");
  flush(this, region, window, offset);
  tellOnce(hasPainted, "painted");
}

void QCoreApplication::exit(int status) {
  using Exit = void (*)(int);
  static const auto exit = next<Exit>("_ZN16QCoreApplication4exitEi");
  tell("ended");
  if (!std::getenv("TAVRIL_STAY")) exit(status);
}

extern "C" ssize_t write(int descriptor, const void *bytes, size_t count) {
  const auto *command = static_cast<const unsigned char *>(bytes);
  const bool isCommand = count == 50 && command[0] == 0xFF;
  const ssize_t written = reallyWrite(descriptor, bytes, count);
  if (isCommand) tellOnce(hasSent, "sent");
  return written;
}
