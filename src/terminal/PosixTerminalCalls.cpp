#include "terminal/PosixTerminalCalls.h"

#include "posix/Descriptor.h"
#include "terminal/ArbitrarySpeed.h"
#include "terminal/NamedSpeeds.h"

#include <array>
#include <cerrno>
#include <cstdint>
#include <ctime>
#include <future>
#include <memory>
#include <optional>
#include <system_error>
#include <thread>
#include <utility>

#include <fcntl.h>
#include <linux/serial.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <termios.h>
#include <unistd.h>

namespace tavril {

namespace {

static_assert(Pin::dtr == TIOCM_DTR && Pin::rts == TIOCM_RTS && Pin::cts == TIOCM_CTS &&
              Pin::dcd == TIOCM_CD && Pin::dsr == TIOCM_DSR);

template <typename Call>
CallResult repeatedWhileInterrupted(Call call) {
  const auto value = posix::uninterrupted(call);
  return value >= 0 ? CallResult::success(static_cast<long>(value)) : CallResult::failure(errno);
}

bool isHungUp(int descriptor) {
  pollfd watched{descriptor, 0, 0};
  return ::poll(&watched, 1, 0) > 0 && (watched.revents & POLLHUP) != 0;
}

/// A line whose device is gone answers ENODEV or EIO here; above, that is ENXIO. The drivers also make an EIO
/// of a single USB transfer that failed, with the device still there: then the line is not hung up.
CallResult withGoneTranslated(CallResult result, int descriptor) {
  if (!result.failed()) return result;
  if (result.error == ENODEV || (result.error == EIO && isHungUp(descriptor))) result.error = ENXIO;
  return result;
}

using Clock = std::chrono::steady_clock;

/// Waits until the chip has sent what it has taken from the queue, at the latest until the deadline. The one
/// call that knows of this cannot be told how long to wait, so it is made on a thread that may be left
/// behind.
void drainChip(int descriptor, Clock::time_point deadline) {
  posix::Descriptor copy(::fcntl(descriptor, F_DUPFD_CLOEXEC, STDERR_FILENO + 1));
  if (!copy.isOpen()) return;
  auto drained = std::make_shared<std::promise<void>>();
  const auto isDrained = drained->get_future();
  try {
    std::thread([copy = std::move(copy), drained]() mutable {
      posix::uninterrupted([&] { return ::tcdrain(copy.get()); });
      copy = posix::Descriptor();
      drained->set_value();
    }).detach();
  } catch (const std::system_error &) {  // no thread to be had
    return;
  }
  if (isDrained.wait_until(deadline) == std::future_status::timeout) ::tcflush(descriptor, TCOFLUSH);
}

void drain(int descriptor) {
  const auto deadline = Clock::now() + PosixTerminalCalls::longestDrain;
  int queued = 0;
  while (::ioctl(descriptor, TIOCOUTQ, &queued) == 0 && queued > 0) {
    if (Clock::now() >= deadline) {
      ::tcflush(descriptor, TCOFLUSH);
      return;
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(2));
  }
  drainChip(descriptor, deadline);
}

/// Rights on a node that was made only just now, or whose rights were changed, may still be on their way.
bool areRightsSettling(const std::string &path) {
  struct stat node {};
  timespec now{};
  if (::stat(path.c_str(), &node) != 0 || ::clock_gettime(CLOCK_REALTIME, &now) != 0) return false;
  const auto since = std::chrono::seconds(now.tv_sec - node.st_ctim.tv_sec) +
                     std::chrono::nanoseconds(now.tv_nsec - node.st_ctim.tv_nsec);
  return since >= std::chrono::seconds(0) && since < PosixTerminalCalls::rightsSettle;
}

CallResult openOnce(const std::string &path) {
  return repeatedWhileInterrupted([&] {
    const int descriptor = ::open(path.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
    if (descriptor < 0 || descriptor > STDERR_FILENO) return descriptor;
    // A program started without standard streams would get one of their numbers, and stray output with it.
    const int moved = ::fcntl(descriptor, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
    const int error = errno;
    ::close(descriptor);
    errno = error;
    return moved;
  });
}

}  // namespace

PosixTerminalCalls::PosixTerminalCalls(Log log, Pause pause)
    : log_(std::move(log)), pause_(std::move(pause)) {
  if (!pause_) pause_ = [](std::chrono::milliseconds duration) { std::this_thread::sleep_for(duration); };
}

CallResult PosixTerminalCalls::open(const std::string &path) {
  CallResult opened = openOnce(path);
  while (opened.error == EACCES && areRightsSettling(path)) {
    pause_(betweenAttempts);
    opened = openOnce(path);
  }
  return opened;
}

CallResult PosixTerminalCalls::lock(int descriptor) {
  const CallResult locked = repeatedWhileInterrupted([&] { return ::flock(descriptor, LOCK_EX | LOCK_NB); });
  if (locked.failed()) return locked;
  // The superuser passes another program's TIOCEXCL, so it has to be looked for; and it is set only once the
  // lock is ours, so that a lost race leaves no flag on a terminal that somebody else owns.
  int exclusive = 0;
  if (::ioctl(descriptor, TIOCGEXCL, &exclusive) == 0 && exclusive != 0) return CallResult::failure(EBUSY);
  if (::ioctl(descriptor, TIOCEXCL) != 0) return CallResult::failure(errno);
  taken_->take(descriptor);
  return CallResult::success();
}

CallResult PosixTerminalCalls::unlock(int descriptor) {
  // The flag belongs to the terminal, not to the descriptor, so closing alone would leave it behind.
  const bool isShared = ::ioctl(descriptor, TIOCNXCL) == 0;
  const int reason = errno;
  const CallResult unlocked = repeatedWhileInterrupted([&] { return ::flock(descriptor, LOCK_UN); });
  return isShared ? unlocked : CallResult::failure(reason);
}

CallResult PosixTerminalCalls::clearStatusFlags(int descriptor) {
  return repeatedWhileInterrupted([&] { return ::fcntl(descriptor, F_SETFL, 0); });
}

CallResult PosixTerminalCalls::stopBlocking(int descriptor) {
  const CallResult set = repeatedWhileInterrupted([&] { return ::fcntl(descriptor, F_SETFL, O_NONBLOCK); });
  if (set.failed()) return set;
  // Setting the attributes, be they the same, wakes whoever sleeps in a read or write, who then sees the
  // flag.
  termios same{};
  const CallResult read = attributes(descriptor, same);
  return read.failed() ? read : setAttributes(descriptor, WhenToApply::Now, same);
}

// A speed outside the fixed list is not in the record's flags. Its two fields for speeds carry it from here
// to setAttributes(), so that settings that were read can be put back whole.
CallResult PosixTerminalCalls::attributes(int descriptor, termios &attributes) {
  const CallResult read = repeatedWhileInterrupted([&] { return ::tcgetattr(descriptor, &attributes); });
  if (!read.failed() && isArbitrarySpeed(attributes.c_cflag)) {
    const LineSpeeds speeds = speedsOf(descriptor);
    attributes.c_ispeed = speeds.input;
    attributes.c_ospeed = speeds.output;
  }
  return read;
}

CallResult PosixTerminalCalls::setAttributes(int descriptor, WhenToApply when, const termios &attributes) {
  if (when == WhenToApply::AfterDrain) drain(descriptor);
  const CallResult set =
      repeatedWhileInterrupted([&] { return ::tcsetattr(descriptor, TCSANOW, &attributes); });
  // Speed 0 would hang up the line.
  const bool hasSpeeds = isArbitrarySpeed(attributes.c_cflag) && attributes.c_ospeed != 0;
  if (set.failed() || !hasSpeeds) return set;
  const int error = setSpeedsOf(descriptor, {attributes.c_ispeed, attributes.c_ospeed});
  return error == 0 ? set : CallResult::failure(error);
}

CallResult PosixTerminalCalls::setSpeed(termios &attributes, unsigned long baudRate) {
  // By the constant: some C libraries accept no plain number, and take 13 for the constant B9600.
  const std::optional<speed_t> constant = constantOfSpeed(namedSpeeds(), baudRate);
  if (!constant) return CallResult::failure(EINVAL);
  if (::cfsetspeed(&attributes, *constant) != 0) return CallResult::failure(errno);
  attributes.c_cflag &= ~static_cast<tcflag_t>(CIBAUD);  // no other speed for the input
  return CallResult::success();
}

CallResult PosixTerminalCalls::setFlowControl(termios &attributes, const FlowControl &flowControl) {
  if (flowControl.rtsCts) {
    attributes.c_cflag |= CRTSCTS;
  } else {
    attributes.c_cflag &= ~CRTSCTS;
  }
  const bool unsupported = flowControl.dtrDsr || flowControl.dcdOutput;
  return unsupported ? CallResult::failure(ENOTSUP) : CallResult::success();
}

CallResult PosixTerminalCalls::setArbitrarySpeed(int descriptor, unsigned long baudRate) {
  const int error = setArbitrarySpeedOf(descriptor, baudRate);
  return error == 0 ? CallResult::success() : CallResult::failure(error);
}

CallResult PosixTerminalCalls::setLowLatency(int descriptor, bool on) {
  serial_struct settings{};
  const CallResult read =
      repeatedWhileInterrupted([&] { return ::ioctl(descriptor, TIOCGSERIAL, &settings); });
  if (read.failed()) return read;
  const bool wasOn = (settings.flags & static_cast<int>(ASYNC_LOW_LATENCY)) != 0;
  if (wasOn == on) return CallResult::success(wasOn ? 1 : 0);
  settings.flags ^= static_cast<int>(ASYNC_LOW_LATENCY);
  const CallResult set =
      repeatedWhileInterrupted([&] { return ::ioctl(descriptor, TIOCSSERIAL, &settings); });
  return set.failed() ? set : CallResult::success(wasOn ? 1 : 0);
}

CallResult PosixTerminalCalls::pins(int descriptor, int &pins) {
  pins = 0;
  const CallResult result = repeatedWhileInterrupted([&] { return ::ioctl(descriptor, TIOCMGET, &pins); });
  if (result.failed() && result.error == ENOTTY) {
    noteMissingPins();
    return CallResult::success();
  }
  return withGoneTranslated(result, descriptor);
}

CallResult PosixTerminalCalls::setPins(int descriptor, int pins) {
  const CallResult result = repeatedWhileInterrupted([&] { return ::ioctl(descriptor, TIOCMSET, &pins); });
  if (result.failed() && result.error == ENOTTY) {
    noteMissingPins();
    return CallResult::success();
  }
  return withGoneTranslated(result, descriptor);
}

void PosixTerminalCalls::noteMissingPins() {
  if (!missingPinsNoted_.exchange(true) && log_) {
    log_("This terminal has no modem lines; its pins count as not set.");
  }
}

CallResult PosixTerminalCalls::waitForInput(int descriptor, int wakeDescriptor,
                                            std::chrono::microseconds timeout) {
  std::array<pollfd, 2> watched{{{descriptor, POLLIN, 0}, {wakeDescriptor, POLLIN, 0}}};
  const auto seconds = std::chrono::floor<std::chrono::seconds>(timeout);
  const timespec longest{seconds.count(), std::chrono::nanoseconds(timeout - seconds).count()};
  const int ready = ::ppoll(watched.data(), watched.size(), &longest, nullptr);
  if (ready < 0) return errno == EINTR ? CallResult::success() : CallResult::failure(errno);
  if ((watched[0].revents & POLLNVAL) != 0) return CallResult::failure(EBADF);
  return CallResult::success(watched[0].revents != 0 ? 1 : 0);
}

CallResult PosixTerminalCalls::read(int descriptor, std::span<std::byte> buffer) {
  return repeatedWhileInterrupted([&] { return ::read(descriptor, buffer.data(), buffer.size()); });
}

CallResult PosixTerminalCalls::write(int descriptor, std::span<const std::byte> bytes) {
  return repeatedWhileInterrupted([&] { return ::write(descriptor, bytes.data(), bytes.size()); });
}

CallResult PosixTerminalCalls::close(int descriptor) {
  taken_->giveUp(descriptor);
  // This kernel has given the descriptor free whatever close() says, unless it was none: closing it again
  // could hit a file that another thread has just opened.
  if (::close(descriptor) == 0 || errno != EBADF) return CallResult::success();
  return CallResult::failure(EBADF);
}

CallResult PosixTerminalCalls::openWake() {
  return repeatedWhileInterrupted([&] { return ::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK); });
}

void PosixTerminalCalls::wake(int wakeDescriptor) {
  const std::uint64_t one = 1;
  // Fails only when the counter is full, and then the waiter is awake already.
  [[maybe_unused]] const auto written = ::write(wakeDescriptor, &one, sizeof one);
}

void PosixTerminalCalls::closeWake(int wakeDescriptor) {
  ::close(wakeDescriptor);
}

}  // namespace tavril
