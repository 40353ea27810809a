#pragma once

#include "servo/Line.h"
#include "servo/Problem.h"
#include "wire/Frames.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>
#include <vector>

namespace tavril::servo {

struct ReplyScan;

/// How long to wait for a reply, and how often to send a command again that got none.
struct Patience {
  Time timeout = std::chrono::milliseconds(300);
  int retries = 2;
};

/// Something that was sent or came, for somebody who follows the conversation.
struct Event {
  enum class Kind {
    Sent,     ///< `command`
    Replied,  ///< `reply`
    Late,     ///< `reply`, which answers an earlier command
    Noise,    ///< `bytes` before a reply
    Invalid,  ///< `bytes` without any reply
    Silence,  ///< for `timeout`
  };

  Kind kind = Kind::Sent;
  wire::Command command = {};
  wire::Reply reply = {};
  std::vector<std::uint8_t> bytes = {};
  Time timeout{0};
};

/// Asks the bridge one thing at a time and makes sure that an answer belongs to its question.
///
/// Replies carry no number, so a late one cannot be told from a new one to the same command by its bytes. But
/// the bridge answers in order. So the commands still without an answer are remembered, and when one that may
/// yet get a late reply is to be sent again as a new question, a read of some other register goes first: once
/// its answer is there, whatever was to come before has come.
class Conversation {
 public:
  using Trace = std::function<void(const Event &event)>;

  Conversation(Line &line, Patience patience, Trace trace = nullptr);

  /// The reply to the command; an error report of the bridge is a problem.
  Outcome<wire::Reply> ask(const wire::Command &command);
  /// The same for questions whose answer does not change by itself: where anything else than replies came
  /// along with it, asks again until two answers in a row agree, for there is no checksum.
  Outcome<wire::Reply> askSteady(const wire::Command &command);
  /// The reply to the command, which may be an error report.
  Outcome<wire::Reply> askOnce(const wire::Command &command);
  /// The same, but the command is sent only one time.
  Outcome<wire::Reply> askWithoutRepeat(const wire::Command &command);
  struct Answer {
    wire::Reply reply;
    bool noisy = false;  ///< bytes came along that belong to no reply
  };
  /// Sends the command one time, and waits no more than `longest`. For a bridge that may not have started:
  /// what comes late is told from the answers to later questions, and an error report is no answer.
  Outcome<Answer> tryOnce(const wire::Command &command, Time longest);
  /// For commands to which nothing promises a reply: sends it one time, and is content when no error report
  /// comes within longestAnswerToTold.
  Outcome<Done> tell(const wire::Command &command);
  static constexpr Time longestAnswerToTold = std::chrono::milliseconds(100);

 private:
  Outcome<Answer> exchange(const wire::Command &command, bool mayFail);
  Outcome<Answer> attempt(const wire::Command &command, bool mayFail, int retries);
  Received send(const wire::Command &command, Time timeout);
  bool mayStillBeAnswered(const wire::Command &command) const;
  std::optional<Problem> settleBefore(const wire::Command &command);
  std::optional<Problem> settle(const wire::Command &command);
  void crossOut(const wire::Reply &reply);
  void trace(const Event &event) const;
  void traceReplies(const ReplyScan &scan) const;
  bool isAloneUnanswered(const wire::Command &command) const;

  Line &line_;
  const Patience patience_;
  const Trace trace_;
  /// Sent and not answered, in the order of sending. Some will never be.
  std::vector<wire::Command> unanswered_;
  /// Sent by tryOnce() and not answered; most were lost while the bridge started.
  std::vector<wire::Command> tried_;
};

}  // namespace tavril::servo
