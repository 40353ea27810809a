#pragma once

#include "terminal/TakenLines.h"
#include "terminal/TerminalCalls.h"

#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <string_view>

namespace tavril {

/// The terminal calls of this kernel. Translates what differs here: the exclusive lock that open() does not
/// have, hung-up lines, terminals without pins, speeds outside the fixed list, and a drain that may last for
/// ever. Thread-safe.
class PosixTerminalCalls final : public TerminalCalls {
 public:
  /// How long AfterDrain waits for the output, that in the chip included, before it drops what is left.
  static constexpr std::chrono::milliseconds longestDrain{1000};
  /// How long after a node was made, or its rights changed, open() asks again when it may not use it. The
  /// access list that gives a new device to whoever sits at the machine comes a moment after the device.
  static constexpr std::chrono::milliseconds rightsSettle{2000};

  /// How long after each attempt the next is made.
  static constexpr std::chrono::milliseconds betweenAttempts{50};
  using Pause = std::function<void(std::chrono::milliseconds duration)>;
  using Log = std::function<void(std::string_view line)>;

  /// `log`: gets a line for what is unusual and no error, on any thread; none: nobody is told. `pause`: what
  /// to do between these attempts, on whatever thread opens; none: only sleep.
  explicit PosixTerminalCalls(Log log = {}, Pause pause = {});

  /// The terminals between lock() and close(); the object may outlive this one.
  std::shared_ptr<TakenLines> takenLines() const { return taken_; }

  CallResult open(const std::string &path) override;
  CallResult lock(int descriptor) override;
  CallResult unlock(int descriptor) override;
  CallResult clearStatusFlags(int descriptor) override;
  CallResult stopBlocking(int descriptor) override;
  CallResult attributes(int descriptor, termios &attributes) override;
  CallResult setAttributes(int descriptor, WhenToApply when, const termios &attributes) override;
  CallResult setSpeed(termios &attributes, unsigned long baudRate) override;
  CallResult setFlowControl(termios &attributes, const FlowControl &flowControl) override;
  CallResult setArbitrarySpeed(int descriptor, unsigned long baudRate) override;
  CallResult setLowLatency(int descriptor, bool on) override;
  CallResult pins(int descriptor, int &pins) override;
  CallResult setPins(int descriptor, int pins) override;
  CallResult waitForInput(int descriptor, int wakeDescriptor, std::chrono::microseconds timeout) override;
  CallResult read(int descriptor, std::span<std::byte> buffer) override;
  CallResult write(int descriptor, std::span<const std::byte> bytes) override;
  CallResult close(int descriptor) override;
  CallResult openWake() override;
  void wake(int wakeDescriptor) override;
  void closeWake(int wakeDescriptor) override;

 private:
  void noteMissingPins();

  const Log log_;
  Pause pause_;
  const std::shared_ptr<TakenLines> taken_ = std::make_shared<TakenLines>();
  std::atomic<bool> missingPinsNoted_ = false;
};

}  // namespace tavril
