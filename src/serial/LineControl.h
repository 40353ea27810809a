#pragma once

#include "serial/PortLine.h"
#include "terminal/LineSettings.h"
#include "terminal/LineTakeover.h"

#include <QString>

#include <atomic>
#include <cstdint>
#include <functional>

namespace tavril {

struct SerialEnvironment;

/// The settings and pins of a port's line: what the user wants, how that gets onto the line while the port is
/// open, and how the line becomes again what it was before.
class LineControl : protected PortLine {
 public:
  LineControl(const LineControl &) = delete;
  LineControl &operator=(const LineControl &) = delete;

  /// Line settings; on an open port they act at once. Every setBaudRate() counts as a change.
  unsigned long baudRate() const { return takeover_.settings.baudRate; }
  void setBaudRate(unsigned long baudRate);
  bool allowsNonStandardBaudRates() const { return takeover_.settings.allowsNonStandardBaudRates; }
  void setAllowsNonStandardBaudRates(bool allow) { takeover_.settings.allowsNonStandardBaudRates = allow; }
  std::uint64_t numberOfStopBits() const { return takeover_.settings.numberOfStopBits; }
  void setNumberOfStopBits(std::uint64_t count) { change(&LineSettings::numberOfStopBits, count); }
  bool shouldEchoReceivedData() const { return takeover_.settings.shouldEchoReceivedData; }
  void setShouldEchoReceivedData(bool echo) { change(&LineSettings::shouldEchoReceivedData, echo); }
  std::uint64_t parity() const { return takeover_.settings.parity; }
  /// Any value that is no SerialPortParity counts as none.
  void setParity(std::uint64_t parity);

  /// Whether the driver is asked, at the next opening, to hand bytes over without delay. Drivers that know no
  /// such thing are no error. Closing puts back what was there before. False by default.
  bool usesLowLatency() const { return takeover_.settings.usesLowLatency; }
  void setUsesLowLatency(bool use) { takeover_.settings.usesLowLatency = use; }

  /// Flow control; changing one closes an open port and opens it again.
  bool usesRTSCTSFlowControl() const { return takeover_.settings.flowControl.rtsCts; }
  void setUsesRTSCTSFlowControl(bool use) { applyFlowControl(&FlowControl::rtsCts, use); }
  bool usesDTRDSRFlowControl() const { return takeover_.settings.flowControl.dtrDsr; }
  void setUsesDTRDSRFlowControl(bool use) { applyFlowControl(&FlowControl::dtrDsr, use); }
  bool usesDCDOutputFlowControl() const { return takeover_.settings.flowControl.dcdOutput; }
  void setUsesDCDOutputFlowControl(bool use) { applyFlowControl(&FlowControl::dcdOutput, use); }

  /// Output pins as the user wants them; on an open port they act at once.
  bool RTS() const { return RTS_; }
  void setRTS(bool on) { drivePin(RTS_, Pin::rts, on); }
  bool DTR() const { return DTR_; }
  void setDTR(bool on) { drivePin(DTR_, Pin::dtr, on); }
  /// Input pins as last polled.
  bool CTS() const { return CTS_; }
  bool DSR() const { return DSR_; }
  bool DCD() const { return DCD_; }

 protected:
  explicit LineControl(const SerialEnvironment &environment);
  ~LineControl() override = default;

  // Taking a line over: first these steps, one after the other, then the pins.
  using TakeoverStep = CallResult (LineTakeover::*)(int descriptor);
  void take(TakeoverStep step);
  void takeOverPins();
  LineTakeover &takeover() { return takeover_; }

  void showPins(int pins) override;

 private:
  /// Makes the change while the port is closed, and opens it again if it was open.
  virtual void whileClosed(const std::function<void()> &change) = 0;
  virtual void pinChanged(const QString &key) = 0;

  template <typename Value>
  void change(Value LineSettings::*setting, Value value) {
    if (takeover_.settings.*setting == value) return;
    takeover_.settings.*setting = value;
    setPortOptions();
  }
  void setPortOptions() { take(&LineTakeover::applySettings); }
  /// Makes the call if the port is open, and tells the delegate of its failure.
  void onOpenLine(const std::function<CallResult(int descriptor)> &call);
  void applyFlowControl(bool FlowControl::*kind, bool use);
  void drivePin(std::atomic<bool> &stored, int pin, bool on);
  void showPin(std::atomic<bool> &stored, const QString &key, bool on);

  const SerialEnvironment &environment_;
  LineTakeover takeover_;
  std::atomic<bool> RTS_ = false;
  std::atomic<bool> DTR_ = false;
  std::atomic<bool> CTS_ = false;
  std::atomic<bool> DSR_ = false;
  std::atomic<bool> DCD_ = false;
};

}  // namespace tavril
