#pragma once

#include <array>
#include <cstdint>

/// The registers of the virtual servo.
namespace tavril::simulator::registers {

inline constexpr int servoId = 1;
/// Which commands are answered, if Options::obeysReplyPolicy; otherwise kept without effect.
inline constexpr int replyPolicy = 2;
inline constexpr int alarmLed = 3;
/// 1 switches the torque off when a limit has been passed, 0 only tells.
inline constexpr int torquePolicy = 4;
/// Degrees Celsius.
inline constexpr int maxTemperature = 5;
/// Tenths of a volt.
inline constexpr int minVoltage = 6;
inline constexpr int maxVoltage = 7;
/// Supply current in units of 5 mA.
inline constexpr int maxLoad = 8;
/// Position gains: kept, without effect on the motion model.
inline constexpr int kp = 9;
inline constexpr int ki = 10;
inline constexpr int kd = 11;
/// How long a limit must be passed before it counts, in ticks of 10 ms.
inline constexpr int temperaturePeriod = 12;
inline constexpr int voltagePeriod = 13;
inline constexpr int loadPeriod = 14;
/// Signed. Positions on the wire are already corrected by it.
inline constexpr int calibrationAngle = 15;
inline constexpr int statusError = 16;
inline constexpr int statusDetail = 17;
inline constexpr int presentVoltage = 18;
inline constexpr int presentTemperature = 19;
inline constexpr int presentLoad = 20;

inline constexpr int settingCount = 15;
inline constexpr int lastRegister = 20;

struct SettingRow {
  int lowest;
  int highest;
  int factory;
  const char *key;  ///< its name in files, the same as that of `tavrilctl dump`
};

/// Range, factory value and name of registers 1 to 15, in their order.
inline constexpr std::array<SettingRow, settingCount> settings{{
    {0, 253, 1, "sid"},
    {0, 2, 2, "ack_policy"},
    {0, 1, 0, "alarm_led_policy"},
    {0, 1, 1, "torque_policy"},
    {0, 253, 80, "max_tempertaure"},
    {0, 253, 60, "min_voltage"},
    {0, 253, 84, "max_voltage"},
    {0, 512, 400, "max_load"},
    {0, 32766, 440, "kp"},
    {0, 32766, 10, "ki"},
    {0, 32766, 8000, "kd"},
    {0, 255, 12, "over_temperature"},
    {0, 255, 20, "over_voltage"},
    {0, 255, 30, "over_load"},
    {-20, 20, 0, "calibration_angle"},
}};

}  // namespace tavril::simulator::registers

namespace tavril::simulator {

/// Bits of register 16. The bits of limits last as long as their causes; those of refused commands until the
/// servo is restarted.
enum StatusError : std::uint8_t {
  VoltageOutOfRange = 0x01,
  PositionOverRange = 0x02,  ///< the last goal was refused; the next good one clears it
  OverTemperature = 0x04,
  OverLoad = 0x08,
  // 0x10 is not used.
  PacketError = 0x20,
  UnknownCommand = 0x40,
  ShutDown = 0x80,  ///< a limit has switched the torque off
};

/// Bits of register 17; the lower four are not used.
enum StatusDetail : std::uint8_t {
  Moving = 0x10,
  InPosition = 0x20,  ///< stiff and at rest at the goal
  TorqueOff = 0x40,   ///< by a release or by a shut-down; the torque policy tells what to make of it
  VoltageTooLow = 0x80,
};

}  // namespace tavril::simulator
