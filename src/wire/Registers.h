#pragma once

#include "wire/Register.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <span>
#include <string_view>

namespace tavril::wire {

/// For code that means one certain register.
struct RegisterNumber {
  enum : int {
    ServoId = 1,
    AckPolicy,
    AlarmLedPolicy,
    TorquePolicy,
    MaxTemperature,
    MinVoltage,
    MaxVoltage,
    MaxLoad,
    Kp,
    Ki,
    Kd,
    OverTemperature,
    OverVoltage,
    OverLoad,
    CalibrationAngle,
    StatusError,
    StatusDetail,
    PresentVoltage,
    PresentTemperature,
    PresentLoad,
  };
};

inline constexpr Unit celsius{u"°C", u"°C", 1.0};
inline constexpr Unit checkPeriod{u"10 ms", u"ms", 0.1};
inline constexpr Unit loadNow{u"1/200 A", u"A", 200.0};

inline constexpr std::array<std::u16string_view, 3> ackChoices{
    u"answers status commands only", u"answers status and read commands", u"answers all commands"};
inline constexpr std::array<std::u16string_view, 2> ledChoices{u"LED shows system errors",
                                                               u"LED shows what the user sets"};
inline constexpr std::array<std::u16string_view, 2> torqueChoices{u"keeps the torque when a limit is passed",
                                                                  u"shuts down when a limit is passed"};
constexpr Range rangeOf(Choices choices) {
  return {0, static_cast<int>(choices.size()) - 1};
}

/// The one table of registers. Everything else that is said of a register follows from its row.
// Kept: C1. Kept: C23. Kept: C58.
inline constexpr std::array<Register, 20> registers{{
    {.number = RegisterNumber::ServoId,
     .nameKey = u"sid",
     .label = u"sid",
     .valueKey = u"sID_value",
     .helpKey = u"InitServo",
     .entryKey = u"sID",
     .identifier = u"sid",
     .range = {0, 253},
     .stage = WriteStage::ServoId,
     .meaning = u"servo ID"},
    {.number = RegisterNumber::AckPolicy,
     .nameKey = u"ack_policy",
     .label = u"ack_policy",
     .valueKey = u"ACK_value",
     .helpKey = u"ACK",
     .range = rangeOf(ackChoices),
     .choices = ackChoices,
     .stage = WriteStage::ReplyPolicy,
     .meaning = u"which commands the servo answers"},
    {.number = RegisterNumber::AlarmLedPolicy,
     .nameKey = u"alarm_led_policy",
     .label = u"alarm_led_policy",
     .valueKey = u"AlarmLED_value",
     .helpKey = u"AlarmLED",
     .range = rangeOf(ledChoices),
     .choices = ledChoices,
     .stage = WriteStage::LedPolicy,
     .meaning = u"what the alarm LED shows"},
    {.number = RegisterNumber::TorquePolicy,
     .nameKey = u"torque_policy",
     .label = u"torque_policy",
     .valueKey = u"Torque_value",
     .helpKey = u"TorquPolicy",
     .range = rangeOf(torqueChoices),
     .choices = torqueChoices,
     .stage = WriteStage::TorquePolicy,
     .meaning = u"what happens when a limit is passed"},
    {.number = RegisterNumber::MaxTemperature,
     .nameKey = u"max_tempertaure",
     .correctKey = u"max_temperature",
     .label = u"max_temperature",
     .valueKey = u"MaxTemp_value",
     .helpKey = u"MaxTemp",
     .entryKey = u"maxTemp",
     .identifier = u"maxtemp",
     .range = {0, 253},
     .unit = celsius,
     .limited = RegisterNumber::PresentTemperature,
     .meaning = u"highest operating temperature"},
    {.number = RegisterNumber::MinVoltage,
     .nameKey = u"min_voltage",
     .label = u"min_volt",
     .valueKey = u"MinVolt_value",
     .helpKey = u"MinVolt",
     .entryKey = u"minVolt",
     .identifier = u"minvolt",
     .range = {0, 253},
     .limited = RegisterNumber::PresentVoltage,
     .isLowest = true,
     .meaning = u"lowest operating voltage"},
    {.number = RegisterNumber::MaxVoltage,
     .nameKey = u"max_voltage",
     .label = u"max_volt",
     .valueKey = u"MaxVolt_value",
     .helpKey = u"MaxVolt",
     .entryKey = u"maxVolt",
     .identifier = u"maxvolt",
     .range = {0, 253},
     .limited = RegisterNumber::PresentVoltage,
     .meaning = u"highest operating voltage"},
    {.number = RegisterNumber::MaxLoad,
     .nameKey = u"max_load",
     .label = u"max_load",
     .valueKey = u"MaxLoad_value",
     .helpKey = u"MaxLoad",
     .entryKey = u"maxLoad",
     .identifier = u"maxload",
     .reply = ReplyValue::Word,
     .range = {0, 512},
     .limited = RegisterNumber::PresentLoad,
     .meaning = u"highest operating current"},
    {.number = RegisterNumber::Kp,
     .nameKey = u"kp",
     .label = u"kp",
     .valueKey = u"Kp_value",
     .helpKey = u"Kp",
     .entryKey = u"kp",
     .identifier = u"kp",
     .reply = ReplyValue::Word,
     .range = {0, 32766},
     .stage = WriteStage::Gain,
     .meaning = u"proportional gain of the position control"},
    {.number = RegisterNumber::Ki,
     .nameKey = u"ki",
     .label = u"ki",
     .valueKey = u"Ki_value",
     .helpKey = u"Ki",
     .entryKey = u"ki",
     .identifier = u"ki",
     .reply = ReplyValue::Word,
     .range = {0, 32766},
     .stage = WriteStage::Gain,
     .meaning = u"integral gain of the position control"},
    {.number = RegisterNumber::Kd,
     .nameKey = u"kd",
     .label = u"kd",
     .valueKey = u"Kd_value",
     .helpKey = u"Kd",
     .entryKey = u"kd",
     .identifier = u"kd",
     .reply = ReplyValue::Word,
     .range = {0, 32766},
     .stage = WriteStage::Gain,
     .meaning = u"derivative gain of the position control"},
    {.number = RegisterNumber::OverTemperature,
     .nameKey = u"over_temperature",
     .label = u"over_temperature",
     .valueKey = u"OverTemp_value",
     .helpKey = u"OverTemp",
     .entryKey = u"overTemp",
     .identifier = u"overtemp",
     .range = {0, 255},
     .unit = checkPeriod,
     .stage = WriteStage::CheckPeriod,
     .meaning = u"check period of the temperature error"},
    {.number = RegisterNumber::OverVoltage,
     .nameKey = u"over_voltage",
     .label = u"over_volt",
     .valueKey = u"OverVolt_value",
     .helpKey = u"OverVolt",
     .entryKey = u"overVolt",
     .identifier = u"overvolt",
     .range = {0, 255},
     .unit = checkPeriod,
     .stage = WriteStage::CheckPeriod,
     .meaning = u"check period of the voltage error"},
    {.number = RegisterNumber::OverLoad,
     .nameKey = u"over_load",
     .label = u"over_load",
     .valueKey = u"OverLoad_value",
     .helpKey = u"OverLoad",
     .entryKey = u"overLoad",
     .identifier = u"overload",
     .range = {0, 255},
     .unit = checkPeriod,
     .stage = WriteStage::CheckPeriod,
     .meaning = u"check period of the load error"},
    {.number = RegisterNumber::CalibrationAngle,
     .nameKey = u"calibration_angle",
     .label = u"calibretion_angle",
     .valueKey = u"CalibrationAngle_value",
     .helpKey = u"CalibrationAngle",
     .entryKey = u"calibrationAngle",
     .identifier = u"calangle",
     .reply = ReplyValue::SignedByte,
     .range = {-20, 20},
     .stage = WriteStage::Calibration,
     .meaning = u"calibration angle"},
    {.number = RegisterNumber::StatusError,
     .nameKey = u"status_error",
     .label = u"status_error",
     .valueKey = u"StatusError_value",
     .reply = ReplyValue::ErrorBits,
     .meaning = u"errors, one per bit"},
    {.number = RegisterNumber::StatusDetail,
     .nameKey = u"status_detail",
     .label = u"status_detail",
     .valueKey = u"StatusDetail_value",
     .reply = ReplyValue::DetailBits,
     .meaning = u"details, one per bit"},
    {.number = RegisterNumber::PresentVoltage,
     .nameKey = u"present_voltage",
     .label = u"present_volt",
     .valueKey = u"PresentVolt_value",
     .meaning = u"voltage now"},
    {.number = RegisterNumber::PresentTemperature,
     .nameKey = u"present_temperature",
     .label = u"present_temperature",
     .valueKey = u"PresentTemp_value",
     .unit = celsius,
     .meaning = u"temperature now"},
    {.number = RegisterNumber::PresentLoad,
     .nameKey = u"present_load",
     .label = u"present_load",
     .valueKey = u"PresentLoad_value",
     .unit = loadNow,
     .meaning = u"current now"},
}};

inline constexpr int registerCount = registers.size();
inline constexpr int settingCount = static_cast<int>(std::ranges::count_if(registers, &Register::isSetting));

/// Those that can be written, and those that the servo measures.
inline constexpr std::span settingRegisters = std::span(registers).first<settingCount>();
inline constexpr std::span measuredRegisters = std::span(registers).last<registerCount - settingCount>();

/// The row of a register, or nothing.
constexpr const Register *findRegister(int number) {
  const auto *row = std::ranges::find(registers, number, &Register::number);
  return row == registers.end() ? nullptr : row;
}

constexpr bool isInOrder() {
  for (int number = 1; number <= registerCount; ++number) {
    if (findRegister(number) != &registers[static_cast<std::size_t>(number) - 1]) return false;
  }
  return std::ranges::is_partitioned(registers, &Register::isSetting);
}
static_assert(isInOrder(), "the row at index i is register i + 1, and the settings come first");

}  // namespace tavril::wire
