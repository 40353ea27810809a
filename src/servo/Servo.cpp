#include "servo/Servo.h"

#include "wire/Registers.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace tavril::servo {

namespace {

using Kind = Problem::Kind;
using std::chrono::milliseconds;

/// What stood in the line is read and gone before the first command goes out.
constexpr Time settleTime = milliseconds(20);
/// How often somebody is told that the bridge is waited for.
constexpr Time tick = milliseconds(100);
constexpr Time pollInterval = milliseconds(50);

Count countIn(const wire::Reply &reply) {
  switch (reply.servos()) {
    case 0:
      return Count::None;
    case 1:
      return Count::One;
    default:
      return Count::Several;
  }
}

}  // namespace

bool RestWatch::saw(int position, Time at) {
  if (!position_ || std::abs(position - *position_) > 1) {
    position_ = position;
    since_ = at;
  }
  return at - since_ >= restTime;
}

Servo::Servo(Line &line, Patience patience, Conversation::Trace trace)
    : line_(line), conversation_(line, patience, std::move(trace)) {}

Outcome<Done> Servo::waitForBridge(Time bootWait, const Waiting &waiting) {
  if (const auto problem = problemOf(line_.pause(settleTime))) return *problem;
  const Time begun = line_.now();
  const Time end = begun + bootWait;
  Time due = begun;
  while (due < end) {
    const Outcome<Done> answered = tryToDetect(std::min(askInterval, end - due));
    if (answered || !answered.problem().isNoAnswer()) return answered;
    due = std::max(begun + bootLoaderTime, due + askInterval);
    due = std::min(end, std::max(due, line_.now()));
    while (line_.now() < due) {
      const Time now = line_.now();
      if (waiting) waiting(now - begun);
      if (const auto problem = problemOf(line_.pause(std::min(tick, due - now)))) return *problem;
    }
  }
  return Done{};
}

Outcome<Count> Servo::detect() {
  if (const auto known = std::exchange(known_, std::nullopt)) return *known;
  const Outcome<wire::Reply> reply = conversation_.askSteady(wire::Command::detect());
  if (!reply) return reply.problem();
  return countIn(*reply);
}

/// Asks once, with no retries, and waits no more than `longest`.
Outcome<Done> Servo::tryToDetect(Time longest) {
  const Outcome<Conversation::Answer> answer = conversation_.tryOnce(wire::Command::detect(), longest);
  if (!answer) return answer.problem();
  if (!answer->noisy) known_ = countIn(answer->reply);
  return Done{};
}

Outcome<Done> Servo::expectOne() {
  const Outcome<Count> count = detect();
  if (!count) return count.problem();
  if (*count != Count::One) return Problem{.kind = Kind::NotOneServo, .count = *count};
  return Done{};
}

Outcome<int> Servo::read(const wire::Register &row) {
  const auto command = wire::Command::readRegister(row.number);
  // A live value may well differ from one reading to the next, so two of them prove nothing.
  const Outcome<wire::Reply> reply =
      row.isSetting() ? conversation_.askSteady(command) : conversation_.ask(command);
  if (!reply) return reply.problem();
  return reply->value();
}

Outcome<Servo::Written> Servo::write(const wire::Register &row, int value) {
  const Outcome<wire::Reply> reply = conversation_.ask(wire::Command::writeRegister(row.number, value));
  if (!reply) {
    const Problem &problem = reply.problem();
    if (problem.kind == Kind::ErrorReport && problem.error == BridgeError::OutOfRange)
      return Written{.error = problem.error};
    if (!problem.isNoAnswer()) return problem;
  }
  const Outcome<int> held = read(row);
  if (!held) return held.problem();
  // Lost on its way, or not kept: there is no telling.
  if (!reply && *held != value) return reply.problem();
  return Written{.held = *held};
}

Outcome<wire::Reply> Servo::writeOnce(const wire::Register &row, int value) {
  return conversation_.askWithoutRepeat(wire::Command::writeRegister(row.number, value));
}

Outcome<int> Servo::position() {
  const Outcome<wire::Reply> reply = conversation_.ask(wire::Command::readPosition());
  if (!reply) return reply.problem();
  return reply->position();
}

Outcome<Done> Servo::move(int position) {
  return carryOut(wire::Command::setPosition(position));
}

Outcome<int> Servo::waitForRest(const Moving &moving) {
  RestWatch watch;
  const Time begun = line_.now();
  while (true) {
    const Outcome<int> reached = position();
    if (!reached) return reached;
    const Time now = line_.now();
    if (moving) moving(*reached, now - begun);
    if (watch.saw(*reached, now)) return reached;
    if (now - begun > longestMove)
      return Problem{.kind = Kind::StillMoving, .timeout = longestMove, .position = *reached};
    if (const auto problem = problemOf(line_.pause(pollInterval))) return *problem;
  }
}

Outcome<Done> Servo::carryOut(const wire::Command &command) {
  const Outcome<wire::Reply> reply = conversation_.ask(command);
  if (!reply) return reply.problem();
  return Done{};
}

}  // namespace tavril::servo
