#include "cli/Conversation.h"

#include "cli/Failure.h"
#include "cli/FrameWords.h"
#include "cli/Replies.h"
#include "protocol/RegisterCatalogue.h"

#include <algorithm>
#include <optional>

namespace tavril::cli {

namespace {

/// How often a question is asked at most until two answers agree.
constexpr int mostReadings = 6;

enum BridgeError { OutOfRange = 3, LostServo = 4 };

int errorOf(const QByteArray &report) {
  return static_cast<unsigned char>(report[static_cast<qsizetype>(FrameByte::firstParameter)]);
}

/// Errors that come from how a command arrived, not from what it said.
bool isWorthRepeating(int error) {
  return error != OutOfRange && error != LostServo;
}

}  // namespace

Conversation::Conversation(Line &line, Patience patience, Trace trace)
    : line_(line), patience_(patience), trace_(std::move(trace)) {}

QByteArray Conversation::ask(const Command &command) {
  return exchange(command).reply;
}

QByteArray Conversation::askSteady(const Command &command) {
  Answer answer = exchange(command);
  if (!answer.noisy) return answer.reply;
  for (int reading = 2; reading <= mostReadings; ++reading) {
    const QByteArray before = answer.reply;
    answer = exchange(command);
    if (answer.reply == before) return answer.reply;
  }
  throw NoAnswer{
      ExitCode::Failed,
      QStringLiteral("%1: \"%2\" was answered differently each of %3 times; the line is too noisy to "
                     "be trusted. Check the cable and its plugs.")
          .arg(line_.name(), commandInWords(command))
          .arg(mostReadings)};
}

QByteArray Conversation::askOnce(const Command &command) {
  if (mayStillBeAnswered(command)) settle(command);
  return attempt(command, true).reply;
}

Conversation::Answer Conversation::exchange(const Command &command) {
  if (mayStillBeAnswered(command)) settle(command);
  return attempt(command, false);
}

/// Sends the command until it is answered, as often as patience has it.
Conversation::Answer Conversation::attempt(const Command &command, bool mayFail) {
  std::optional<int> lastError;
  for (int tries = 0; tries <= patience_.retries; ++tries) {
    if (trace_) trace_(QStringLiteral("-> %1  %2").arg(inHex(command.frame()), commandInWords(command)));
    unanswered_.push_back(command);
    const bool alone = std::ranges::all_of(
        unanswered_, [&](const Command &sent) { return sent.sharesRepliesWith(command); });
    const Heard heard = line_.request(
        command.transmission(), patience_.timeout,
        [command](const QByteArray &received) { return scanForReply(command, received).found(); });
    if (heard.kind == Heard::Kind::TimedOut) {
      if (trace_) trace_(QStringLiteral("   no reply within %1 ms").arg(patience_.timeout.count()));
      continue;
    }
    const ReplyScan scan = scanForReply(command, heard.bytes);
    traceReplies(scan);
    for (const QByteArray &reply : scan.foreign) crossOut(reply);
    if (!scan.isErrorReport) {
      crossOut(scan.reply);
      return {scan.reply, !scan.noise.isEmpty()};
    }
    // Whose error it is can only be told when nothing else can still be answered.
    if (alone) {
      if (mayFail) return {scan.reply, false};
      if (!isWorthRepeating(errorOf(scan.reply))) refused(command, errorOf(scan.reply));
    }
    lastError = errorOf(scan.reply);
  }
  if (lastError) refused(command, *lastError);
  throw NoAnswer{
      ExitCode::Failed,
      QStringLiteral(
          "no answer from %1 to \"%2\" within %3 ms, sent %4: check that it is the servo's adapter, "
          "that the bridge has power and that its cable is in, or allow more with --timeout, "
          "--retries and --boot-wait.")
          .arg(line_.name(), commandInWords(command))
          .arg(patience_.timeout.count())
          .arg(patience_.retries == 0 ? QStringLiteral("once")
                                      : QStringLiteral("%1 times").arg(patience_.retries + 1))};
}

bool Conversation::mayStillBeAnswered(const Command &command) const {
  return std::ranges::any_of(unanswered_,
                             [&](const Command &sent) { return sent.sharesRepliesWith(command); });
}

/// Asks for a register that no late reply can pass for, after which no late reply to the command is left.
void Conversation::settle(const Command &command) {
  for (const RegisterRow &row : registerCatalogue()) {
    const Command marker = Command::readRegister(row.number);
    if (mayStillBeAnswered(marker) || marker.sharesRepliesWith(command)) continue;
    attempt(marker, false);
    return;
  }
  throw NoAnswer{
      ExitCode::Failed,
      QStringLiteral("%1 leaves so many commands without an answer that its replies cannot be told "
                     "apart: check the cable and its plugs, or allow more with --timeout.")
          .arg(line_.name())};
}

/// What was sent before the command that this answers has been answered too, or never will be.
void Conversation::crossOut(const QByteArray &reply) {
  const auto answered = std::ranges::find_if(unanswered_, [&](const Command &sent) {
    return scanForReply(sent, reply).found() && !scanForReply(sent, reply).isErrorReport;
  });
  if (answered != unanswered_.end()) unanswered_.erase(unanswered_.begin(), answered + 1);
}

void Conversation::traceReplies(const ReplyScan &scan) const {
  if (!trace_) return;
  if (!scan.noise.isEmpty()) trace_(QStringLiteral("<- %1  noise").arg(inHex(scan.noise)));
  for (const QByteArray &reply : scan.foreign) {
    trace_(QStringLiteral("<- %1  %2 (late)").arg(inHex(reply), replyInWords(reply)));
  }
  trace_(QStringLiteral("<- %1  %2").arg(inHex(scan.reply), replyInWords(scan.reply)));
}

void Conversation::refused(const Command &command, int error) const {
  const ExitCode code = error == LostServo    ? ExitCode::NoServo
                        : error == OutOfRange ? ExitCode::BadValue
                                              : ExitCode::Failed;
  const QString advice =
      error == LostServo ? QStringLiteral(" Check the servo's cable and power, then retry.") : QString();
  throw Failure{code, QStringLiteral("the bridge on %1 answered \"%2\" with: %3.%4")
                          .arg(line_.name(), commandInWords(command), errorInWords(error), advice)};
}

}  // namespace tavril::cli
