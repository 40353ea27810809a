#include "tests/protocol/FunctionFixture.h"

namespace tavril {
namespace {

using FunctionCommand = FunctionFixture;

TEST_F(FunctionCommand, CommandsWithoutParametersAreFourBytes) {
  function.Init_Servo();
  function.Release_Servo();
  function.Reboot_Servo();
  function.ResetServotoDefaultSetting();
  function.ReadServoPosition();
  EXPECT_EQ(sender.sent, (std::vector<QByteArray>{transmission("FF0490FE"), transmission("FF0493FE"),
                                                  transmission("FF0494FE"), transmission("FF0495FE"),
                                                  transmission("FF0497FE")}));
}

TEST_F(FunctionCommand, ReadingRegister16SendsItsFrameAndFortyFiveZeroBytes) {
  function.ReadServoSettingValue(16);
  ASSERT_EQ(sender.sent.size(), 1u);
  EXPECT_EQ(sender.sent[0].size(), 50);
  EXPECT_EQ(sender.sent[0].first(5), QByteArray::fromHex("FF059110FE"));
  EXPECT_EQ(sender.sent[0].sliced(5), QByteArray(45, '\0'));
}

TEST_F(FunctionCommand, WritingThreeHundredToRegister8SplitsItHighByteFirst) {
  function.WriteServoSettingValue(8, 300);
  EXPECT_EQ(sender.sent, (std::vector<QByteArray>{transmission("FF079208012CFE")}));
}

TEST_F(FunctionCommand, TheCalibrationAngleIsSignExtended) {
  function.WriteServoSettingValue(15, -10);
  function.WriteServoSettingValue(15, 20);
  function.WriteServoSettingValue(15, 0);
  function.WriteServoSettingValue(15, -1);
  EXPECT_EQ(sender.sent,
            (std::vector<QByteArray>{transmission("FF07920FFFF6FE"), transmission("FF07920F0014FE"),
                                     transmission("FF07920F0000FE"), transmission("FF07920FFFFFFE")}));
}

TEST_F(FunctionCommand, TheCalibrationAngleKeepsItsLowByteWhenItIsTooLarge) {
  function.WriteServoSettingValue(15, 300);
  function.WriteServoSettingValue(15, -300);
  EXPECT_EQ(sender.sent,
            (std::vector<QByteArray>{transmission("FF07920F002CFE"), transmission("FF07920FFFD4FE")}));
}

TEST_F(FunctionCommand, MinusOneInAnyOtherRegisterIsQuotientZeroAndRemainderFF) {
  function.WriteServoSettingValue(5, -1);
  EXPECT_EQ(sender.sent, (std::vector<QByteArray>{transmission("FF07920500FFFE")}));
}

TEST_F(FunctionCommand, ANegativeWordTruncatesTowardZero) {
  function.WriteServoSettingValue(8, -300);  // quotient -1, remainder -44
  EXPECT_EQ(sender.sent, (std::vector<QByteArray>{transmission("FF079208FFD4FE")}));
}

TEST_F(FunctionCommand, Position1023IsSentAs03FF) {
  function.SetServoPosition(1023);
  EXPECT_EQ(sender.sent, (std::vector<QByteArray>{transmission("FF069603FFFE")}));
}

TEST_F(FunctionCommand, PositionBitsAboveFifteenAreDropped) {
  function.SetServoPosition(0x12345);
  function.SetServoPosition(-1);
  EXPECT_EQ(sender.sent,
            (std::vector<QByteArray>{transmission("FF06962345FE"), transmission("FF0696FFFFFE")}));
}

TEST_F(FunctionCommand, ErrorCodes1To3AreSent) {
  for (const int code : {1, 2, 3}) function.ErrorMessageReturn(code);
  EXPECT_EQ(sender.sent, (std::vector<QByteArray>{transmission("FF05F901FE"), transmission("FF05F902FE"),
                                                  transmission("FF05F903FE")}));
}

TEST_F(FunctionCommand, ErrorCode7LeavesItsByteUntouched) {
  function.ErrorMessageReturn(7);
  function.ErrorMessageReturn(0);
  state.SerialCMD[3] = 0x55;
  function.ErrorMessageReturn(-1);
  EXPECT_EQ(sender.sent, (std::vector<QByteArray>{transmission("FF05F900FE"), transmission("FF05F900FE"),
                                                  transmission("FF05F955FE")}));
}

TEST_F(FunctionCommand, AWriteIsTracedWithOneBlankAfterEveryByte) {
  function.WriteServoSettingValue(8, 300);
  EXPECT_EQ(fakes.log.lines(), (QStringList{"CMD=ff 7 92 8 1 2c fe "}));
}

TEST_F(FunctionCommand, OtherCommandsAreNotTracedHere) {
  function.Init_Servo();
  function.ReadServoSettingValue(1);
  function.SetServoPosition(5);
  EXPECT_EQ(fakes.log.lines(), QStringList());
}

TEST_F(FunctionCommand, ReadMotorParameterAccepts1To20AndNothingElse) {
  for (const int number : {-1, 0, 21, 256}) function.ReadMotorParameter(number);
  EXPECT_TRUE(sender.sent.empty());
  for (int number = 1; number <= 20; ++number) function.ReadMotorParameter(number);
  ASSERT_EQ(sender.sent.size(), 20u);
  for (int number = 1; number <= 20; ++number) {
    const QByteArray frame =
        QByteArray::fromHex("FF0591") + static_cast<char>(number) + QByteArray::fromHex("FE");
    EXPECT_EQ(sender.sent[static_cast<std::size_t>(number - 1)].first(5), frame) << number;
  }
}

TEST_F(FunctionCommand, WriteMotorParameterSendsNothingFor16To20) {
  for (const int number : {-1, 0, 16, 17, 18, 19, 20, 21}) function.WriteMotorParameter(number);
  EXPECT_TRUE(sender.sent.empty());
}

TEST_F(FunctionCommand, WriteMotorParameterTakesTheValueFromTheRegistersElement) {
  elements.at("MaxLoad_value").setText("300");
  function.WriteMotorParameter(8);
  elements.at("CalibrationAngle_value").setText("-10");
  function.WriteMotorParameter(15);
  elements.at("ACK_value").setText("no number");
  function.WriteMotorParameter(2);
  EXPECT_EQ(sender.sent,
            (std::vector<QByteArray>{transmission("FF079208012CFE"), transmission("FF07920FFFF6FE"),
                                     transmission("FF0792020000FE")}));
}

TEST_F(FunctionCommand, WriteMotorParameterWritesZeroWithoutAnElement) {
  state.ObjectDictionaryArray.remove("Kp_value");
  function.WriteMotorParameter(9);
  EXPECT_EQ(sender.sent, (std::vector<QByteArray>{transmission("FF0792090000FE")}));
}

}  // namespace
}  // namespace tavril
