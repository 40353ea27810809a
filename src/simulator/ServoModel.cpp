#include "simulator/ServoModel.h"

#include <algorithm>
#include <cmath>

namespace tavril::simulator {
namespace {

using namespace std::chrono_literals;

constexpr std::chrono::microseconds stepTime = 1ms;
// After this time at rest nothing changes any more, and the rest of a long time is skipped.
constexpr std::chrono::microseconds longestReplay = 10min;

constexpr int startPosition = 512;
// Amperes: electronics, holding, running at top speed, accelerating at the limit.
constexpr double idleCurrent = 0.05;
constexpr double holdCurrent = 0.05;
constexpr double runCurrent = 0.35;
constexpr double accelerationCurrent = 0.45;
constexpr double supplyResistance_ohm = 0.3;
// The final rise in degrees for one ampere (it grows with the square), and the time constant.
constexpr double heatPerSquareAmpere = 55.0;
constexpr double thermalTime_s = 25.0;

constexpr double loadUnitsPerAmpere = 200.0;

// Limits are compared as whole numbers, as on the wire: tenths of a volt, degrees and load units.
int rounded(double value) {
  return static_cast<int>(std::lround(value));
}

std::uint16_t lowByte(double value) {
  return static_cast<std::uint16_t>(std::clamp(rounded(value), 0, 255));
}

constexpr std::array<int, registers::settingCount> factoryValues() {
  std::array<int, registers::settingCount> values{};
  for (std::size_t i = 0; i < values.size(); ++i) values[i] = registers::settings[i].factory;
  return values;
}

}  // namespace

ServoModel::ServoModel() : settings_(factoryValues()), motion_(startPosition), current_(currentNow()) {}

std::optional<std::uint16_t> ServoModel::read(int number) const {
  // This extends the sign of the calibration angle into the high byte.
  if (number >= 1 && number <= registers::settingCount) return static_cast<std::uint16_t>(setting(number));
  switch (number) {
    case registers::statusError:
      return statusError();
    case registers::statusDetail:
      return statusDetail();
    case registers::presentVoltage:
      return lowByte(voltage() * 10.0);
    case registers::presentTemperature:
      return lowByte(temperature_);
    case registers::presentLoad:
      return lowByte(current_ * loadUnitsPerAmpere);
    default:
      return std::nullopt;
  }
}

bool ServoModel::write(int number, std::uint16_t value) {
  if (number < 1 || number > registers::settingCount) return false;
  const auto index = static_cast<std::size_t>(number) - 1;
  const int meant = number == registers::calibrationAngle ? static_cast<std::int16_t>(value) : int{value};
  const registers::SettingRow &row = registers::settings[index];
  if (meant < row.lowest || meant > row.highest) return false;
  settings_[index] = meant;
  return true;
}

bool ServoModel::setGoal(int position) {
  if (position < MotionModel::lowestPosition || position > MotionModel::highestPosition) {
    remembered_ |= PositionOverRange;
    return false;
  }
  remembered_ = static_cast<std::uint8_t>(remembered_ & ~PositionOverRange);
  const bool guarded = setting(registers::torquePolicy) == 1;
  if (shutDown_ && guarded && anyLimitPassed()) return true;
  shutDown_ = false;
  motion_.setGoal(position);
  return true;
}

void ServoModel::release() {
  motion_.release();
}

void ServoModel::reboot() {
  remembered_ = 0;
  shutDown_ = false;
  voltageLimit_ = {};
  temperatureLimit_ = {};
  loadLimit_ = {};
  motion_.hold();
}

void ServoModel::factoryReset() {
  settings_ = factoryValues();
  reboot();
}

void ServoModel::advance(std::chrono::microseconds elapsed) {
  if (elapsed <= 0us) return;
  // Only whole steps, so that the result does not depend on how the time is divided among calls.
  untilStep_ = std::min(untilStep_ + elapsed, longestReplay);
  for (; untilStep_ >= stepTime; untilStep_ -= stepTime) step(stepTime);
}

void ServoModel::step(std::chrono::microseconds step) {
  motion_.advance(step);
  current_ = currentNow();
  const double target = roomTemperature_ + heatPerSquareAmpere * current_ * current_;
  temperature_ += (target - temperature_) * std::chrono::duration<double>(step).count() / thermalTime_s;
  checkLimits(step);
}

double ServoModel::currentNow() const {
  double current = idleCurrent;
  if (motion_.stiff()) {
    current += holdCurrent + outerLoad_;
    current += runCurrent * std::abs(motion_.speed()) / MotionModel::topSpeed;
    current += accelerationCurrent * std::abs(motion_.acceleration()) / MotionModel::topAcceleration;
  }
  return current;
}

void ServoModel::Limit::check(bool exceedsNow, std::chrono::microseconds step, int periodTicks) {
  if (!exceedsNow) {
    *this = {};
    return;
  }
  exceeded += step;
  if (exceeded > periodTicks * std::chrono::microseconds(10ms)) passed = true;
}

void ServoModel::checkLimits(std::chrono::microseconds step) {
  const int tenths = rounded(voltage() * 10.0);
  const bool badVoltage = tenths < setting(registers::minVoltage) || tenths > setting(registers::maxVoltage);
  voltageLimit_.check(badVoltage, step, setting(registers::voltagePeriod));
  temperatureLimit_.check(rounded(temperature_) > setting(registers::maxTemperature), step,
                          setting(registers::temperaturePeriod));
  loadLimit_.check(rounded(current_ * loadUnitsPerAmpere) > setting(registers::maxLoad), step,
                   setting(registers::loadPeriod));
  if (setting(registers::torquePolicy) == 1 && motion_.stiff() && anyLimitPassed()) {
    shutDown_ = true;
    motion_.release();
  }
}

int ServoModel::position() const {
  return rounded(motion_.position());
}

double ServoModel::voltage() const {
  return supplyVoltage_ - supplyResistance_ohm * current_;
}

std::uint8_t ServoModel::statusError() const {
  unsigned bits = remembered_;
  if (voltageLimit_.passed) bits |= VoltageOutOfRange;
  if (temperatureLimit_.passed) bits |= OverTemperature;
  if (loadLimit_.passed) bits |= OverLoad;
  if (shutDown_) bits |= ShutDown;
  return static_cast<std::uint8_t>(bits);
}

std::uint8_t ServoModel::statusDetail() const {
  unsigned bits = 0;
  if (motion_.moving()) bits |= Moving;
  if (motion_.stiff() && !motion_.moving()) bits |= InPosition;
  if (!motion_.stiff()) bits |= TorqueOff;
  if (rounded(voltage() * 10.0) < setting(registers::minVoltage)) bits |= VoltageTooLow;
  return static_cast<std::uint8_t>(bits);
}

}  // namespace tavril::simulator
