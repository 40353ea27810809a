// The kernel's record with free speeds has the same name parts as the C library's <termios.h>, and the two
// headers cannot be read together: nothing but these calls live in this file.
#include "terminal/ArbitrarySpeed.h"

#include <cerrno>

#include <asm/ioctls.h>
#include <asm/termbits.h>

extern "C" int ioctl(int descriptor, unsigned long request, ...) noexcept;

namespace tavril {

bool isArbitrarySpeed(unsigned controlFlags) {
  return (controlFlags & CBAUD) == BOTHER || (controlFlags & CIBAUD) == (BOTHER << IBSHIFT);
}

LineSpeeds speedsOf(int descriptor) {
  struct termios2 settings {};
  if (ioctl(descriptor, TCGETS2, &settings) != 0) return {};
  return {settings.c_ispeed, settings.c_ospeed};
}

int setSpeedsOf(int descriptor, const LineSpeeds &speeds) {
  struct termios2 settings {};
  if (ioctl(descriptor, TCGETS2, &settings) != 0) return errno;
  settings.c_ispeed = speeds.input;
  settings.c_ospeed = speeds.output;
  return ioctl(descriptor, TCSETS2, &settings) == 0 ? 0 : errno;
}

int setArbitrarySpeedOf(int descriptor, unsigned long baudRate) {
  if (baudRate == 0 || baudRate > 0x7FFFFFFF) return EINVAL;  // speed 0 would hang up the line
  struct termios2 settings {};
  if (ioctl(descriptor, TCGETS2, &settings) != 0) return errno;
  settings.c_cflag &= ~static_cast<tcflag_t>(CBAUD | CIBAUD);
  settings.c_cflag |= BOTHER | (BOTHER << IBSHIFT);
  settings.c_ospeed = static_cast<speed_t>(baudRate);
  settings.c_ispeed = static_cast<speed_t>(baudRate);
  if (ioctl(descriptor, TCSETS2, &settings) != 0) return errno;

  struct termios2 chosen {};
  if (ioctl(descriptor, TCGETS2, &chosen) != 0) return errno;
  const unsigned long got = chosen.c_ospeed;
  const unsigned long difference = got > baudRate ? got - baudRate : baudRate - got;
  return difference * 50 <= baudRate ? 0 : EINVAL;
}

}  // namespace tavril
