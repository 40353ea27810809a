#pragma once

#include "terminal/TerminalCalls.h"

#include <cstdint>

struct termios;

namespace tavril {

enum SerialPortParity : std::uint64_t {
  SerialPortParityNone = 0,
  SerialPortParityOdd = 1,
  SerialPortParityEven = 2,
};

/// The line settings of a port.
struct LineSettings {
  unsigned long baudRate = 19200;  ///< bits per second
  bool allowsNonStandardBaudRates = false;
  std::uint64_t numberOfStopBits = 1;
  bool shouldEchoReceivedData = false;
  std::uint64_t parity = SerialPortParityNone;
  FlowControl flowControl;
  bool usesLowLatency = false;
};

/// Turns a terminal's settings into a raw 8-bit line with these settings, all but speed, flow control and low
/// latency.
/// A parity that is none of the three leaves the parity bits alone.
void applyLineSettings(termios &attributes, const LineSettings &settings);

}  // namespace tavril
