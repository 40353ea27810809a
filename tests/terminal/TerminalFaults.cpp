#include "tests/terminal/TerminalFaults.h"

#include <cerrno>
#include <cstdarg>
#include <thread>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <termios.h>

/// The kernel's record with free speeds; the headers that have it clash with <termios.h>.
struct termios2 {
  tcflag_t c_iflag, c_oflag, c_cflag, c_lflag;
  cc_t c_line;
  cc_t c_cc[19];
  speed_t c_ispeed, c_ospeed;
};

namespace tavril {

TerminalFaults &terminalFaults() {
  static TerminalFaults faults;
  return faults;
}

namespace {

const std::thread::id testsThread = std::this_thread::get_id();

bool isTestsThread() {
  return std::this_thread::get_id() == testsThread;
}

bool fails(TerminalFaults::Fault &fault) {
  if (fault.times == 0) return false;
  --fault.times;
  errno = fault.error;
  return true;
}

}  // namespace
}  // namespace tavril

using tavril::fails;
using tavril::isTestsThread;
using tavril::terminalFaults;

// The linker puts these before the C library's functions (its option --wrap).
extern "C" {

int __real_open(const char *path, int flags, ...);
int __real_flock(int descriptor, int operation);
int __real_fcntl(int descriptor, int command, ...);
int __real_tcgetattr(int descriptor, termios *attributes);
int __real_tcsetattr(int descriptor, int when, const termios *attributes);
int __real_tcflush(int descriptor, int queue);
int __real_tcdrain(int descriptor);
int __real_close(int descriptor);
int __real_ioctl(int descriptor, unsigned long request, ...);

int __wrap_open(const char *path, int flags, ...) {
  std::va_list arguments;
  va_start(arguments, flags);
  const unsigned mode = (flags & O_CREAT) != 0 ? va_arg(arguments, unsigned) : 0;
  va_end(arguments);
  return fails(terminalFaults().open) ? -1 : __real_open(path, flags, mode);
}

int __wrap_flock(int descriptor, int operation) {
  return fails(terminalFaults().flock) ? -1 : __real_flock(descriptor, operation);
}

int __wrap_fcntl(int descriptor, int command, ...) {
  std::va_list arguments;
  va_start(arguments, command);
  void *argument = va_arg(arguments, void *);
  va_end(arguments);
  return fails(terminalFaults().fcntl) ? -1 : __real_fcntl(descriptor, command, argument);
}

int __wrap_tcgetattr(int descriptor, termios *attributes) {
  return fails(terminalFaults().tcgetattr) ? -1 : __real_tcgetattr(descriptor, attributes);
}

int __wrap_tcsetattr(int descriptor, int when, const termios *attributes) {
  return fails(terminalFaults().tcsetattr) ? -1 : __real_tcsetattr(descriptor, when, attributes);
}

int __wrap_tcflush(int descriptor, int queue) {
  if (queue == TCOFLUSH) {
    ++terminalFaults().outputFlushes;
    terminalFaults().queuedOutput.reset();
  }
  return __real_tcflush(descriptor, queue);
}

int __wrap_tcdrain(int descriptor) {
  const auto chip = terminalFaults().atChipDrain;  // a copy: the test may have ended when it returns
  if (chip) chip();
  return __real_tcdrain(descriptor);
}

int __wrap_close(int descriptor) {
  const int closed = __real_close(descriptor);
  return closed == 0 && isTestsThread() && fails(terminalFaults().close) ? -1 : closed;
}

int __wrap_ioctl(int descriptor, unsigned long request, ...) {
  std::va_list arguments;
  va_start(arguments, request);
  void *argument = va_arg(arguments, void *);
  va_end(arguments);
  tavril::TerminalFaults &faults = terminalFaults();
  if ((request == TIOCMGET || request == TIOCMSET) && fails(faults.modemLines)) return -1;
  if (request == TIOCEXCL && fails(faults.setExclusive)) return -1;
  if (request == TIOCMGET && faults.pins) {
    *static_cast<int *>(argument) = *faults.pins;
    return 0;
  }
  if (request == TIOCMSET && faults.pins) {
    faults.pins = *static_cast<int *>(argument);
    return 0;
  }
  if (request == TIOCOUTQ) {
    ++faults.drainsSeen;
    if (faults.queuedOutput) {
      *static_cast<int *>(argument) = *faults.queuedOutput;
      return 0;
    }
  }
  const int result = __real_ioctl(descriptor, request, argument);
  if (request == TCGETS2 && result == 0 && faults.speedChosen) {
    static_cast<termios2 *>(argument)->c_ospeed = *faults.speedChosen;
  }
  return result;
}

}  // extern "C"

namespace tavril {

std::pair<unsigned, unsigned> kernelSpeeds(int descriptor) {
  termios2 settings{};
  __real_ioctl(descriptor, TCGETS2, &settings);
  return {settings.c_ispeed, settings.c_ospeed};
}

void setKernelSpeeds(int descriptor, unsigned input, unsigned output) {
  constexpr tcflag_t otherSpeed = 010000;
  constexpr tcflag_t otherInputSpeed = otherSpeed << 16;
  termios2 settings{};
  __real_ioctl(descriptor, TCGETS2, &settings);
  settings.c_cflag &= ~static_cast<tcflag_t>(CBAUD | CIBAUD);
  settings.c_cflag |= otherSpeed | otherInputSpeed;
  settings.c_ispeed = input;
  settings.c_ospeed = output;
  __real_ioctl(descriptor, TCSETS2, &settings);
}

}  // namespace tavril
