#pragma once

#include "cli/Failure.h"
#include "cli/Line.h"
#include "wire/Frames.h"

#include <QByteArray>
#include <QString>

#include <functional>
#include <optional>
#include <vector>

namespace tavril::cli {

struct ReplyScan;

/// What to exit with where the bridge has reported this error.
ExitCode exitCodeOf(int error);

/// How long to wait for a reply, and how often to send a command again that got none.
struct Patience {
  Line::Time timeout{300};
  int retries = 2;
};

/// Asks the bridge one thing at a time and makes sure that an answer belongs to its question.
///
/// Replies carry no number, so a late one cannot be told from a new one to the same command by its bytes. But
/// the bridge answers in order. So the commands still without an answer are remembered, and when one that may
/// yet get a late reply is to be sent again as a new question, a read of some other register goes first: once
/// its answer is there, whatever was to come before has come. Throws a Failure when there is no answer.
class Conversation {
 public:
  /// Told each frame, for the user to follow: "-> FF 04 90 FE  detect the servo".
  using Trace = std::function<void(const QString &line)>;

  Conversation(Line &line, Patience patience, Trace trace = nullptr);

  /// The reply to the command; an error report of the bridge is a Failure.
  wire::Reply ask(const wire::Command &command);
  /// The same for questions whose answer does not change by itself: where anything else than replies came
  /// along with it, asks again until two answers in a row agree, for there is no checksum.
  wire::Reply askSteady(const wire::Command &command);
  /// The reply to the command, which may be an error report.
  wire::Reply askOnce(const wire::Command &command);
  struct Answer {
    wire::Reply reply;
    bool noisy = false;  ///< bytes came along that belong to no reply
  };
  /// Sends the command one time; nothing without an answer in time, which is no more than `longest`. For a
  /// bridge that may not have started: what comes late is told from the answers to later questions.
  std::optional<Answer> tryOnce(const wire::Command &command, Line::Time longest);
  /// For commands to which nothing promises a reply: sends it one time, and is content when no error report
  /// comes within longestAnswerToTold.
  void tell(const wire::Command &command);
  static constexpr Line::Time longestAnswerToTold{100};

 private:
  Answer exchange(const wire::Command &command);
  Answer attempt(const wire::Command &command, bool mayFail);
  Heard send(const wire::Command &command, Line::Time timeout);
  [[noreturn]] void giveUp(const wire::Command &command, const QByteArray &stray) const;
  bool mayStillBeAnswered(const wire::Command &command) const;
  void settle(const wire::Command &command);
  void crossOut(const wire::Reply &reply);
  void traceReplies(const ReplyScan &scan) const;
  bool isAloneUnanswered(const wire::Command &command) const;
  [[noreturn]] void refused(const wire::Command &command, int error) const;

  Line &line_;
  const Patience patience_;
  Trace trace_;
  /// Sent and not answered, in the order of sending. Some will never be.
  std::vector<wire::Command> unanswered_;
  /// Sent by tryOnce() and not answered; most were lost while the bridge started.
  std::vector<wire::Command> tried_;
};

}  // namespace tavril::cli
