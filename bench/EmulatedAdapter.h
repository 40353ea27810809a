#pragma once

#include "bench/WireLine.h"
#include "terminal/TerminalCalls.h"

#include <cerrno>
#include <span>
#include <string>

namespace tavril::bench {

/// The terminal calls of a line that knows low latency, as a pseudo-terminal does not: its adapter's timer is
/// shorter then. All else is passed on.
class EmulatedAdapter final : public TerminalCalls {
 public:
  static constexpr WireLine::Nanoseconds usualTimer = std::chrono::milliseconds(16);
  static constexpr WireLine::Nanoseconds shortTimer = std::chrono::milliseconds(1);

  EmulatedAdapter(TerminalCalls &real, WireLine &line) : real_(real), line_(line) {}

  CallResult setLowLatency(int, bool on) override {
    if (line_.timer().count() == 0) return CallResult::failure(ENOTTY);
    const bool wasOn = line_.timer() == shortTimer;
    line_.setTimer(on ? shortTimer : usualTimer);
    return CallResult::success(wasOn ? 1 : 0);
  }

  CallResult open(const std::string &path) override { return real_.open(path); }
  CallResult lock(int descriptor) override { return real_.lock(descriptor); }
  CallResult unlock(int descriptor) override { return real_.unlock(descriptor); }
  CallResult clearStatusFlags(int descriptor) override { return real_.clearStatusFlags(descriptor); }
  CallResult stopBlocking(int descriptor) override { return real_.stopBlocking(descriptor); }
  CallResult attributes(int descriptor, termios &attributes) override {
    return real_.attributes(descriptor, attributes);
  }
  CallResult setAttributes(int descriptor, WhenToApply when, const termios &attributes) override {
    return real_.setAttributes(descriptor, when, attributes);
  }
  CallResult setSpeed(termios &attributes, unsigned long baudRate) override {
    return real_.setSpeed(attributes, baudRate);
  }
  CallResult setFlowControl(termios &attributes, const FlowControl &flowControl) override {
    return real_.setFlowControl(attributes, flowControl);
  }
  CallResult setArbitrarySpeed(int descriptor, unsigned long baudRate) override {
    return real_.setArbitrarySpeed(descriptor, baudRate);
  }
  CallResult pins(int descriptor, int &pins) override { return real_.pins(descriptor, pins); }
  CallResult setPins(int descriptor, int pins) override { return real_.setPins(descriptor, pins); }
  CallResult waitForInput(int descriptor, int wakeDescriptor, std::chrono::microseconds timeout) override {
    return real_.waitForInput(descriptor, wakeDescriptor, timeout);
  }
  CallResult read(int descriptor, std::span<std::byte> buffer) override {
    return real_.read(descriptor, buffer);
  }
  CallResult write(int descriptor, std::span<const std::byte> bytes) override {
    return real_.write(descriptor, bytes);
  }
  CallResult close(int descriptor) override { return real_.close(descriptor); }
  CallResult openWake() override { return real_.openWake(); }
  void wake(int wakeDescriptor) override { real_.wake(wakeDescriptor); }
  void closeWake(int wakeDescriptor) override { real_.closeWake(wakeDescriptor); }

 private:
  TerminalCalls &real_;
  WireLine &line_;
};

}  // namespace tavril::bench
