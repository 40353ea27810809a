#pragma once

#include "serial/LineSettings.h"
#include "serial/PortLine.h"

#include <QString>

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>

namespace tavril {

struct SerialEnvironment;

/// The settings and pins of a port's line: what the user wants, how that gets onto the line while the port is
/// open, and how the line becomes again what it was before.
class LineControl : protected PortLine {
 public:
  LineControl(const LineControl &) = delete;
  LineControl &operator=(const LineControl &) = delete;

  /// Line settings; on an open port they act at once. Every setBaudRate() counts as a change.
  unsigned long baudRate() const { return settings_.baudRate; }
  void setBaudRate(unsigned long baudRate);
  bool allowsNonStandardBaudRates() const { return settings_.allowsNonStandardBaudRates; }
  void setAllowsNonStandardBaudRates(bool allow) { settings_.allowsNonStandardBaudRates = allow; }
  std::uint64_t numberOfStopBits() const { return settings_.numberOfStopBits; }
  void setNumberOfStopBits(std::uint64_t count) { change(&LineSettings::numberOfStopBits, count); }
  bool shouldEchoReceivedData() const { return settings_.shouldEchoReceivedData; }
  void setShouldEchoReceivedData(bool echo) { change(&LineSettings::shouldEchoReceivedData, echo); }
  std::uint64_t parity() const { return settings_.parity; }
  /// Any value that is no SerialPortParity counts as none.
  void setParity(std::uint64_t parity);

  /// Whether the driver is asked, at the next opening, to hand bytes over without delay. Drivers that know no
  /// such thing are no error. Closing puts back what was there before. False by default.
  bool usesLowLatency() const { return usesLowLatency_; }
  void setUsesLowLatency(bool use) { usesLowLatency_ = use; }

  /// Flow control; changing one closes an open port and opens it again.
  bool usesRTSCTSFlowControl() const { return settings_.flowControl.rtsCts; }
  void setUsesRTSCTSFlowControl(bool use) { applyFlowControl(&FlowControl::rtsCts, use); }
  bool usesDTRDSRFlowControl() const { return settings_.flowControl.dtrDsr; }
  void setUsesDTRDSRFlowControl(bool use) { applyFlowControl(&FlowControl::dtrDsr, use); }
  bool usesDCDOutputFlowControl() const { return settings_.flowControl.dcdOutput; }
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
  ~LineControl() override;

  /// The line has been opened anew: what is known of it was true of the opening before.
  void forgetLine();
  // The steps of taking a line over, in their order.
  void keepOriginalAttributes();
  void setPortOptions();
  void takeLowLatency();
  void takeOverPins();
  /// Makes the line what it was before. Waits for its output.
  void restoreLine(int descriptor);

  void showPins(int pins) override;

 private:
  /// Makes the change while the port is closed, and opens it again if it was open.
  virtual void whileClosed(const std::function<void()> &change) = 0;
  virtual void pinChanged(const QString &key) = 0;

  template <typename Value>
  void change(Value LineSettings::*setting, Value value) {
    if (settings_.*setting == value) return;
    settings_.*setting = value;
    setPortOptions();
  }
  void applyFlowControl(bool FlowControl::*kind, bool use);
  void drivePin(std::atomic<bool> &stored, int pin, bool on);
  void showPin(std::atomic<bool> &stored, const QString &key, bool on);

  const SerialEnvironment &environment_;
  LineSettings settings_;
  bool usesLowLatency_ = false;
  std::atomic<bool> RTS_ = false;
  std::atomic<bool> DTR_ = false;
  std::atomic<bool> CTS_ = false;
  std::atomic<bool> DSR_ = false;
  std::atomic<bool> DCD_ = false;

  std::unique_ptr<termios> originalPortAttributes_;  // nothing when they could not be read
  bool hasTakenLowLatency_ = false;                  // and it was off before
};

}  // namespace tavril
