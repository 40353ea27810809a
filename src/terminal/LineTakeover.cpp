#include "terminal/LineTakeover.h"

#include <utility>

#include <termios.h>

namespace tavril {

LineTakeover::LineTakeover(TerminalCalls &calls) : calls_(calls) {}

LineTakeover::~LineTakeover() = default;

CallResult LineTakeover::openExclusively(TerminalCalls &calls, const std::string &path) {
  const CallResult opened = calls.open(path);
  const int descriptor = static_cast<int>(opened.value);
  if (descriptor == 0) calls.close(descriptor);  // Kept: C47.
  if (descriptor < 1) return CallResult::failure(opened.error);
  if (const CallResult locked = calls.lock(descriptor); locked.failed()) {
    calls.close(descriptor);
    return locked;
  }
  return opened;
}

void LineTakeover::forget() {
  original_.reset();
  hasTakenLowLatency_ = false;
}

CallResult LineTakeover::keepAttributes(int descriptor) {
  auto attributes = std::make_unique<termios>();
  if (!calls_.attributes(descriptor, *attributes).failed()) original_ = std::move(attributes);
  return CallResult::success();
}

CallResult LineTakeover::applySettings(int descriptor) {
  termios attributes{};
  if (const CallResult read = calls_.attributes(descriptor, attributes); read.failed()) return read;
  applyLineSettings(attributes, settings);
  const CallResult flow = calls_.setFlowControl(attributes, settings.flowControl);
  // A speed that the record cannot hold leaves the old one in it; the other settings are applied all the
  // same.
  const CallResult speed = calls_.setSpeed(attributes, settings.baudRate);
  CallResult result = calls_.setAttributes(descriptor, WhenToApply::Now, attributes);
  if (!result.failed() && speed.failed()) result = speed;
  if (result.failed() && settings.allowsNonStandardBaudRates) {
    result = calls_.setArbitrarySpeed(descriptor, settings.baudRate);
  }
  return result.failed() ? result : flow;
}

CallResult LineTakeover::takeLowLatency(int descriptor) {
  if (settings.usesLowLatency) hasTakenLowLatency_ = calls_.setLowLatency(descriptor, true).value == 0;
  return CallResult::success();
}

void LineTakeover::giveBack(int descriptor) {
  calls_.stopBlocking(descriptor);
  restore(descriptor);
}

void LineTakeover::restore(int descriptor) {
  termios attributes{};
  if (!calls_.attributes(descriptor, attributes).failed()) {
    // With flow control on and CTS low the draining below could wait for ever.
    calls_.setFlowControl(attributes, FlowControl{});
    calls_.setAttributes(descriptor, WhenToApply::Now, attributes);
  }
  if (hasTakenLowLatency_) calls_.setLowLatency(descriptor, false);
  if (original_) calls_.setAttributes(descriptor, WhenToApply::AfterDrain, *original_);
}

CallResult LineTakeover::release(TerminalCalls &calls, int descriptor) {
  calls.unlock(descriptor);
  return calls.close(descriptor);
}

}  // namespace tavril
