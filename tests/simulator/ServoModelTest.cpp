#include "simulator/ServoModel.h"

#include <gtest/gtest.h>

#include <vector>

namespace tavril::simulator {
namespace {

using namespace std::chrono_literals;

std::vector<int> settingsOf(const ServoModel &servo) {
  std::vector<int> values;
  for (int number = 1; number <= 15; ++number) values.push_back(servo.read(number).value());
  return values;
}

const std::vector<int> factory{1, 2, 0, 1, 80, 60, 84, 400, 440, 10, 8000, 12, 20, 30, 0};

TEST(ServoModel, ComesWithItsFactoryValues) {
  EXPECT_EQ(settingsOf(ServoModel()), factory);
}

TEST(ServoModel, KnowsNoRegistersBesideTheTwenty) {
  const ServoModel servo;
  EXPECT_FALSE(servo.read(0));
  EXPECT_TRUE(servo.read(1));
  EXPECT_TRUE(servo.read(20));
  EXPECT_FALSE(servo.read(21));
  EXPECT_FALSE(servo.read(255));
}

TEST(ServoModel, RestsWithoutErrorsInPosition) {
  ServoModel servo;
  servo.advance(5min);
  EXPECT_EQ(servo.read(16), 0x00);
  EXPECT_EQ(servo.read(17), 0x20);
  EXPECT_EQ(servo.read(18), 74);
  EXPECT_EQ(servo.read(19), 27);
  EXPECT_EQ(servo.read(20), 20);
  EXPECT_EQ(servo.position(), 512);
}

struct Range {
  int number;
  int lowest;
  int highest;
};

class ServoModelRange : public testing::TestWithParam<Range> {};

TEST_P(ServoModelRange, TakesItsBoundsAndRefusesWhatIsBeyond) {
  const auto [number, lowest, highest] = GetParam();
  ServoModel servo;
  const auto raw = [](int value) { return static_cast<std::uint16_t>(value); };
  EXPECT_TRUE(servo.write(number, raw(lowest)));
  EXPECT_EQ(servo.read(number), raw(lowest));
  EXPECT_TRUE(servo.write(number, raw(highest)));
  EXPECT_EQ(servo.read(number), raw(highest));
  EXPECT_FALSE(servo.write(number, raw(highest + 1)));
  EXPECT_FALSE(servo.write(number, raw(lowest - 1)));
  EXPECT_EQ(servo.read(number), raw(highest));
}

INSTANTIATE_TEST_SUITE_P(Settings, ServoModelRange,
                         testing::Values(Range{1, 0, 253}, Range{2, 0, 2}, Range{3, 0, 1}, Range{4, 0, 1},
                                         Range{5, 0, 253}, Range{6, 0, 253}, Range{7, 0, 253},
                                         Range{8, 0, 512}, Range{9, 0, 32766}, Range{10, 0, 32766},
                                         Range{11, 0, 32766}, Range{12, 0, 255}, Range{13, 0, 255},
                                         Range{14, 0, 255}, Range{15, -20, 20}));

TEST(ServoModel, TheCalibrationAngleIsSignedOnTheWire) {
  ServoModel servo;
  EXPECT_TRUE(servo.write(15, 0xFFF6));
  EXPECT_EQ(servo.read(15), 0xFFF6);
  EXPECT_FALSE(servo.write(15, 0x00F6)) << "246 without its sign is out of range";
}

TEST(ServoModel, StatusRegistersCannotBeWritten) {
  ServoModel servo;
  for (int number = 16; number <= 20; ++number) EXPECT_FALSE(servo.write(number, 0)) << number;
  EXPECT_FALSE(servo.write(0, 0));
  EXPECT_FALSE(servo.write(21, 0));
}

TEST(ServoModel, MotionDrawsCurrentSagsTheVoltageAndWarmsTheMotor) {
  ServoModel servo;
  servo.advance(10ms);
  const double restVoltage = servo.voltage();
  const double restCurrent = servo.current();
  for (int i = 0; i < 20; ++i) {
    ASSERT_TRUE(servo.setGoal(i % 2 == 0 ? 1023 : 0));
    servo.advance(100ms);
    EXPECT_EQ(servo.read(17), 0x10) << "moving and not in position";
    EXPECT_GT(servo.current(), 3 * restCurrent);
    EXPECT_LT(servo.voltage(), restVoltage);
    servo.advance(1900ms);
  }
  const double warm = servo.temperature();
  EXPECT_GT(warm, 28.0);
  EXPECT_LT(warm, 60.0);
  EXPECT_EQ(servo.read(16), 0x00) << "ordinary work passes no limit";
  servo.advance(3min);
  EXPECT_LT(servo.temperature(), warm);
  EXPECT_EQ(servo.voltage(), restVoltage);
}

TEST(ServoModel, TheOutcomeDoesNotDependOnHowTimeIsHandedIn) {
  ServoModel inOne;
  ServoModel inBits;
  inOne.setGoal(900);
  inBits.setGoal(900);
  inOne.advance(210ms);
  for (int i = 0; i < 700; ++i) inBits.advance(300us);
  EXPECT_EQ(inOne.motion().position(), inBits.motion().position());
  EXPECT_EQ(inOne.temperature(), inBits.temperature());
}

TEST(ServoModel, ALongRestIsWorthTenMinutes) {
  ServoModel servo;
  servo.setMotorTemperature(70.0);
  servo.advance(24h);
  EXPECT_EQ(servo.read(19), 27);
}

TEST(ServoModel, PresentValuesStayInOneByte) {
  ServoModel servo;
  servo.setOuterLoad(2.0);
  servo.setSupplyVoltage(40.0);
  servo.setMotorTemperature(300.0);
  servo.advance(1ms);
  EXPECT_EQ(servo.read(18), 255);
  EXPECT_EQ(servo.read(19), 255);
  EXPECT_EQ(servo.read(20), 255);
}

TEST(ServoModel, ReleasedItIsLimpUntilTheNextGoal) {
  ServoModel servo;
  servo.release();
  servo.advance(100ms);
  EXPECT_EQ(servo.read(17), 0x40);
  EXPECT_EQ(servo.read(16), 0x00);
  EXPECT_EQ(servo.position(), 512);
  ASSERT_TRUE(servo.setGoal(600));
  servo.advance(2s);
  EXPECT_EQ(servo.read(17), 0x20);
  EXPECT_EQ(servo.position(), 600);
}

TEST(ServoModel, AGoalOutOfRangeIsRefusedAndRememberedUntilAGoodOne) {
  ServoModel servo;
  EXPECT_FALSE(servo.setGoal(1024));
  EXPECT_FALSE(servo.setGoal(-1));
  servo.advance(1s);
  EXPECT_EQ(servo.read(16), 0x02);
  EXPECT_EQ(servo.position(), 512);
  EXPECT_TRUE(servo.setGoal(1023));
  EXPECT_EQ(servo.read(16), 0x00);
}

TEST(ServoModel, RefusedPacketsAreRememberedUntilTheReboot) {
  ServoModel servo;
  servo.notePacketError();
  EXPECT_EQ(servo.read(16), 0x20);
  servo.noteUnknownCommand();
  EXPECT_EQ(servo.read(16), 0x60);
  servo.reboot();
  EXPECT_EQ(servo.read(16), 0x00);
}

// Each limit, with the torque policy that only tells.

TEST(ServoModel, OverTemperatureCountsAfterItsCheckPeriod) {
  ServoModel servo;
  ASSERT_TRUE(servo.write(4, 0));
  servo.setRoomTemperature(90.0);
  servo.setMotorTemperature(90.0);
  servo.advance(120ms);
  EXPECT_EQ(servo.read(16), 0x00);
  servo.advance(1ms);
  EXPECT_EQ(servo.read(16), 0x04);
  EXPECT_TRUE(servo.torqueOn());
  servo.setMotorTemperature(50.0);
  servo.setRoomTemperature(27.0);
  servo.advance(1ms);
  EXPECT_EQ(servo.read(16), 0x00);
}

TEST(ServoModel, UnderVoltageCountsAfterItsCheckPeriodAndShowsInTheDetail) {
  ServoModel servo;
  ASSERT_TRUE(servo.write(4, 0));
  servo.setSupplyVoltage(5.0);
  servo.advance(200ms);
  EXPECT_EQ(servo.read(16), 0x00);
  EXPECT_EQ(servo.read(17), 0xA0);
  servo.advance(1ms);
  EXPECT_EQ(servo.read(16), 0x01);
}

TEST(ServoModel, OverVoltageCountsAfterItsCheckPeriod) {
  ServoModel servo;
  ASSERT_TRUE(servo.write(4, 0));
  ASSERT_TRUE(servo.write(13, 3));
  servo.setSupplyVoltage(9.0);
  servo.advance(30ms);
  EXPECT_EQ(servo.read(16), 0x00);
  servo.advance(1ms);
  EXPECT_EQ(servo.read(16), 0x01);
  EXPECT_EQ(servo.read(17), 0x20);
}

TEST(ServoModel, OverLoadCountsAfterItsCheckPeriod) {
  ServoModel servo;
  ASSERT_TRUE(servo.write(4, 0));
  servo.setOuterLoad(2.1);
  servo.advance(300ms);
  EXPECT_EQ(servo.read(16), 0x00);
  servo.advance(1ms);
  EXPECT_EQ(servo.read(16), 0x08);
}

TEST(ServoModel, AnExcessThatEndsInTimeDoesNotCount) {
  ServoModel servo;
  servo.setOuterLoad(2.1);
  servo.advance(250ms);
  servo.setOuterLoad(0.0);
  servo.advance(10ms);
  servo.setOuterLoad(2.1);
  servo.advance(250ms);
  EXPECT_EQ(servo.read(16), 0x00);
  EXPECT_TRUE(servo.torqueOn());
}

TEST(ServoModel, ACheckPeriodOfZeroCountsAtOnce) {
  ServoModel servo;
  ASSERT_TRUE(servo.write(4, 0));
  ASSERT_TRUE(servo.write(12, 0));
  ASSERT_TRUE(servo.write(5, 20));
  servo.advance(1ms);
  EXPECT_EQ(servo.read(16), 0x04);
}

TEST(ServoModel, AWrittenLimitIsTheOneThatCounts) {
  ServoModel servo;
  ASSERT_TRUE(servo.write(4, 0));
  ASSERT_TRUE(servo.write(6, 75));
  servo.advance(1s);
  EXPECT_EQ(servo.read(16), 0x01) << "7.4 V is less than 7.5 V";
}

// The torque policy that shuts down.

TEST(ServoModel, ALimitShutsTheTorqueOffUntilItsCauseIsGoneAndAGoalIsSet) {
  ServoModel servo;
  servo.setSupplyVoltage(5.0);
  servo.advance(1s);
  EXPECT_EQ(servo.read(16), 0x81);
  EXPECT_EQ(servo.read(17), 0xC0);
  EXPECT_FALSE(servo.torqueOn());

  EXPECT_TRUE(servo.setGoal(700)) << "taken, though the cause lasts";
  servo.advance(1s);
  EXPECT_EQ(servo.position(), 512);
  EXPECT_EQ(servo.read(16), 0x81);

  servo.setSupplyVoltage(7.4);
  servo.advance(1s);
  EXPECT_EQ(servo.read(16), 0x80) << "the shut-down outlasts its cause";
  EXPECT_EQ(servo.position(), 512);

  EXPECT_TRUE(servo.setGoal(700));
  servo.advance(2s);
  EXPECT_EQ(servo.read(16), 0x00);
  EXPECT_EQ(servo.position(), 700);
}

TEST(ServoModel, ABlockedShaftIsShutDownAgainAtEachGoal) {
  ServoModel servo;
  servo.setOuterLoad(2.1);
  servo.advance(1s);
  EXPECT_EQ(servo.read(16), 0x80) << "without torque there is no load";
  EXPECT_EQ(servo.read(20), 10);
  ASSERT_TRUE(servo.setGoal(520));
  EXPECT_TRUE(servo.torqueOn());
  servo.advance(1s);
  EXPECT_EQ(servo.read(16), 0x80);
  EXPECT_FALSE(servo.torqueOn());
}

TEST(ServoModel, ARebootEndsTheShutDownAndKeepsSettingsAndPlace) {
  ServoModel servo;
  ASSERT_TRUE(servo.write(1, 42));
  servo.setGoal(800);
  servo.advance(2s);
  servo.setOuterLoad(2.1);
  servo.advance(1s);
  ASSERT_EQ(servo.read(16), 0x80);
  servo.setOuterLoad(0.0);
  servo.reboot();
  servo.advance(1s);
  EXPECT_EQ(servo.read(16), 0x00);
  EXPECT_EQ(servo.read(17), 0x20);
  EXPECT_EQ(servo.read(1), 42);
  EXPECT_EQ(servo.position(), 800);
}

TEST(ServoModel, ARebootWhileTheCauseLastsIsShutDownAgain) {
  ServoModel servo;
  servo.setSupplyVoltage(5.0);
  servo.advance(1s);
  servo.reboot();
  EXPECT_EQ(servo.read(16), 0x00);
  servo.advance(200ms);
  EXPECT_EQ(servo.read(16), 0x00);
  servo.advance(1ms);
  EXPECT_EQ(servo.read(16), 0x81);
}

TEST(ServoModel, AfterThePolicyIsRelaxedAGoalEndsTheShutDownInSpiteOfItsCause) {
  ServoModel servo;
  servo.setSupplyVoltage(5.0);
  servo.advance(1s);
  ASSERT_TRUE(servo.write(4, 0));
  ASSERT_TRUE(servo.setGoal(600));
  servo.advance(2s);
  EXPECT_EQ(servo.read(16), 0x01);
  EXPECT_EQ(servo.position(), 600);
}

TEST(ServoModel, AFactoryResetRestoresEverySettingAndKeepsThePlace) {
  ServoModel servo;
  const std::vector<int> others{200, 0, 1, 0, 100, 10, 200, 8, 1, 2, 3, 4, 5, 6, 7};
  for (int number = 1; number <= 15; ++number) {
    ASSERT_TRUE(
        servo.write(number, static_cast<std::uint16_t>(others[static_cast<std::size_t>(number) - 1])));
  }
  servo.setGoal(100);
  servo.advance(3s);
  servo.notePacketError();
  ASSERT_EQ(settingsOf(servo), others);
  servo.factoryReset();
  EXPECT_EQ(settingsOf(servo), factory);
  EXPECT_EQ(servo.read(16), 0x00);
  EXPECT_EQ(servo.position(), 100);
}

}  // namespace
}  // namespace tavril::simulator
