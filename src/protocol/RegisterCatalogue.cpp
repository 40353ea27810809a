#include "protocol/RegisterCatalogue.h"

namespace tavril {

namespace {

// Kept: C1.
constexpr std::array<RegisterRow, registerCount> rows{{
    {1, u"InitServo", u"sID_value", u"sID", u"sid", ReplyValue::Byte},
    {2, u"ACK", u"ACK_value", u"", u"ack_policy", ReplyValue::Byte},
    {3, u"AlarmLED", u"AlarmLED_value", u"", u"alarm_led_policy", ReplyValue::Byte},
    {4, u"TorquPolicy", u"Torque_value", u"", u"torque_policy", ReplyValue::Byte},
    {5, u"MaxTemp", u"MaxTemp_value", u"maxTemp", u"max_tempertaure", ReplyValue::Byte},
    {6, u"MinVolt", u"MinVolt_value", u"minVolt", u"min_voltage", ReplyValue::Byte},
    {7, u"MaxVolt", u"MaxVolt_value", u"maxVolt", u"max_voltage", ReplyValue::Byte},
    {8, u"MaxLoad", u"MaxLoad_value", u"maxLoad", u"max_load", ReplyValue::Word},
    {9, u"Kp", u"Kp_value", u"kp", u"kp", ReplyValue::Word},
    {10, u"Ki", u"Ki_value", u"ki", u"ki", ReplyValue::Word},
    {11, u"Kd", u"Kd_value", u"kd", u"kd", ReplyValue::Word},
    {12, u"OverTemp", u"OverTemp_value", u"overTemp", u"over_temperature", ReplyValue::Byte},
    {13, u"OverVolt", u"OverVolt_value", u"overVolt", u"over_voltage", ReplyValue::Byte},
    {14, u"OverLoad", u"OverLoad_value", u"overLoad", u"over_load", ReplyValue::Byte},
    {15, u"CalibrationAngle", u"CalibrationAngle_value", u"calibrationAngle", u"calibration_angle",
     ReplyValue::SignedByte},
    {16, u"", u"StatusError_value", u"", u"status_error", ReplyValue::ErrorBits},
    {17, u"", u"StatusDetail_value", u"", u"status_detail", ReplyValue::DetailBits},
    {18, u"", u"PresentVolt_value", u"", u"present_voltage", ReplyValue::Byte},
    {19, u"", u"PresentTemp_value", u"", u"present_temperature", ReplyValue::Byte},
    {20, u"", u"PresentLoad_value", u"", u"present_load", ReplyValue::Byte},
}};

constexpr bool numbersAreInOrder() {
  for (std::size_t i = 0; i < rows.size(); ++i) {
    if (rows[i].number != static_cast<int>(i) + 1) return false;
    if (rows[i].isSetting() != (rows[i].number <= settingCount)) return false;
  }
  return true;
}
static_assert(numbersAreInOrder());

}  // namespace

QString RegisterRow::toolTipKey() const {
  return isSetting() ? QStringLiteral("ToolTip_") + nameKey.toString() : QString();
}

QString RegisterRow::noticeKey() const {
  return QStringLiteral("NoticeMsg_") + nameKey.toString();
}

std::span<const RegisterRow, registerCount> registerCatalogue() {
  return rows;
}

std::span<const RegisterRow, settingCount> settingRegisters() {
  return std::span(rows).first<settingCount>();
}

const RegisterRow *findRegister(int number) {
  if (number < 1 || number > registerCount) return nullptr;
  return &rows[static_cast<std::size_t>(number) - 1];
}

}  // namespace tavril
