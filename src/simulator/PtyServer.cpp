#include "simulator/PtyServer.h"

#include "simulator/FrameEndpoint.h"
#include "simulator/TerminalHolders.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <span>
#include <utility>
#include <vector>

#include <fcntl.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/inotify.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

namespace tavril::simulator {
namespace {

using std::chrono::nanoseconds;
using namespace std::chrono_literals;

bool fail(QString *error, const char *what) {
  const int number = errno;
  if (error) {
    *error = QStringLiteral("cannot open a pseudo-terminal: %1: %2")
                 .arg(QString::fromLatin1(what), QString::fromLocal8Bit(std::strerror(number)));
  }
  return false;
}

}  // namespace

PtyServer::PtyServer(FrameEndpoint &endpoint) : endpoint_(endpoint) {}

PtyServer::~PtyServer() {
  stop();
}

bool PtyServer::start(QString *error) {
  if (serving_) return true;
  stop();
  if (!openTerminal(error)) return false;
  {
    const std::lock_guard lock(mutex_);
    endpoint_.plugIn();
    lastAdvance_ = std::chrono::steady_clock::now();
  }
  stopping_ = false;
  serving_ = true;
  thread_ = std::thread([this] { serve(); });
  return true;
}

bool PtyServer::openTerminal(QString *error) {
  FileDescriptor master(::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC | O_NONBLOCK));
  if (!master.valid()) return fail(error, "posix_openpt");
  if (::grantpt(master.get()) != 0) return fail(error, "grantpt");
  if (::unlockpt(master.get()) != 0) return fail(error, "unlockpt");
  std::array<char, 128> name{};
  if (const int number = ::ptsname_r(master.get(), name.data(), name.size()); number != 0) {
    errno = number;
    return fail(error, "ptsname_r");
  }
  // Held open until the plug is pulled. If nobody had it open, the master would report a hang-up all the
  // time.
  FileDescriptor slave(::open(name.data(), O_RDWR | O_NOCTTY | O_CLOEXEC));
  if (!slave.valid()) return fail(error, "open");
  termios attributes{};
  if (::tcgetattr(slave.get(), &attributes) != 0) return fail(error, "tcgetattr");
  ::cfmakeraw(&attributes);
  ::cfsetspeed(&attributes, B115200);
  if (::tcsetattr(slave.get(), TCSANOW, &attributes) != 0) return fail(error, "tcsetattr");
  FileDescriptor wake(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK));
  if (!wake.valid()) return fail(error, "eventfd");

  FileDescriptor closings(::inotify_init1(IN_CLOEXEC | IN_NONBLOCK));
  if (closings.valid()) ::inotify_add_watch(closings.get(), name.data(), IN_CLOSE);

  closings_ = std::move(closings);
  master_ = std::move(master);
  slave_ = std::move(slave);
  wake_ = std::move(wake);
  const std::lock_guard lock(mutex_);
  path_ = QString::fromLocal8Bit(name.data());
  return true;
}

void PtyServer::stop() {
  stopping_ = true;
  wake();
  if (thread_.joinable()) thread_.join();
  serverThread_ = std::thread::id();
  wake_.reset();
}

void PtyServer::unplug() {
  if (serverThread_.load() == std::this_thread::get_id()) {
    stopping_ = true;
    return;
  }
  stop();
}

QString PtyServer::path() const {
  const std::lock_guard lock(mutex_);
  return path_;
}

void PtyServer::withEndpoint(const std::function<void()> &act) {
  const std::lock_guard lock(mutex_);
  if (serving_) catchUp();
  act();
}

void PtyServer::wake() const {
  const std::uint64_t one = 1;
  // A failure does no harm: a full counter wakes the thread as well, and without a descriptor it does not
  // sleep.
  if (wake_.valid() && ::write(wake_.get(), &one, sizeof one) < 0) return;
}

/// Expects the lock. If this thread was delayed, bytes of the host may be waiting in the terminal, and they
/// are not late. So only receive() ends an incomplete frame, when it has found nothing to read.
void PtyServer::catchUp() {
  auto now = std::chrono::steady_clock::now();
  if (const auto left = endpoint_.timeToEndOfPatience()) now = std::min(now, lastAdvance_ + *left - 1ns);
  advanceTo(now);
}

/// Expects the lock.
void PtyServer::advanceTo(std::chrono::steady_clock::time_point now) {
  if (now > lastAdvance_) endpoint_.advance(now - std::exchange(lastAdvance_, now));
}

void PtyServer::serve() {
  serverThread_ = std::this_thread::get_id();
  while (!stopping_ && sendAndLog()) {
    if (stopping_) break;
    waitForWork();
    if (!receive()) break;
  }
  flushLog();
  // The master is closed last, because this hangs the line up for the clients.
  slave_.reset();
  master_.reset();
  serving_ = false;
  std::function<void()> tell;
  {
    const std::lock_guard lock(mutex_);
    if (endpoint_.unplugged()) tell = endpoint_.options().unplugged;
  }
  if (tell) tell();
}

bool PtyServer::sendAndLog() {
  std::vector<QString> lines;
  std::function<void(const QString &)> log;
  bool unplugged = false;
  {
    const std::lock_guard lock(mutex_);
    catchUp();
    while (const std::optional<Bytes> bytes = endpoint_.takeDelivery()) send(*bytes);
    unplugged = endpoint_.unplugged();
    waitTime_ = endpoint_.timeToNextEvent().value_or(nanoseconds{-1});
    lines = endpoint_.log().take();
    log = endpoint_.options().log;
  }
  // Without the lock, so that the callback may use this object.
  if (log) {
    for (const QString &line : lines) log(line);
  }
  return !unplugged;
}

void PtyServer::flushLog() {
  {
    const std::lock_guard lock(mutex_);
    endpoint_.log().endLine();
  }
  sendAndLog();
}

void PtyServer::send(const Bytes &bytes) {
  ssize_t written = 0;
  do {
    written = ::write(master_.get(), bytes.data(), bytes.size());
  } while (written < 0 && errno == EINTR);
  const std::size_t taken = written < 0 ? 0 : static_cast<std::size_t>(written);
  // Like a wire, the terminal does not wait for a reader.
  if (taken < bytes.size()) {
    endpoint_.log().toHost(QStringLiteral("%1 bytes lost, nobody reads").arg(bytes.size() - taken));
  }
}

void PtyServer::waitForWork() const {
  std::array<pollfd, 3> descriptors{
      {{master_.get(), POLLIN, 0}, {wake_.get(), POLLIN, 0}, {closings_.get(), POLLIN, 0}}};
  timespec timeout{};
  timeout.tv_sec = static_cast<time_t>(waitTime_.count() / 1'000'000'000);
  timeout.tv_nsec = static_cast<long>(waitTime_.count() % 1'000'000'000);
  // The loop checks everything, whatever ended the wait.
  ::ppoll(descriptors.data(), descriptors.size(), waitTime_.count() < 0 ? nullptr : &timeout, nullptr);
  if ((descriptors[2].revents & POLLIN) != 0) giveBackIfLeft();
}

void PtyServer::giveBackIfLeft() const {
  alignas(inotify_event) std::array<char, 1024> events;
  while (::read(closings_.get(), events.data(), events.size()) > 0) {
  }
  int isExclusive = 0;
  if (::ioctl(slave_.get(), TIOCGEXCL, &isExclusive) != 0 || isExclusive == 0) return;
  if (!isHeldByOthers(path().toStdString(), slave_.get())) ::ioctl(slave_.get(), TIOCNXCL);
}

bool PtyServer::receive() {
  const auto asked = std::chrono::steady_clock::now();
  std::array<std::uint8_t, 4096> buffer;
  const ssize_t count = ::read(master_.get(), buffer.data(), buffer.size());
  const int error = count < 0 ? errno : 0;
  const std::lock_guard lock(mutex_);
  if (error == EAGAIN) advanceTo(asked);
  if (count < 0) return error == EAGAIN || error == EINTR;
  catchUp();
  endpoint_.receive(std::span(buffer).first(static_cast<std::size_t>(count)));
  return count > 0;
}

}  // namespace tavril::simulator
