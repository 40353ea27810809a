#pragma once

#include <chrono>
#include <cstddef>
#include <span>
#include <string>

struct termios;

namespace tavril {

/// The result of a system call: its value, or -1 with the error number.
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

/// The system calls of a terminal. The interface lets a test make each of them fail. Implementations
/// translate what is special to a kernel, and repeat interrupted calls (EINTR). Thread-safe.
class TerminalCalls {
 public:
  virtual ~TerminalCalls() = default;

  /// Opens for reading and writing. The terminal does not become the controlling one, the call does not wait
  /// for a carrier, and child processes do not inherit the descriptor.
  virtual CallResult open(const std::string &path) = 0;
  /// Locks the terminal. EWOULDBLOCK or EBUSY if another program has it.
  virtual CallResult lock(int descriptor) = 0;
  /// Unlocks the terminal. Only for a descriptor whose lock() succeeded.
  virtual CallResult unlock(int descriptor) = 0;
  /// Clears the status flags, so that later reads and writes block.
  virtual CallResult clearStatusFlags(int descriptor) = 0;
  /// Ends reads and writes that block in other threads, and lets no more of them block. Called before
  /// closing.
  virtual CallResult stopBlocking(int descriptor) = 0;
  virtual CallResult attributes(int descriptor, termios &attributes) = 0;
  /// AfterDrain waits a limited time until the output is sent, then drops the rest.
  virtual CallResult setAttributes(int descriptor, WhenToApply when, const termios &attributes) = 0;
  /// Sets both speeds in the record. EINVAL for 0, and for a speed that the record cannot hold.
  virtual CallResult setSpeed(termios &attributes, unsigned long baudRate) = 0;
  /// Sets the flow control in the record. ENOTSUP for a kind that this system does not have.
  virtual CallResult setFlowControl(termios &attributes, const FlowControl &flowControl) = 0;
  /// Sets any speed through the driver.
  virtual CallResult setArbitrarySpeed(int descriptor, unsigned long baudRate) = 0;
  /// Makes the driver deliver bytes without waiting for more, or lets it wait. Returns the previous setting,
  /// 1 or 0, or an error such as ENOTTY if the driver has no such setting.
  virtual CallResult setLowLatency(int descriptor, bool on) = 0;
  /// Reads the pins. ENXIO if the device is gone. A terminal without pins has none set.
  virtual CallResult pins(int descriptor, int &pins) = 0;
  virtual CallResult setPins(int descriptor, int pins) = 0;
  /// Waits for input. 1 if there is some or the line is hung up, 0 after the time-out or wake().
  virtual CallResult waitForInput(int descriptor, int wakeDescriptor, std::chrono::microseconds timeout) = 0;
  virtual CallResult read(int descriptor, std::span<std::byte> buffer) = 0;
  virtual CallResult write(int descriptor, std::span<const std::byte> bytes) = 0;
  virtual CallResult close(int descriptor) = 0;

  /// A descriptor for wake(), which ends waitForInput(). The caller closes it with closeWake().
  virtual CallResult openWake() = 0;
  virtual void wake(int wakeDescriptor) = 0;
  virtual void closeWake(int wakeDescriptor) = 0;
};

/// What ends a waitForInput() from another thread.
class WakeDescriptor {
 public:
  explicit WakeDescriptor(TerminalCalls &calls)
      : calls_(calls), value_(static_cast<int>(calls.openWake().value)) {}
  ~WakeDescriptor() {
    if (value_ >= 0) calls_.closeWake(value_);
  }
  WakeDescriptor(const WakeDescriptor &) = delete;
  WakeDescriptor &operator=(const WakeDescriptor &) = delete;

  /// -1 where none could be had: a wait then ends by its time-out only.
  int get() const { return value_; }
  /// Also ends each wait that begins from now on.
  void wake() const {
    if (value_ >= 0) calls_.wake(value_);
  }

 private:
  TerminalCalls &calls_;
  const int value_;
};

/// Calls `write`, which writes some of the bytes that it is given, until all are written or it fails.
template <typename Write>
CallResult writeAll(std::span<const std::byte> bytes, Write write) {
  while (!bytes.empty()) {
    const CallResult written = write(bytes);
    if (written.failed()) return written;
    bytes = bytes.subspan(static_cast<std::size_t>(written.value));
  }
  return CallResult::success();
}

}  // namespace tavril
