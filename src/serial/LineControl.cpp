#include "serial/LineControl.h"

#include "platform/MainQueue.h"
#include "serial/SerialEnvironment.h"

#include <cerrno>
#include <utility>

#include <termios.h>

namespace tavril {

LineControl::LineControl(const SerialEnvironment &environment) : environment_(environment) {}

LineControl::~LineControl() = default;

// ------------------------------------------------------------------------------------------------ settings

void LineControl::setPortOptions() {
  TerminalCalls &calls = environment_.terminal;
  bool isOpen = false;
  const CallResult applied = withDescriptor([&](int fd) {
    isOpen = true;
    termios attributes{};
    if (const CallResult read = calls.attributes(fd, attributes); read.failed()) return read;
    applyLineSettings(attributes, settings_);
    const CallResult flow = calls.setFlowControl(attributes, settings_.flowControl);
    // A speed that the record cannot hold leaves the old one in it; the other settings are applied all the
    // same.
    const CallResult speed = calls.setSpeed(attributes, settings_.baudRate);
    CallResult result = calls.setAttributes(fd, WhenToApply::Now, attributes);
    if (!result.failed() && speed.failed()) result = speed;
    if (result.failed() && settings_.allowsNonStandardBaudRates) {
      result = calls.setArbitrarySpeed(fd, settings_.baudRate);
    }
    return result.failed() ? result : flow;
  });
  if (isOpen && applied.failed()) notifyDelegateOfPosixError(applied.error);
}

// Kept: C51.
void LineControl::setBaudRate(unsigned long baudRate) {
  settings_.baudRate = baudRate;
  setPortOptions();
}

void LineControl::setParity(std::uint64_t parity) {
  const std::uint64_t none = SerialPortParityNone;
  change(&LineSettings::parity, parity > SerialPortParityEven ? none : parity);  // Kept: C52.
}

void LineControl::applyFlowControl(bool FlowControl::*kind, bool use) {
  if (settings_.flowControl.*kind == use) return;
  // Kept: C50.
  whileClosed([&] {
    settings_.flowControl.*kind = use;
    setPortOptions();
  });
}

// ------------------------------------------------------------------------------------------ the line itself

void LineControl::forgetLine() {
  originalPortAttributes_.reset();
  hasTakenLowLatency_ = false;
}

void LineControl::keepOriginalAttributes() {
  auto attributes = std::make_unique<termios>();
  const CallResult read =
      withDescriptor([&](int fd) { return environment_.terminal.attributes(fd, *attributes); });
  if (!read.failed()) originalPortAttributes_ = std::move(attributes);
}

void LineControl::takeLowLatency() {
  if (!usesLowLatency_) return;
  const CallResult before =
      withDescriptor([&](int fd) { return environment_.terminal.setLowLatency(fd, true); });
  hasTakenLowLatency_ = before.value == 0;
}

void LineControl::restoreLine(int descriptor) {
  TerminalCalls &calls = environment_.terminal;
  termios attributes{};
  if (!calls.attributes(descriptor, attributes).failed()) {
    // With flow control on and CTS low the draining below could wait for ever.
    calls.setFlowControl(attributes, FlowControl{});
    calls.setAttributes(descriptor, WhenToApply::Now, attributes);
  }
  if (hasTakenLowLatency_) calls.setLowLatency(descriptor, false);
  if (originalPortAttributes_) {
    calls.setAttributes(descriptor, WhenToApply::AfterDrain, *originalPortAttributes_);
  }
}

// ---------------------------------------------------------------------------------------------------- pins

void LineControl::takeOverPins() {
  int pins = 0;
  const CallResult read = withDescriptor([&](int fd) { return environment_.terminal.pins(fd, pins); });
  if (read.failed()) notifyDelegateOfPosixError(read.error);
  const bool wantedRTS = RTS_;
  const bool wantedDTR = DTR_;
  RTS_ = (pins & Pin::rts) != 0;
  DTR_ = (pins & Pin::dtr) != 0;
  setRTS(wantedRTS);
  setDTR(wantedDTR);
}

void LineControl::drivePin(std::atomic<bool> &stored, int pin, bool on) {
  if (stored == on) return;
  stored = on;
  bool isOpen = false;
  const CallResult driven = withDescriptor([&](int fd) {
    isOpen = true;
    int pins = 0;
    if (const CallResult read = environment_.terminal.pins(fd, pins); read.failed()) return read;
    return environment_.terminal.setPins(fd, on ? pins | pin : pins & ~pin);
  });
  if (isOpen && driven.failed()) notifyDelegateOfPosixError(driven.error);
}

void LineControl::showPins(int pins) {
  showPin(CTS_, QStringLiteral("CTS"), (pins & Pin::cts) != 0);
  showPin(DSR_, QStringLiteral("DSR"), (pins & Pin::dsr) != 0);
  showPin(DCD_, QStringLiteral("DCD"), (pins & Pin::dcd) != 0);
}

void LineControl::showPin(std::atomic<bool> &stored, const QString &key, bool on) {
  if (stored == on) return;
  environment_.mainQueue.sync([&] {
    stored = on;
    pinChanged(key);
  });
}

}  // namespace tavril
