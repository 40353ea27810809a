#include "terminal/LineSettings.h"

#include <gtest/gtest.h>

#include <cstring>

#include <termios.h>

namespace tavril {
namespace {

/// A record with every flag set, so that each clearing shows.
termios allSet() {
  termios attributes{};
  std::memset(&attributes, 0xFF, sizeof attributes);
  return attributes;
}

termios applied(const LineSettings &settings, termios attributes = allSet()) {
  applyLineSettings(attributes, settings);
  return attributes;
}

TEST(LineSettings, TheDefaultIsARawLineOfEightBits) {
  const LineSettings settings;
  EXPECT_EQ(settings.baudRate, 19200u);
  EXPECT_FALSE(settings.allowsNonStandardBaudRates);
  const termios line = applied(settings);
  EXPECT_EQ(line.c_cflag & CSIZE, tcflag_t{CS8});
  EXPECT_EQ(line.c_cflag & (PARENB | CSTOPB), tcflag_t{0});
  EXPECT_EQ(line.c_lflag & (ECHO | ICANON | ISIG | IEXTEN), tcflag_t{0});
  EXPECT_EQ(line.c_oflag & OPOST, tcflag_t{0});
  EXPECT_EQ(line.c_iflag & (IXON | ICRNL | ISTRIP | PARMRK), tcflag_t{0});
  EXPECT_EQ(line.c_cc[VMIN], 1);
  EXPECT_EQ(line.c_cc[VTIME], 2);
}

TEST(LineSettings, HangUpOnCloseLocalLineAndReceiverAreAlwaysOn) {
  const termios line = applied({}, termios{});
  EXPECT_EQ(line.c_cflag & (HUPCL | CLOCAL | CREAD), tcflag_t{HUPCL | CLOCAL | CREAD});
}

TEST(LineSettings, ParityIsNoneOddOrEven) {
  LineSettings settings;
  settings.parity = SerialPortParityOdd;
  EXPECT_EQ(applied(settings, termios{}).c_cflag & (PARENB | PARODD), tcflag_t{PARENB | PARODD});
  settings.parity = SerialPortParityEven;
  EXPECT_EQ(applied(settings).c_cflag & (PARENB | PARODD), tcflag_t{PARENB});
  settings.parity = SerialPortParityNone;
  EXPECT_EQ(applied(settings).c_cflag & PARENB, tcflag_t{0});
}

TEST(LineSettings, AnUnknownParityLeavesTheFlagsAlone) {
  LineSettings settings;
  settings.parity = 7;
  termios before{};
  before.c_cflag = PARODD;
  // Making the line raw clears the parity itself; whether it would be odd is left as it was.
  EXPECT_EQ(applied(settings, before).c_cflag & PARODD, tcflag_t{PARODD});
  EXPECT_EQ(applied(settings, termios{}).c_cflag & PARODD, tcflag_t{0});
}

TEST(LineSettings, OnlyMoreThanOneStopBitMatters) {
  LineSettings settings;
  for (const std::uint64_t count : {0u, 1u}) {
    settings.numberOfStopBits = count;
    EXPECT_EQ(applied(settings).c_cflag & CSTOPB, tcflag_t{0}) << count;
  }
  for (const std::uint64_t count : {2u, 3u, 99u}) {
    settings.numberOfStopBits = count;
    EXPECT_EQ(applied(settings, termios{}).c_cflag & CSTOPB, tcflag_t{CSTOPB}) << count;
  }
}

TEST(LineSettings, EchoIsSetAndCleared) {
  LineSettings settings;
  settings.shouldEchoReceivedData = true;
  EXPECT_EQ(applied(settings, termios{}).c_lflag & ECHO, tcflag_t{ECHO});
}

}  // namespace
}  // namespace tavril
