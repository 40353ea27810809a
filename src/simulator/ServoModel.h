#pragma once

#include "simulator/MotionModel.h"
#include "simulator/Registers.h"

#include <array>
#include <chrono>
#include <cstdint>
#include <optional>

namespace tavril::simulator {

/// The servo: settings, shaft, supply and temperature. Time passes only in advance(). Not thread-safe.
class ServoModel {
 public:
  ServoModel();

  /// The 16 bits of registers 1 to 20 as they are on the wire, or nothing for another number.
  std::optional<std::uint16_t> read(int number) const;
  /// Takes 16 bits from the wire. False if the register cannot be written, or the value is out of range.
  bool write(int number, std::uint16_t value);

  /// Sends the shaft to a goal. False if it is out of range. As long as the cause of a shut-down lasts, the
  /// goal has no effect; after that, it ends the shut-down.
  bool setGoal(int position);
  void release();
  /// Keeps the settings, clears the errors, and holds the shaft at its position.
  void reboot();
  /// Restores all fifteen settings, the servo ID included, then reboots.
  void factoryReset();

  /// Errors on the wire, for the status register.
  void notePacketError() { remembered_ |= PacketError; }
  void noteUnknownCommand() { remembered_ |= UnknownCommand; }

  void advance(std::chrono::microseconds elapsed);

  /// Whole counts, 0 to 1023.
  int position() const;
  bool torqueOn() const { return motion_.stiff(); }
  const MotionModel &motion() const { return motion_; }
  /// Volts at the servo, amperes drawn, degrees Celsius of the motor.
  double voltage() const;
  double current() const { return current_; }
  double temperature() const { return temperature_; }
  std::uint8_t statusError() const;
  std::uint8_t statusDetail() const;

  /// The environment: volts of the supply without load, degrees Celsius of the room, and amperes for an
  /// external load while the shaft is stiff.
  void setSupplyVoltage(double volts) { supplyVoltage_ = volts; }
  void setRoomTemperature(double celsius) { roomTemperature_ = celsius; }
  void setMotorTemperature(double celsius) { temperature_ = celsius; }
  void setOuterLoad(double amperes) { outerLoad_ = amperes; }

 private:
  // A limit is passed when it has been exceeded for longer than its check period.
  struct Limit {
    std::chrono::microseconds exceeded{0};
    bool passed = false;
    void check(bool exceedsNow, std::chrono::microseconds step, int periodTicks);
  };

  int setting(int number) const { return settings_[static_cast<std::size_t>(number) - 1]; }
  void step(std::chrono::microseconds step);
  void checkLimits(std::chrono::microseconds step);
  double currentNow() const;
  bool anyLimitPassed() const {
    return voltageLimit_.passed || temperatureLimit_.passed || loadLimit_.passed;
  }

  std::array<int, registers::settingCount> settings_{};
  MotionModel motion_;
  double supplyVoltage_ = 7.4;
  double roomTemperature_ = 26.5;
  // The room's temperature, raised by the holding current.
  double temperature_ = 27.05;
  double outerLoad_ = 0.0;
  double current_ = 0.0;
  Limit voltageLimit_;
  Limit temperatureLimit_;
  Limit loadLimit_;
  std::uint8_t remembered_ = 0;
  bool shutDown_ = false;
  std::chrono::microseconds untilStep_{0};
};

}  // namespace tavril::simulator
