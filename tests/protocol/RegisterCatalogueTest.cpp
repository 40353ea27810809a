#include "protocol/RegisterCatalogue.h"

#include <QSet>

#include <gtest/gtest.h>

namespace tavril {
namespace {

struct Expected {
  int number;
  const char *help;
  const char *value;
  const char *entry;
  const char *name;
  const char *toolTip;
  const char *notice;
};

constexpr Expected expected[] = {
    {1, "InitServo", "sID_value", "sID", "sid", "ToolTip_sid", "NoticeMsg_sid"},
    {2, "ACK", "ACK_value", "", "ack_policy", "ToolTip_ack_policy", "NoticeMsg_ack_policy"},
    {3, "AlarmLED", "AlarmLED_value", "", "alarm_led_policy", "ToolTip_alarm_led_policy",
     "NoticeMsg_alarm_led_policy"},
    {4, "TorquPolicy", "Torque_value", "", "torque_policy", "ToolTip_torque_policy",
     "NoticeMsg_torque_policy"},
    {5, "MaxTemp", "MaxTemp_value", "maxTemp", "max_tempertaure", "ToolTip_max_tempertaure",
     "NoticeMsg_max_tempertaure"},
    {6, "MinVolt", "MinVolt_value", "minVolt", "min_voltage", "ToolTip_min_voltage", "NoticeMsg_min_voltage"},
    {7, "MaxVolt", "MaxVolt_value", "maxVolt", "max_voltage", "ToolTip_max_voltage", "NoticeMsg_max_voltage"},
    {8, "MaxLoad", "MaxLoad_value", "maxLoad", "max_load", "ToolTip_max_load", "NoticeMsg_max_load"},
    {9, "Kp", "Kp_value", "kp", "kp", "ToolTip_kp", "NoticeMsg_kp"},
    {10, "Ki", "Ki_value", "ki", "ki", "ToolTip_ki", "NoticeMsg_ki"},
    {11, "Kd", "Kd_value", "kd", "kd", "ToolTip_kd", "NoticeMsg_kd"},
    {12, "OverTemp", "OverTemp_value", "overTemp", "over_temperature", "ToolTip_over_temperature",
     "NoticeMsg_over_temperature"},
    {13, "OverVolt", "OverVolt_value", "overVolt", "over_voltage", "ToolTip_over_voltage",
     "NoticeMsg_over_voltage"},
    {14, "OverLoad", "OverLoad_value", "overLoad", "over_load", "ToolTip_over_load", "NoticeMsg_over_load"},
    {15, "CalibrationAngle", "CalibrationAngle_value", "calibrationAngle", "calibration_angle",
     "ToolTip_calibration_angle", "NoticeMsg_calibration_angle"},
    {16, "", "StatusError_value", "", "status_error", "", "NoticeMsg_status_error"},
    {17, "", "StatusDetail_value", "", "status_detail", "", "NoticeMsg_status_detail"},
    {18, "", "PresentVolt_value", "", "present_voltage", "", "NoticeMsg_present_voltage"},
    {19, "", "PresentTemp_value", "", "present_temperature", "", "NoticeMsg_present_temperature"},
    {20, "", "PresentLoad_value", "", "present_load", "", "NoticeMsg_present_load"},
};

TEST(RegisterCatalogue, HoldsEveryRegisterWithItsKeys) {
  ASSERT_EQ(registerCatalogue().size(), std::size(expected));
  for (const Expected &row : expected) {
    const RegisterRow *found = findRegister(row.number);
    ASSERT_NE(found, nullptr) << row.number;
    EXPECT_EQ(found->number, row.number);
    EXPECT_EQ(found->helpKey, QString::fromLatin1(row.help));
    EXPECT_EQ(found->valueKey, QString::fromLatin1(row.value));
    EXPECT_EQ(found->entryKey, QString::fromLatin1(row.entry));
    EXPECT_EQ(found->nameKey, QString::fromLatin1(row.name));
    EXPECT_EQ(found->toolTipKey(), QString::fromLatin1(row.toolTip));
    EXPECT_EQ(found->noticeKey(), QString::fromLatin1(row.notice));
  }
}

TEST(RegisterCatalogue, KnowsNoOtherNumber) {
  for (const int number : {-1, 0, 21, 255}) EXPECT_EQ(findRegister(number), nullptr) << number;
}

TEST(RegisterCatalogue, FifteenRegistersCanBeWritten) {
  EXPECT_EQ(settingRegisters().size(), 15u);
  EXPECT_TRUE(findRegister(15)->isSetting());
  EXPECT_FALSE(findRegister(16)->isSetting());
}

TEST(RegisterCatalogue, NoKeyStandsTwice) {
  QSet<QString> values;
  QSet<QString> names;
  for (const RegisterRow &row : registerCatalogue()) {
    values.insert(row.valueKey.toString());
    names.insert(row.nameKey.toString());
  }
  EXPECT_EQ(values.size(), 20);
  EXPECT_EQ(names.size(), 20);
}

}  // namespace
}  // namespace tavril
