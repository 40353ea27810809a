#pragma once

#include <chrono>
#include <cstddef>
#include <span>
#include <string>

struct termios;

namespace tavril {

/// What a system call gave: its value, or -1 with the error number.
struct CallResult {
  long value = 0;
  int error = 0;

  bool failed() const { return value < 0; }
  static CallResult success(long value = 0) { return {value, 0}; }
  static CallResult failure(int error) { return {-1, error}; }
};

/// Output and input pins of a serial line, in the kernel's numbering.
namespace Pin {
inline constexpr int dtr = 0x002;
inline constexpr int rts = 0x004;
inline constexpr int cts = 0x020;
inline constexpr int dcd = 0x040;
inline constexpr int dsr = 0x100;
}  // namespace Pin

struct FlowControl {
  bool rtsCts = false;
  bool dtrDsr = false;
  bool dcdOutput = false;
};

enum class WhenToApply { Now, AfterDrain };

/// The system calls of a terminal, as an interface, so that each can be made to fail in a test. What the
/// kernel does differently from what the serial layer expects is translated behind it and nowhere else.
/// An interrupted call (EINTR) is repeated behind it. Thread-safe.
class TerminalCalls {
 public:
  virtual ~TerminalCalls() = default;

  /// Opens for reading and writing, not as controlling terminal, not waiting for carrier, not inherited.
  virtual CallResult open(const std::string &path) = 0;
  /// Makes this opener the only one: EWOULDBLOCK or EBUSY when another holds the terminal.
  virtual CallResult lock(int descriptor) = 0;
  /// Gives the terminal free again; only for a descriptor whose lock() succeeded.
  virtual CallResult unlock(int descriptor) = 0;
  /// Clears the status flags, so that later reads and writes block.
  virtual CallResult clearStatusFlags(int descriptor) = 0;
  /// Reads and writes block no longer, and those that do in other threads end: the descriptor is to be
  /// closed.
  virtual CallResult stopBlocking(int descriptor) = 0;
  virtual CallResult attributes(int descriptor, termios &attributes) = 0;
  /// AfterDrain waits until the output is sent, though not for ever: what is still there then is dropped.
  virtual CallResult setAttributes(int descriptor, WhenToApply when, const termios &attributes) = 0;
  /// Enters both speeds into the record; EINVAL for one that the record cannot hold, and for 0.
  virtual CallResult setSpeed(termios &attributes, unsigned long baudRate) = 0;
  /// Enters the flow control into the record; ENOTSUP for a kind that this system does not have.
  virtual CallResult setFlowControl(termios &attributes, const FlowControl &flowControl) = 0;
  /// Sets any speed through the driver.
  virtual CallResult setArbitrarySpeed(int descriptor, unsigned long baudRate) = 0;
  /// Has the driver hand over what comes without waiting for more, or not; 1 or 0 is what it did before.
  /// ENOTTY, or another error, from drivers that know no such choice.
  virtual CallResult setLowLatency(int descriptor, bool on) = 0;
  /// Reads the pins; ENXIO when the device is gone. A terminal without pins shows none set.
  virtual CallResult pins(int descriptor, int &pins) = 0;
  virtual CallResult setPins(int descriptor, int pins) = 0;
  /// Waits for input: 1 when there is some (or the line is hung up), 0 after the time-out or on wake().
  virtual CallResult waitForInput(int descriptor, int wakeDescriptor, std::chrono::milliseconds timeout) = 0;
  virtual CallResult read(int descriptor, std::span<std::byte> buffer) = 0;
  virtual CallResult write(int descriptor, std::span<const std::byte> bytes) = 0;
  virtual CallResult close(int descriptor) = 0;

  /// A descriptor that ends waitForInput() when it is woken; the caller closes it with closeWake().
  virtual CallResult openWake() = 0;
  virtual void wake(int wakeDescriptor) = 0;
  virtual void closeWake(int wakeDescriptor) = 0;
};

}  // namespace tavril
