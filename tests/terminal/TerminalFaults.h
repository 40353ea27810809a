#pragma once

#include <functional>
#include <optional>
#include <utility>

namespace tavril {

/// Answers some of the kernel's terminal calls in its place, for what a pseudo-terminal does not do by
/// itself. It takes the place of these functions in the test program and passes on to them what is not to be
/// answered. One thread at a time, but for the one that waits for the chip, for which only that is answered.
struct TerminalFaults {
  /// The next `times` calls fail with the error; 0: none.
  struct Fault {
    int error = 0;
    int times = 0;
  };

  Fault open;
  Fault flock;
  Fault fcntl;
  Fault tcgetattr;
  Fault tcsetattr;
  Fault close;                          ///< the descriptor is closed all the same, as on this kernel
  Fault modemLines;                     ///< reading and setting the pins
  Fault setExclusive;                   ///< claiming the terminal
  std::optional<int> pins;              ///< the pins of a line that has some
  std::optional<int> queuedOutput;      ///< output that stays in the queue until it is flushed
  std::optional<unsigned> speedChosen;  ///< what the driver makes of any speed asked for
  int outputFlushes = 0;
  int drainsSeen = 0;  ///< how often the queue was looked at
  /// What the chip does while it is waited for, on the thread that waits.
  std::function<void()> atChipDrain;
};

TerminalFaults &terminalFaults();

/// The input and output speed that the kernel has for the line.
std::pair<unsigned, unsigned> kernelSpeeds(int descriptor);
/// Gives the line two speeds that are outside the fixed list.
void setKernelSpeeds(int descriptor, unsigned input, unsigned output);

}  // namespace tavril
