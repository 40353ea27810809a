#pragma once

#include "simulator/MotionModel.h"
#include "simulator/Registers.h"

#include <array>
#include <chrono>
#include <cstdint>
#include <optional>

namespace tavril::simulator {

/// The servo itself: settings, shaft, supply and heat. Time passes only through advance(). Not thread-safe.
class ServoModel {
 public:
  ServoModel();

  /// The 16 bits of registers 1 to 20 as they go over the wire; nothing for any other number.
  std::optional<std::uint16_t> read(int number) const;
  /// Takes 16 bits from the wire; false when the register cannot be written or the value is out of its range.
  bool write(int number, std::uint16_t value);

  /// Sends the shaft to a goal; false when it is out of range. While the cause of a shut-down lasts, the goal
  /// is taken and dropped; afterwards it ends the shut-down.
  bool setGoal(int position);
  void release();
  /// Keeps the settings and the shaft's place; forgets errors and holds the shaft where it is.
  void reboot();
  /// Restores all fifteen settings, the servo ID included, then reboots.
  void factoryReset();

  /// What the bridge saw go wrong on the wire, for the status register.
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

  /// The surroundings: volts of the idle supply, degrees Celsius of the room, and amperes that an outer load
  /// costs while the shaft is stiff.
  void setSupplyVoltage(double volts) { supplyVoltage_ = volts; }
  void setRoomTemperature(double celsius) { roomTemperature_ = celsius; }
  void setMotorTemperature(double celsius) { temperature_ = celsius; }
  void setOuterLoad(double amperes) { outerLoad_ = amperes; }

 private:
  // A limit counts as passed once it has been exceeded for longer than its check period.
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
  // What the holding current makes of the room's.
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
