#include "serial/SerialPort.h"

// The line settings and output pins of a port: their setters, and how they get onto the line.

#include "serial/LineSettings.h"
#include "serial/SerialEnvironment.h"

#include <atomic>
#include <cstdint>

#include <termios.h>

namespace tavril {

void SerialPort::setPortOptions() {
  if (fileDescriptor_ < 1) return;
  TerminalCalls &calls = environment_.terminal;
  const CallResult applied = withDescriptor([&](int fd) {
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
  if (applied.failed()) notifyDelegateOfPosixError(applied.error);
}

// Kept: C51.
void SerialPort::setBaudRate(unsigned long baudRate) {
  settings_.baudRate = baudRate;
  setPortOptions();
}

void SerialPort::setNumberOfStopBits(std::uint64_t count) {
  if (settings_.numberOfStopBits == count) return;
  settings_.numberOfStopBits = count;
  setPortOptions();
}

void SerialPort::setShouldEchoReceivedData(bool echo) {
  if (settings_.shouldEchoReceivedData == echo) return;
  settings_.shouldEchoReceivedData = echo;
  setPortOptions();
}

void SerialPort::setParity(std::uint64_t parity) {
  if (parity > SerialPortParityEven) parity = SerialPortParityNone;  // Kept: C52.
  if (settings_.parity == parity) return;
  settings_.parity = parity;
  setPortOptions();
}

void SerialPort::setUsesRTSCTSFlowControl(bool use) {
  applyFlowControl(&FlowControl::rtsCts, use);
}

void SerialPort::setUsesDTRDSRFlowControl(bool use) {
  applyFlowControl(&FlowControl::dtrDsr, use);
}

void SerialPort::setUsesDCDOutputFlowControl(bool use) {
  applyFlowControl(&FlowControl::dcdOutput, use);
}

void SerialPort::applyFlowControl(bool FlowControl::*kind, bool use) {
  if (settings_.flowControl.*kind == use) return;
  // Kept: C50.
  const bool wasOpen = isOpen();
  close();
  settings_.flowControl.*kind = use;
  setPortOptions();
  if (wasOpen) open();
}

void SerialPort::setRTS(bool on) {
  drivePin(RTS_, Pin::rts, on);
}

void SerialPort::setDTR(bool on) {
  drivePin(DTR_, Pin::dtr, on);
}

void SerialPort::drivePin(std::atomic<bool> &stored, int pin, bool on) {
  if (stored == on) return;
  stored = on;
  if (!isOpen()) return;
  const CallResult driven = withDescriptor([&](int fd) {
    int pins = 0;
    if (const CallResult read = environment_.terminal.pins(fd, pins); read.failed()) return read;
    return environment_.terminal.setPins(fd, on ? pins | pin : pins & ~pin);
  });
  if (driven.failed()) notifyDelegateOfPosixError(driven.error);
}

}  // namespace tavril
