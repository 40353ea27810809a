#include "cli/Servo.h"

#include "cli/FrameWords.h"
#include "wire/Registers.h"

#include <utility>

namespace tavril::cli {

namespace {

Servo::Count countIn(const wire::Reply &reply) {
  switch (reply.servos()) {
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
  return countIn(conversation_.askSteady(wire::Command::detect()));
}

bool Servo::tryToDetect(Line::Time longest) {
  const auto answer = conversation_.tryOnce(wire::Command::detect(), longest);
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

int Servo::read(const wire::Register &row) {
  const auto command = wire::Command::readRegister(row.number);
  // A live value may well differ from one reading to the next, so two of them prove nothing.
  return (row.isSetting() ? conversation_.askSteady(command) : conversation_.ask(command)).value();
}

Servo::Written Servo::write(const wire::Register &row, int value) {
  try {
    conversation_.ask(wire::Command::writeRegister(row.number, value));
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
  return conversation_.ask(wire::Command::readPosition()).position();
}

void Servo::move(int position) {
  conversation_.ask(wire::Command::setPosition(position));
}

}  // namespace tavril::cli
