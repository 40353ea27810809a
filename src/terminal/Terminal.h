#pragma once

#include "terminal/LineTakeover.h"
#include "terminal/TerminalCalls.h"

#include <atomic>
#include <chrono>
#include <cstddef>
#include <memory>
#include <mutex>
#include <optional>
#include <span>
#include <string>

namespace tavril {

/// A call on a terminal that failed: what was tried, and the error number.
struct TerminalError {
  std::string tried;  ///< "open /dev/ttyUSB0"
  int number = 0;

  /// Whether this is how a terminal answers whose device is gone.
  bool isGone() const;
  /// "open /dev/ttyUSB0: Permission denied"
  std::string text() const;
};

/// One terminal, opened for nobody else and used with blocking calls. For one thread, except cancel().
class Terminal {
 public:
  using Clock = std::chrono::steady_clock;
  using Failure = std::optional<TerminalError>;

  struct Input {
    std::size_t count = 0;   ///< 0 if nothing came by the deadline, after cancel(), and after a failure
    Clock::time_point came;  ///< when the wait for these bytes ended
    Failure failure;
  };

  explicit Terminal(TerminalCalls &calls);
  ~Terminal();
  Terminal(const Terminal &) = delete;
  Terminal &operator=(const Terminal &) = delete;

  /// Locks the terminal and makes it a raw line of 8 bits at this speed, without parity and flow control, and
  /// with low latency if the driver can do that. Any speed may be asked for. The pins stay as they are.
  /// Closes what is open. After a failure, the terminal is closed and as it was.
  [[nodiscard]] Failure open(const std::string &path, unsigned long baudRate);
  bool isOpen() const { return descriptor_ > 0; }

  /// Returns when all bytes are handed over, or ECANCELED after cancel().
  [[nodiscard]] Failure write(std::span<const std::byte> bytes);
  /// Waits until some bytes are there, and reads as many as are there and fit. A line whose device is gone is
  /// a failure each time.
  [[nodiscard]] Input read(std::span<std::byte> buffer, Clock::time_point deadline);

  /// Ends what waits in write() and read(), and lets no more of it wait until the terminal is opened anew.
  /// Any thread.
  void cancel();

  /// Sends what waits to be sent, though not for ever, puts the settings back and unlocks the terminal.
  /// Harmless if it is not open.
  Failure close();

 private:
  Failure failed(const char *tried, int number) const;

  TerminalCalls &calls_;
  LineTakeover takeover_{calls_};
  std::string path_;
  int descriptor_ = 0;  // 0: not open
  std::unique_ptr<WakeDescriptor> wake_;
  std::atomic<bool> cancelled_ = false;
  /// Then nobody waits, and cancel(), which sets attributes, would undo what is put back. Under the mutex.
  bool isClosing_ = false;
  std::mutex mutex_;  // held while the descriptor comes and goes, and while another thread uses it
};

}  // namespace tavril
