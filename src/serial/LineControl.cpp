#include "serial/LineControl.h"

#include "platform/MainQueue.h"
#include "serial/SerialEnvironment.h"

namespace tavril {

LineControl::LineControl(const SerialEnvironment &environment)
    : environment_(environment), takeover_(environment.terminal) {}

void LineControl::onOpenLine(const std::function<CallResult(int descriptor)> &call) {
  bool isOpen = false;
  const CallResult result = withDescriptor([&](int descriptor) {
    isOpen = true;
    return call(descriptor);
  });
  if (isOpen && result.failed()) notifyDelegateOfPosixError(result.error);
}

// ------------------------------------------------------------------------------------------------ settings

void LineControl::take(TakeoverStep step) {
  onOpenLine([&](int descriptor) { return (takeover_.*step)(descriptor); });
}

// Kept: C51.
void LineControl::setBaudRate(unsigned long baudRate) {
  takeover_.settings.baudRate = baudRate;
  setPortOptions();
}

void LineControl::setParity(std::uint64_t parity) {
  const std::uint64_t none = SerialPortParityNone;
  change(&LineSettings::parity, parity > SerialPortParityEven ? none : parity);  // Kept: C52.
}

void LineControl::applyFlowControl(bool FlowControl::*kind, bool use) {
  if (takeover_.settings.flowControl.*kind == use) return;
  // Kept: C50.
  whileClosed([&] {
    takeover_.settings.flowControl.*kind = use;
    setPortOptions();
  });
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
  onOpenLine([&](int fd) {
    int pins = 0;
    if (const CallResult read = environment_.terminal.pins(fd, pins); read.failed()) return read;
    return environment_.terminal.setPins(fd, on ? pins | pin : pins & ~pin);
  });
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
