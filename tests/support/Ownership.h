#pragma once

#include "tests/support/Pty.h"

#include <algorithm>
#include <iterator>

#include <sys/file.h>
#include <sys/ioctl.h>

namespace tavril {

/// Whether somebody has claimed the terminal, by the flag that keeps others from opening it.
inline bool isExclusive(const Pty &terminal) {
  int exclusive = 0;
  return ::ioctl(terminal.slave(), TIOCGEXCL, &exclusive) == 0 && exclusive != 0;
}

/// Whether the advisory lock on the terminal can be had.
inline bool isUnlocked(const Pty &terminal) {
  if (::flock(terminal.slave(), LOCK_EX | LOCK_NB) != 0) return false;
  return ::flock(terminal.slave(), LOCK_UN) == 0;
}

inline bool sameAttributes(const termios &one, const termios &other) {
  return one.c_iflag == other.c_iflag && one.c_oflag == other.c_oflag && one.c_cflag == other.c_cflag &&
         one.c_lflag == other.c_lflag && std::ranges::equal(one.c_cc, other.c_cc) &&
         cfgetispeed(&one) == cfgetispeed(&other) && cfgetospeed(&one) == cfgetospeed(&other);
}

/// Gives the line settings that no program would choose by itself.
inline termios oddAttributes(const Pty &terminal) {
  termios attributes = terminal.attributes();
  attributes.c_iflag |= IXON | ICRNL;
  attributes.c_lflag |= ECHO | ICANON;
  attributes.c_cc[VTIME] = 7;
  attributes.c_cc[VKILL] = 'k';
  cfsetspeed(&attributes, B19200);
  ::tcsetattr(terminal.slave(), TCSANOW, &attributes);
  return terminal.attributes();
}

}  // namespace tavril
