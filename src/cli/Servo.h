#pragma once

#include "cli/Conversation.h"
#include "cli/Failure.h"
#include "cli/Line.h"
#include "wire/Frames.h"

#include <QString>

#include <optional>

namespace tavril::wire {
struct Register;
}

namespace tavril::cli {

/// The servo behind the bridge, in terms of what it can do. Every method throws a Failure when it fails.
class Servo {
 public:
  enum class Count { None, One, Several };

  explicit Servo(Conversation &conversation, const QString &portName)
      : conversation_(conversation), portName_(portName) {}

  Count detect();
  /// Asks once, with no retries, waits no more than `longest`, and says whether there was an answer. The next
  /// detect() then need not ask.
  bool tryToDetect(Line::Time longest);
  /// Has the next detect() ask in any case; for what comes after a while.
  void forgetDetection() { known_.reset(); }
  /// What to say when there is not exactly one.
  static Failure wrongCount(Count count, const QString &portName);
  /// Fails with NoServo unless there is exactly one.
  void expectOne();

  int read(const wire::Register &row);
  /// What has become of a value that was written.
  struct Written {
    std::optional<int> held;  ///< what the register holds now; nothing when the value was refused
    QString refusal;          ///< the error report, in words
  };
  /// Writes and reads back. A write without a reply is no failure if the reading shows the value: with some
  /// reply policies the servo does not answer writes.
  Written write(const wire::Register &row, int value);

  int position();
  void move(int position);
  /// Nothing promises a reply to this one, so that none is needed.
  void release() { conversation_.tell({wire::CommandCode::ReleaseServo}); }
  void reboot() { conversation_.ask({wire::CommandCode::RebootServo}); }
  void restoreFactorySettings() { conversation_.ask({wire::CommandCode::ResetServo}); }
  /// The reply to any command, which may be an error report.
  wire::Reply send(const wire::Command &command) { return conversation_.askOnce(command); }

 private:
  Conversation &conversation_;
  QString portName_;
  std::optional<Count> known_;
};

}  // namespace tavril::cli
