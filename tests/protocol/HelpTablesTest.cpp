#include "protocol/HelpTables.h"
#include "protocol/SharedState.h"
#include "tests/support/RecordingLog.h"

#include <gtest/gtest.h>

namespace tavril {
namespace {

class HelpTables : public testing::Test {
 protected:
  HelpTables() { buildHelpTables(state, log); }

  QString text(const char *key) const { return std::get<QString>(state.Msg.value(QString::fromLatin1(key))); }
  QStringList choices(const char *key) const {
    return std::get<QStringList>(state.Msg.value(QString::fromLatin1(key)));
  }

  SharedState state;
  RecordingLog log;
};

TEST_F(HelpTables, KeyHasExactlyFifteenEntriesAndMsgExactlyFifteenKeys) {
  EXPECT_EQ(state.Key, (QStringList{"InitServo", "ACK", "AlarmLED", "TorquPolicy", "MaxTemp", "MinVolt",
                                    "MaxVolt", "MaxLoad", "Kp", "Ki", "Kd", "OverTemp", "OverVolt",
                                    "OverLoad", "CalibrationAngle"}));
  EXPECT_EQ(state.Msg.size(), 15);
  for (const QString &key : state.Key) EXPECT_TRUE(state.Msg.contains(key)) << key.toStdString();
}

TEST_F(HelpTables, RegisterOnesEntryIsThePairOfDetectionMessages) {
  EXPECT_EQ(choices("InitServo"),
            (QStringList{QStringLiteral("系統沒有馬達"), QStringLiteral("系統有兩顆以上的馬達")}));
}

TEST_F(HelpTables, ChoiceRegistersListTheirChoicesByValue) {
  EXPECT_EQ(choices("ACK"),
            (QStringList{"Only STAT command reply", "Only EEPROM/RAM RAED and STAT commands reply",
                         "All commands reply"}));
  EXPECT_EQ(choices("AlarmLED"), (QStringList{"Show System Error Alarm LED", "User Control LED"}));
  EXPECT_EQ(choices("TorquPolicy"),
            (QStringList{"Disable Shut Down Operation",
                         "Shut Down Servo When Voltage/Current/Temperature Is Over The Setting Value"}));
}

TEST_F(HelpTables, TextsStandAsTheSystemHasThem) {
  EXPECT_EQ(text("MaxTemp"),
            "The limitation of Orvane servo operating temperature. The value is in degrees Celsius.");
  EXPECT_EQ(text("MinVolt"), "The minimum value of Orvane servo operating voltage.");
  EXPECT_EQ(text("MaxVolt"), "The maximum value of Orvane servo operating voltage.");
  EXPECT_EQ(text("MaxLoad"), "The max value of Orvane servo operating current.");
  EXPECT_EQ(
      text("Kp"),
      "Servo position control parameter, proportional gain constant Kp. Output torque applied to motor is "
      "adjusted by multiplying Kp and current position error");
  EXPECT_EQ(text("Ki"),
            "Servo position control parameter, integral gain constant Ki. Output torque applied to motor is "
            "adjusted by multiplying Ki and summation of error over operating time.");
  EXPECT_EQ(
      text("OverTemp"),
      "Over temperature error check period. The value is 10ms/Tick. For example, 120 ms is represented as "
      "value 12.");
  EXPECT_EQ(
      text("OverVolt"),
      "Over/under voltage error check period. The value is 10ms/Tick. For example, 120 ms is represented as "
      "value 12.");
  EXPECT_EQ(
      text("OverLoad"),
      "Over current error check period. The value is 10ms/Tick. For example, 120 ms is represented as value "
      "12.");
}

TEST_F(HelpTables, TheKdTextNamesKiAndTheCalibrationTextIsThatOfThePresentCurrent) {
  EXPECT_EQ(
      text("Kd"),
      "Servo position control parameter, derivative gain constant Ki. Output torque applied to motor is "
      "adjusted by multiplying Kd and slope of error over operating time.");
  EXPECT_EQ(text("CalibrationAngle"),
            "This value shows present supplying current. The value is 200 times the actual current.");
}

TEST_F(HelpTables, BuildingThemIsLogged) {
  const QStringList lines = log.lines();
  ASSERT_EQ(lines.size(), 16);
  EXPECT_EQ(lines.first(), "Key count=15");
  EXPECT_EQ(lines.at(1), "i=0,InitServo");
  EXPECT_EQ(lines.last(), "i=14,CalibrationAngle");
}

}  // namespace
}  // namespace tavril
