#include "servo/Conversation.h"

#include "servo/Replies.h"
#include "wire/Registers.h"

#include <algorithm>
#include <cstddef>
#include <utility>

namespace tavril::servo {

namespace {

using End = Received::End;
using Kind = Problem::Kind;

/// How often a question is asked at most until two answers agree.
constexpr int mostReadings = 6;

/// Whether a reply to the one also passes for a reply to the other.
bool shareReplies(const wire::Command &one, const wire::Command &other) {
  return one.code == other.code && one.registerNumber() == other.registerNumber();
}

/// Errors that come from how a command arrived, not from what it said.
bool isWorthRepeating(int error) {
  return error != BridgeError::OutOfRange && error != BridgeError::LostServo;
}

Outcome<wire::Reply> replyIn(const Outcome<Conversation::Answer> &answer) {
  if (!answer) return answer.problem();
  return answer->reply;
}

Problem refused(const wire::Command &command, int error) {
  return {.kind = Kind::ErrorReport, .command = command, .error = error};
}

}  // namespace

Conversation::Conversation(Line &line, Patience patience, Trace trace)
    : line_(line), patience_(patience), trace_(std::move(trace)) {}

Outcome<wire::Reply> Conversation::ask(const wire::Command &command) {
  return replyIn(exchange(command, false));
}

Outcome<wire::Reply> Conversation::askSteady(const wire::Command &command) {
  Outcome<Answer> answer = exchange(command, false);
  if (!answer) return answer.problem();
  if (!answer->noisy) return answer->reply;
  for (int reading = 2; reading <= mostReadings; ++reading) {
    const wire::Reply before = answer->reply;
    answer = exchange(command, false);
    if (!answer) return answer.problem();
    if (answer->reply == before) return before;
  }
  return Problem{.kind = Kind::Unsteady, .command = command, .tries = mostReadings};
}

Outcome<wire::Reply> Conversation::askOnce(const wire::Command &command) {
  return replyIn(exchange(command, true));
}

Outcome<wire::Reply> Conversation::askWithoutRepeat(const wire::Command &command) {
  if (const auto problem = settleBefore(command)) return *problem;
  return replyIn(attempt(command, true, 0));
}

Outcome<Conversation::Answer> Conversation::exchange(const wire::Command &command, bool mayFail) {
  if (const auto problem = settleBefore(command)) return *problem;
  return attempt(command, mayFail, patience_.retries);
}

std::optional<Problem> Conversation::settleBefore(const wire::Command &command) {
  return mayStillBeAnswered(command) ? settle(command) : std::nullopt;
}

Received Conversation::send(const wire::Command &command, Time timeout) {
  trace({.kind = Event::Kind::Sent, .command = command});
  Received received = line_.request(wire::encode(command), timeout, [command](wire::Bytes bytes) {
    return scanForReply(command, bytes).found();
  });
  if (received.end == End::TimedOut) {
    if (!received.bytes.empty()) trace({.kind = Event::Kind::Invalid, .bytes = received.bytes});
    trace({.kind = Event::Kind::Silence, .timeout = timeout});
  }
  return received;
}

Outcome<Conversation::Answer> Conversation::tryOnce(const wire::Command &command, Time longest) {
  const Time timeout = std::min(patience_.timeout, longest);
  const Received received = send(command, timeout);
  if (const auto problem = problemOf(received.end)) return *problem;
  const ReplyScan scan = scanForReply(command, received.bytes);
  if (received.end == End::TimedOut || scan.isErrorReport) {
    tried_.push_back(command);
    return Problem{.kind = Kind::NoAnswer, .command = command, .timeout = timeout, .tries = 1};
  }
  traceReplies(scan);
  // The answer may be to an earlier try, and those to the later ones on their way.
  unanswered_.insert(unanswered_.end(), tried_.begin(), tried_.end());
  tried_.clear();
  return Answer{scan.reply, !scan.noise.empty()};
}

Outcome<Done> Conversation::tell(const wire::Command &command) {
  // Otherwise whose error it is could not be told.
  if (!unanswered_.empty()) {
    if (const auto problem = settle(command)) return *problem;
  }
  const Received received = send(command, longestAnswerToTold);
  if (const auto problem = problemOf(received.end)) return *problem;
  if (received.end == End::TimedOut) {
    unanswered_.push_back(command);
    return Done{};
  }
  const ReplyScan scan = scanForReply(command, received.bytes);
  traceReplies(scan);
  if (scan.isErrorReport) return refused(command, scan.reply.error());
  return Done{};
}

/// Sends the command until it is answered, and `retries` times again at most.
Outcome<Conversation::Answer> Conversation::attempt(const wire::Command &command, bool mayFail, int retries) {
  std::optional<int> lastError;
  std::size_t strayBytes = 0;
  unanswered_.insert(unanswered_.end(), tried_.begin(), tried_.end());
  tried_.clear();
  for (int tries = 0; tries <= retries; ++tries) {
    unanswered_.push_back(command);
    const bool alone = isAloneUnanswered(command);
    const Received received = send(command, patience_.timeout);
    if (const auto problem = problemOf(received.end)) return *problem;
    const ReplyScan scan = scanForReply(command, received.bytes);
    strayBytes += scan.noise.size();
    if (received.end == End::TimedOut) continue;
    traceReplies(scan);
    for (const wire::Reply &reply : scan.foreign) crossOut(reply);
    if (!scan.isErrorReport) {
      crossOut(scan.reply);
      return Answer{scan.reply, !scan.noise.empty()};
    }
    // Whose error it is can only be told when nothing else can still be answered.
    if (alone) {
      if (mayFail) return Answer{scan.reply, false};
      if (!isWorthRepeating(scan.reply.error())) return refused(command, scan.reply.error());
    }
    lastError = scan.reply.error();
  }
  if (lastError) return refused(command, *lastError);
  return Problem{.kind = Kind::NoAnswer,
                 .command = command,
                 .timeout = patience_.timeout,
                 .tries = retries + 1,
                 .strayBytes = strayBytes};
}

bool Conversation::isAloneUnanswered(const wire::Command &command) const {
  return std::ranges::all_of(unanswered_,
                             [&](const wire::Command &sent) { return shareReplies(sent, command); });
}

bool Conversation::mayStillBeAnswered(const wire::Command &command) const {
  return std::ranges::any_of(unanswered_,
                             [&](const wire::Command &sent) { return shareReplies(sent, command); });
}

/// Asks for a register that no late reply can pass for, after which no late reply to the command is left.
std::optional<Problem> Conversation::settle(const wire::Command &command) {
  for (const wire::Register &row : wire::registers) {
    const wire::Command marker = wire::Command::readRegister(row.number);
    if (mayStillBeAnswered(marker) || shareReplies(marker, command)) continue;
    const Outcome<Answer> answer = attempt(marker, false, patience_.retries);
    return answer ? std::nullopt : std::optional(answer.problem());
  }
  return Problem{.kind = Kind::TooManyUnanswered};
}

/// What was sent before the command that this answers has been answered too, or never will be.
void Conversation::crossOut(const wire::Reply &reply) {
  const auto answered =
      std::ranges::find_if(unanswered_, [&](const wire::Command &sent) { return reply.answers(sent); });
  if (answered != unanswered_.end()) unanswered_.erase(unanswered_.begin(), answered + 1);
}

void Conversation::trace(const Event &event) const {
  if (trace_) trace_(event);
}

void Conversation::traceReplies(const ReplyScan &scan) const {
  if (!scan.noise.empty()) trace({.kind = Event::Kind::Noise, .bytes = scan.noise});
  for (const wire::Reply &reply : scan.foreign) trace({.kind = Event::Kind::Late, .reply = reply});
  trace({.kind = Event::Kind::Replied, .reply = scan.reply});
}

}  // namespace tavril::servo
