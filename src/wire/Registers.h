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
inline constexpr auto registers = std::to_array<Register>({
    {.number = RegisterNumber::ServoId,
     .keys = {u"sid", u"sID_value", u"InitServo", u"sID", u"sid"},
     .range = {0, 253},
     .stage = WriteStage::ServoId,
     .meaning = u"servo ID"},
    {.number = RegisterNumber::AckPolicy,
     .keys = {u"ack_policy", u"ACK_value", u"ACK"},
     .range = rangeOf(ackChoices),
     .choices = ackChoices,
     .stage = WriteStage::ReplyPolicy,
     .meaning = u"which commands the servo answers"},
    {.number = RegisterNumber::AlarmLedPolicy,
     .keys = {u"alarm_led_policy", u"AlarmLED_value", u"AlarmLED"},
     .range = rangeOf(ledChoices),
     .choices = ledChoices,
     .stage = WriteStage::LedPolicy,
     .meaning = u"what the alarm LED shows"},
    {.number = RegisterNumber::TorquePolicy,
     .keys = {u"torque_policy", u"Torque_value", u"TorquPolicy"},
     .range = rangeOf(torqueChoices),
     .choices = torqueChoices,
     .stage = WriteStage::TorquePolicy,
     .meaning = u"what happens when a limit is passed"},
    {.number = RegisterNumber::MaxTemperature,
     .keys = {u"max_tempertaure", u"MaxTemp_value", u"MaxTemp", u"maxTemp", u"maxtemp"},
     .correctName = u"max_temperature",
     .label = u"max_temperature",
     .range = {0, 253},
     .unit = celsius,
     .limited = RegisterNumber::PresentTemperature,
     .meaning = u"highest operating temperature"},
    {.number = RegisterNumber::MinVoltage,
     .keys = {u"min_voltage", u"MinVolt_value", u"MinVolt", u"minVolt", u"minvolt"},
     .label = u"min_volt",
     .range = {0, 253},
     .limited = RegisterNumber::PresentVoltage,
     .isLowest = true,
     .meaning = u"lowest operating voltage"},
    {.number = RegisterNumber::MaxVoltage,
     .keys = {u"max_voltage", u"MaxVolt_value", u"MaxVolt", u"maxVolt", u"maxvolt"},
     .label = u"max_volt",
     .range = {0, 253},
     .limited = RegisterNumber::PresentVoltage,
     .meaning = u"highest operating voltage"},
    {.number = RegisterNumber::MaxLoad,
     .keys = {u"max_load", u"MaxLoad_value", u"MaxLoad", u"maxLoad", u"maxload"},
     .reply = ReplyValue::Word,
     .range = {0, 512},
     .limited = RegisterNumber::PresentLoad,
     .meaning = u"highest operating current"},
    {.number = RegisterNumber::Kp,
     .keys = {u"kp", u"Kp_value", u"Kp", u"kp", u"kp"},
     .reply = ReplyValue::Word,
     .range = {0, 32766},
     .stage = WriteStage::Gain,
     .meaning = u"proportional gain of the position control"},
    {.number = RegisterNumber::Ki,
     .keys = {u"ki", u"Ki_value", u"Ki", u"ki", u"ki"},
     .reply = ReplyValue::Word,
     .range = {0, 32766},
     .stage = WriteStage::Gain,
     .meaning = u"integral gain of the position control"},
    {.number = RegisterNumber::Kd,
     .keys = {u"kd", u"Kd_value", u"Kd", u"kd", u"kd"},
     .reply = ReplyValue::Word,
     .range = {0, 32766},
     .stage = WriteStage::Gain,
     .meaning = u"derivative gain of the position control"},
    {.number = RegisterNumber::OverTemperature,
     .keys = {u"over_temperature", u"OverTemp_value", u"OverTemp", u"overTemp", u"overtemp"},
     .range = {0, 255},
     .unit = checkPeriod,
     .stage = WriteStage::CheckPeriod,
     .meaning = u"check period of the temperature error"},
    {.number = RegisterNumber::OverVoltage,
     .keys = {u"over_voltage", u"OverVolt_value", u"OverVolt", u"overVolt", u"overvolt"},
     .label = u"over_volt",
     .range = {0, 255},
     .unit = checkPeriod,
     .stage = WriteStage::CheckPeriod,
     .meaning = u"check period of the voltage error"},
    {.number = RegisterNumber::OverLoad,
     .keys = {u"over_load", u"OverLoad_value", u"OverLoad", u"overLoad", u"overload"},
     .range = {0, 255},
     .unit = checkPeriod,
     .stage = WriteStage::CheckPeriod,
     .meaning = u"check period of the load error"},
    {.number = RegisterNumber::CalibrationAngle,
     .keys = {u"calibration_angle", u"CalibrationAngle_value", u"CalibrationAngle", u"calibrationAngle",
              u"calangle"},
     .label = u"calibretion_angle",
     .reply = ReplyValue::SignedByte,
     .range = {-20, 20},
     .stage = WriteStage::Calibration,
     .meaning = u"calibration angle"},
    {.number = RegisterNumber::StatusError,
     .keys = {u"status_error", u"StatusError_value"},
     .reply = ReplyValue::ErrorBits,
     .meaning = u"errors, one per bit"},
    {.number = RegisterNumber::StatusDetail,
     .keys = {u"status_detail", u"StatusDetail_value"},
     .reply = ReplyValue::DetailBits,
     .meaning = u"details, one per bit"},
    {.number = RegisterNumber::PresentVoltage,
     .keys = {u"present_voltage", u"PresentVolt_value"},
     .label = u"present_volt",
     .meaning = u"voltage now"},
    {.number = RegisterNumber::PresentTemperature,
     .keys = {u"present_temperature", u"PresentTemp_value"},
     .unit = celsius,
     .meaning = u"temperature now"},
    {.number = RegisterNumber::PresentLoad,
     .keys = {u"present_load", u"PresentLoad_value"},
     .unit = loadNow,
     .meaning = u"current now"},
});

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
static_assert(std::ranges::all_of(settingRegisters,
                                  [](const Register &row) {
                                    return (row.stage == WriteStage::Limit) == (row.limited != 0);
                                  }),
              "a setting is a limit of something, or has another stage");

}  // namespace tavril::wire
