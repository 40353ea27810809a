#include "cli/Servo.h"

#include "cli/RegisterFacts.h"

namespace tavril::cli {

namespace {

constexpr auto firstData = static_cast<qsizetype>(FrameByte::firstParameter);

int byteAt(const QByteArray &bytes, qsizetype index) {
  return static_cast<unsigned char>(bytes[index]);
}

}  // namespace

Servo::Count Servo::detect() {
  const QByteArray reply = conversation_.askSteady(Command::detect());
  switch (byteAt(reply, firstData)) {
    case 0:
      return Count::None;
    case 1:
      return Count::One;
    default:
      return Count::Several;
  }
}

void Servo::expectOne() {
  const Count count = detect();
  if (count != Count::One) throw wrongCount(count, portName_);
}

Failure Servo::wrongCount(Count count, const QString &portName) {
  const QString text = count == Count::None
                           ? QStringLiteral(
                                 "no servo answered behind the bridge on %1: check the servo's cable "
                                 "and power, then retry.")
                           : QStringLiteral(
                                 "more than one servo answered on %1: connect just one servo to the "
                                 "bridge and retry.");
  return {ExitCode::NoServo, text.arg(portName)};
}

int Servo::read(const RegisterRow &row) {
  const Command command = Command::readRegister(row.number);
  // A live value may well differ from one reading to the next, so two of them prove nothing.
  const QByteArray reply = row.isSetting() ? conversation_.askSteady(command) : conversation_.ask(command);
  return registerValue(row, byteAt(reply, firstData + 1), byteAt(reply, firstData + 2));
}

std::optional<int> Servo::write(const RegisterRow &row, int value) {
  try {
    conversation_.ask(Command::writeRegister(row.number, value));
  } catch (const Failure &failure) {
    if (failure.code != ExitCode::BadValue) throw;
    return std::nullopt;
  }
  return read(row);
}

int Servo::position() {
  const QByteArray reply = conversation_.ask(Command::readPosition());
  return byteAt(reply, firstData) * 256 + byteAt(reply, firstData + 1);
}

void Servo::move(int position) {
  conversation_.ask(Command::setPosition(position));
}

QString notKeptText(const QString &key, int value, std::optional<int> held) {
  const QString outcome =
      held ? QStringLiteral("the servo holds %1").arg(*held) : QStringLiteral("the servo refused it");
  return QStringLiteral("%1: %2 was written, but %3.").arg(key).arg(value).arg(outcome);
}

}  // namespace tavril::cli
