#include "cli/Servo.h"

#include "cli/FrameWords.h"
#include "cli/RegisterFacts.h"

#include <utility>

namespace tavril::cli {

namespace {

constexpr auto firstData = static_cast<qsizetype>(FrameByte::firstParameter);

int byteAt(const QByteArray &bytes, qsizetype index) {
  return static_cast<unsigned char>(bytes[index]);
}

Servo::Count countIn(const QByteArray &reply) {
  switch (byteAt(reply, firstData)) {
    case 0:
      return Servo::Count::None;
    case 1:
      return Servo::Count::One;
    default:
      return Servo::Count::Several;
  }
}

}  // namespace

Servo::Count Servo::detect() {
  if (const auto known = std::exchange(known_, std::nullopt)) return *known;
  return countIn(conversation_.askSteady(Command::detect()));
}

bool Servo::tryToDetect(Line::Time longest) {
  const auto answer = conversation_.tryOnce(Command::detect(), longest);
  if (answer && !answer->noisy) known_ = countIn(answer->reply);
  return answer.has_value();
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

Servo::Written Servo::write(const RegisterRow &row, int value) {
  try {
    conversation_.ask(Command::writeRegister(row.number, value));
  } catch (const NoAnswer &) {
    const int held = read(row);
    if (held != value) throw;  // lost on its way, or not kept: there is no telling
    return {held, {}};
  } catch (const Refusal &refusal) {
    if (refusal.code != ExitCode::BadValue) throw;
    return {std::nullopt, errorInWords(refusal.error)};
  }
  return {read(row), {}};
}

int Servo::position() {
  const QByteArray reply = conversation_.ask(Command::readPosition());
  return byteAt(reply, firstData) * 256 + byteAt(reply, firstData + 1);
}

void Servo::move(int position) {
  conversation_.ask(Command::setPosition(position));
}

}  // namespace tavril::cli
