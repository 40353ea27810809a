#pragma once

#include "terminal/TerminalCalls.h"

#include <chrono>
#include <cstddef>
#include <functional>
#include <span>
#include <string>

namespace tavril {

enum class Call {
  Open,
  Lock,
  Unlock,
  ClearStatusFlags,
  StopBlocking,
  Attributes,
  SetAttributes,
  SetSpeed,
  SetFlowControl,
  SetArbitrarySpeed,
  SetLowLatency,
  Pins,
  SetPins,
  Wait,
  Read,
  Write,
  Close,
  OpenWake,
};

/// Calls that are made by others, each through pass(), which may look at the outcome, or replace it.
class PassedCalls : public TerminalCalls {
 public:
  explicit PassedCalls(TerminalCalls &real) : real_(real) {}

  CallResult open(const std::string &path) override {
    return pass(Call::Open, [&] { return real_.open(path); });
  }
  CallResult lock(int descriptor) override {
    return pass(Call::Lock, [&] { return real_.lock(descriptor); });
  }
  CallResult unlock(int descriptor) override {
    return pass(Call::Unlock, [&] { return real_.unlock(descriptor); });
  }
  CallResult clearStatusFlags(int descriptor) override {
    return pass(Call::ClearStatusFlags, [&] { return real_.clearStatusFlags(descriptor); });
  }
  CallResult stopBlocking(int descriptor) override {
    return pass(Call::StopBlocking, [&] { return real_.stopBlocking(descriptor); });
  }
  CallResult attributes(int descriptor, termios &attributes) override {
    return pass(Call::Attributes, [&] { return real_.attributes(descriptor, attributes); });
  }
  CallResult setAttributes(int descriptor, WhenToApply when, const termios &attributes) override {
    return pass(Call::SetAttributes, [&] { return real_.setAttributes(descriptor, when, attributes); });
  }
  CallResult setSpeed(termios &attributes, unsigned long baudRate) override {
    return pass(Call::SetSpeed, [&] { return real_.setSpeed(attributes, baudRate); });
  }
  CallResult setFlowControl(termios &attributes, const FlowControl &flowControl) override {
    return pass(Call::SetFlowControl, [&] { return real_.setFlowControl(attributes, flowControl); });
  }
  CallResult setArbitrarySpeed(int descriptor, unsigned long baudRate) override {
    return pass(Call::SetArbitrarySpeed, [&] { return real_.setArbitrarySpeed(descriptor, baudRate); });
  }
  CallResult setLowLatency(int descriptor, bool on) override {
    return pass(Call::SetLowLatency, [&] { return real_.setLowLatency(descriptor, on); });
  }
  CallResult pins(int descriptor, int &pins) override {
    return pass(Call::Pins, [&] { return real_.pins(descriptor, pins); });
  }
  CallResult setPins(int descriptor, int pins) override {
    return pass(Call::SetPins, [&] { return real_.setPins(descriptor, pins); });
  }
  CallResult waitForInput(int descriptor, int wakeDescriptor, std::chrono::microseconds timeout) override {
    return pass(Call::Wait, [&] { return real_.waitForInput(descriptor, wakeDescriptor, timeout); });
  }
  CallResult read(int descriptor, std::span<std::byte> buffer) override {
    return pass(Call::Read, [&] { return real_.read(descriptor, buffer); });
  }
  CallResult write(int descriptor, std::span<const std::byte> bytes) override {
    return pass(Call::Write, [&] { return real_.write(descriptor, bytes); });
  }
  CallResult close(int descriptor) override {
    return pass(Call::Close, [&] { return real_.close(descriptor); });
  }
  CallResult openWake() override {
    return pass(Call::OpenWake, [&] { return real_.openWake(); });
  }
  void wake(int wakeDescriptor) override { real_.wake(wakeDescriptor); }
  void closeWake(int wakeDescriptor) override { real_.closeWake(wakeDescriptor); }

 protected:
  virtual CallResult pass(Call call, const std::function<CallResult()> &make) = 0;

  TerminalCalls &real_;
};

}  // namespace tavril
