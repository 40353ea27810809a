#include "terminal/LineSettings.h"

#include <termios.h>

namespace tavril {

namespace {

void setFlag(tcflag_t &flags, unsigned flag, bool on) {
  if (on) {
    flags |= flag;
  } else {
    flags &= ~flag;
  }
}

}  // namespace

void applyLineSettings(termios &attributes, const LineSettings &settings) {
  cfmakeraw(&attributes);
  attributes.c_cc[VMIN] = 1;   // a read returns as soon as there is one byte
  attributes.c_cc[VTIME] = 2;  // tenths of a second between bytes

  attributes.c_cflag &= ~static_cast<tcflag_t>(CSIZE);
  attributes.c_cflag |= CS8;

  switch (settings.parity) {
    case SerialPortParityNone:
      setFlag(attributes.c_cflag, PARENB, false);
      break;
    case SerialPortParityOdd:
      setFlag(attributes.c_cflag, PARENB, true);
      setFlag(attributes.c_cflag, PARODD, true);
      break;
    case SerialPortParityEven:
      setFlag(attributes.c_cflag, PARENB, true);
      setFlag(attributes.c_cflag, PARODD, false);
      break;
    default:
      break;
  }
  setFlag(attributes.c_cflag, CSTOPB, settings.numberOfStopBits > 1);
  setFlag(attributes.c_lflag, ECHO, settings.shouldEchoReceivedData);
  setFlag(attributes.c_cflag, HUPCL | CLOCAL | CREAD, true);
  setFlag(attributes.c_lflag, ICANON | ISIG, false);
}

}  // namespace tavril
