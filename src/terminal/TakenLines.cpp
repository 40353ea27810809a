// The kernel's record of settings has all speeds, and its header cannot be read together with <termios.h>.
#include "terminal/TakenLines.h"

#include <asm/ioctls.h>
#include <asm/termbits.h>
#include <linux/serial.h>
#include <linux/tty_flags.h>

extern "C" int ioctl(int descriptor, unsigned long request, ...) noexcept;

namespace tavril {

struct TakenLines::Settings {
  struct termios2 line {};
  bool hasLowLatency = false;
  bool isLowLatencyKnown = false;
};

TakenLines::TakenLines() = default;

TakenLines::~TakenLines() = default;

void TakenLines::take(int descriptor) {
  Settings before;
  if (ioctl(descriptor, TCGETS2, &before.line) != 0) return;
  serial_struct port{};
  before.isLowLatencyKnown = ioctl(descriptor, TIOCGSERIAL, &port) == 0;
  before.hasLowLatency = (static_cast<unsigned>(port.flags) & ASYNC_LOW_LATENCY) != 0;
  const std::lock_guard lock(mutex_);
  lines_.insert_or_assign(descriptor, before);
}

void TakenLines::giveUp(int descriptor) {
  const std::lock_guard lock(mutex_);
  lines_.erase(descriptor);
}

void TakenLines::putBack() {
  const std::lock_guard lock(mutex_);
  for (const auto &[descriptor, before] : lines_) {
    // What has not been sent by now must not leave at another speed.
    ioctl(descriptor, TCFLSH, TCOFLUSH);
    serial_struct port{};
    if (before.isLowLatencyKnown && ioctl(descriptor, TIOCGSERIAL, &port) == 0) {
      const unsigned others = static_cast<unsigned>(port.flags) & ~ASYNC_LOW_LATENCY;
      port.flags = static_cast<int>(others | (before.hasLowLatency ? ASYNC_LOW_LATENCY : 0U));
      ioctl(descriptor, TIOCSSERIAL, &port);
    }
    ioctl(descriptor, TCSETS2, &before.line);
    ioctl(descriptor, TIOCNXCL);
  }
  lines_.clear();
}

}  // namespace tavril
