#include "cli/Command.h"

namespace tavril::cli {

namespace {

char lowByte(int value) {
  return static_cast<char>(value & 0xFF);
}

/// High byte first. Within the ranges of the registers two's complement is what the servo expects of all of
/// them, the signed one included.
QByteArray word(int value) {
  return QByteArray().append(lowByte(value >> 8)).append(lowByte(value));
}

}  // namespace

Command Command::readRegister(int number) {
  return {CommandCode::ReadServoSettingValue, QByteArray(1, lowByte(number))};
}

Command Command::writeRegister(int number, int value) {
  return {CommandCode::WriteServoSettingValue, QByteArray(1, lowByte(number)) + word(value)};
}

Command Command::setPosition(int position) {
  return {CommandCode::SetServoPosition, word(position)};
}

QByteArray Command::frame() const {
  QByteArray frame;
  frame.append(static_cast<char>(startMark));
  frame.append(lowByte(static_cast<int>(frameRow(code).length())));
  frame.append(static_cast<char>(code));
  frame.append(parameters);
  frame.append(static_cast<char>(endMark));
  return frame;
}

QByteArray Command::transmission() const {
  return frame().leftJustified(static_cast<qsizetype>(commandBufferSize), '\0');
}

int Command::registerNumber() const {
  const bool named =
      code == CommandCode::ReadServoSettingValue || code == CommandCode::WriteServoSettingValue;
  return named ? static_cast<unsigned char>(parameters.front()) : 0;
}

bool Command::sharesRepliesWith(const Command &other) const {
  return code == other.code && registerNumber() == other.registerNumber();
}

}  // namespace tavril::cli
