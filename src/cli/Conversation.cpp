#include "cli/Conversation.h"

#include "cli/FrameWords.h"
#include "cli/Replies.h"
#include "platform/Bytes.h"
#include "wire/Registers.h"

#include <algorithm>
#include <optional>
#include <utility>

namespace tavril::cli {

namespace {

/// How often a question is asked at most until two answers agree.
constexpr int mostReadings = 6;

enum BridgeError { OutOfRange = 3, LostServo = 4 };

/// Whether a reply to the one also passes for a reply to the other.
bool shareReplies(const wire::Command &one, const wire::Command &other) {
  return one.code == other.code && one.registerNumber() == other.registerNumber();
}

/// Errors that come from how a command arrived, not from what it said.
bool isWorthRepeating(int error) {
  return error != OutOfRange && error != LostServo;
}

}  // namespace

ExitCode exitCodeOf(int error) {
  return error == LostServo ? ExitCode::NoServo : error == OutOfRange ? ExitCode::BadValue : ExitCode::Failed;
}

Conversation::Conversation(Line &line, Patience patience, Trace trace)
    : line_(line), patience_(patience), trace_(std::move(trace)) {}

wire::Reply Conversation::ask(const wire::Command &command) {
  return exchange(command).reply;
}

wire::Reply Conversation::askSteady(const wire::Command &command) {
  Answer answer = exchange(command);
  if (!answer.noisy) return answer.reply;
  for (int reading = 2; reading <= mostReadings; ++reading) {
    const wire::Reply before = answer.reply;
    answer = exchange(command);
    if (answer.reply == before) return answer.reply;
  }
  throw NoAnswer{
      ExitCode::Failed,
      QStringLiteral("%1 answered \"%2\" differently each of %3 times. The line is too noisy: check "
                     "the cable and its plugs.")
          .arg(line_.name(), commandInWords(command))
          .arg(mostReadings)};
}

wire::Reply Conversation::askOnce(const wire::Command &command) {
  if (mayStillBeAnswered(command)) settle(command);
  return attempt(command, true).reply;
}

Conversation::Answer Conversation::exchange(const wire::Command &command) {
  if (mayStillBeAnswered(command)) settle(command);
  return attempt(command, false);
}

Heard Conversation::send(const wire::Command &command, Line::Time timeout) {
  if (trace_) trace_(QStringLiteral("-> %1  %2").arg(inHex(command), commandInWords(command)));
  Heard heard = line_.request(
      toByteArray(wire::encode(command)), timeout,
      [command](const QByteArray &received) { return scanForReply(command, received).found(); });
  if (heard.kind == Heard::Kind::TimedOut && trace_) {
    if (!heard.bytes.isEmpty())
      trace_(QStringLiteral("<- %1  not a valid reply").arg(inHex(asBytes(heard.bytes))));
    trace_(QStringLiteral("   no reply within %1 ms").arg(timeout.count()));
  }
  return heard;
}

std::optional<Conversation::Answer> Conversation::tryOnce(const wire::Command &command, Line::Time longest) {
  const Heard heard = send(command, std::min(patience_.timeout, longest));
  const ReplyScan scan = scanForReply(command, heard.bytes);
  if (heard.kind == Heard::Kind::TimedOut || scan.isErrorReport) {
    tried_.push_back(command);
    return std::nullopt;
  }
  traceReplies(scan);
  // The answer may be to an earlier try, and those to the later ones on their way.
  unanswered_.insert(unanswered_.end(), tried_.begin(), tried_.end());
  tried_.clear();
  return Answer{scan.reply, !scan.noise.isEmpty()};
}

void Conversation::tell(const wire::Command &command) {
  // Otherwise whose error it is could not be told.
  if (!unanswered_.empty()) settle(command);
  const Heard heard = send(command, longestAnswerToTold);
  if (heard.kind == Heard::Kind::TimedOut) {
    unanswered_.push_back(command);
    return;
  }
  const ReplyScan scan = scanForReply(command, heard.bytes);
  traceReplies(scan);
  if (scan.isErrorReport) refused(command, scan.reply.error());
}

/// Sends the command until it is answered, as often as patience has it.
Conversation::Answer Conversation::attempt(const wire::Command &command, bool mayFail) {
  std::optional<int> lastError;
  QByteArray stray;
  unanswered_.insert(unanswered_.end(), tried_.begin(), tried_.end());
  tried_.clear();
  for (int tries = 0; tries <= patience_.retries; ++tries) {
    unanswered_.push_back(command);
    const bool alone = isAloneUnanswered(command);
    const Heard heard = send(command, patience_.timeout);
    const ReplyScan scan = scanForReply(command, heard.bytes);
    stray += scan.noise;
    if (heard.kind == Heard::Kind::TimedOut) continue;
    traceReplies(scan);
    for (const wire::Reply &reply : scan.foreign) crossOut(reply);
    if (!scan.isErrorReport) {
      crossOut(scan.reply);
      return {scan.reply, !scan.noise.isEmpty()};
    }
    // Whose error it is can only be told when nothing else can still be answered.
    if (alone) {
      if (mayFail) return {scan.reply, false};
      if (!isWorthRepeating(scan.reply.error())) refused(command, scan.reply.error());
    }
    lastError = scan.reply.error();
  }
  if (lastError) refused(command, *lastError);
  giveUp(command, stray);
}

void Conversation::giveUp(const wire::Command &command, const QByteArray &stray) const {
  const QString asked =
      QStringLiteral("to \"%1\" within %2 ms, sent %3")
          .arg(commandInWords(command))
          .arg(patience_.timeout.count())
          .arg(patience_.retries == 0 ? QStringLiteral("once")
                                      : QStringLiteral("%1 times").arg(patience_.retries + 1));
  if (stray.isEmpty()) {
    throw NoAnswer{
        ExitCode::Failed,
        QStringLiteral("no answer from %1 %2. Check that it is the servo's adapter, that the bridge "
                       "has power and that the cables are plugged in. If the bridge is slow, "
                       "increase --timeout, --retries or --boot-wait. \"tavrilctl doctor\" looks "
                       "for the cause.")
            .arg(line_.name(), asked)};
  }
  throw NoAnswer{
      ExitCode::Failed,
      QStringLiteral("no answer from %1 %2. %3 came, none a valid reply. --verbose shows what came, and "
                     "\"tavrilctl doctor\" looks for the cause.")
          .arg(line_.name(), asked, counted(stray.size(), "byte", "bytes"))};
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
void Conversation::settle(const wire::Command &command) {
  for (const wire::Register &row : wire::registers) {
    const wire::Command marker = wire::Command::readRegister(row.number);
    if (mayStillBeAnswered(marker) || shareReplies(marker, command)) continue;
    attempt(marker, false);
    return;
  }
  throw NoAnswer{
      ExitCode::Failed,
      QStringLiteral("%1 left so many commands without an answer that late replies cannot be told from "
                     "new ones. Check the cable and its plugs, or increase --timeout.")
          .arg(line_.name())};
}

/// What was sent before the command that this answers has been answered too, or never will be.
void Conversation::crossOut(const wire::Reply &reply) {
  const auto answered =
      std::ranges::find_if(unanswered_, [&](const wire::Command &sent) { return reply.answers(sent); });
  if (answered != unanswered_.end()) unanswered_.erase(unanswered_.begin(), answered + 1);
}

void Conversation::traceReplies(const ReplyScan &scan) const {
  if (!trace_) return;
  if (!scan.noise.isEmpty()) trace_(QStringLiteral("<- %1  noise").arg(inHex(asBytes(scan.noise))));
  for (const wire::Reply &reply : scan.foreign) {
    trace_(QStringLiteral("<- %1  %2 (late)").arg(inHex(reply.frame), replyInWords(reply)));
  }
  trace_(QStringLiteral("<- %1  %2").arg(inHex(scan.reply.frame), replyInWords(scan.reply)));
}

void Conversation::refused(const wire::Command &command, int error) const {
  const QString advice =
      error == LostServo ? QStringLiteral(" Check the servo's cable and power, then retry.") : QString();
  throw Refusal{
      {exitCodeOf(error), QStringLiteral("the bridge on %1 answered \"%2\" with: %3.%4")
                              .arg(line_.name(), commandInWords(command), errorInWords(error), advice)},
      error};
}

}  // namespace tavril::cli
