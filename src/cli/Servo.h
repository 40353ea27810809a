#pragma once

#include "cli/Conversation.h"
#include "cli/Failure.h"

#include <optional>

namespace tavril {
struct RegisterRow;
}

namespace tavril::cli {

/// The servo behind the bridge, in terms of what it can do. Every method throws a Failure when it fails.
class Servo {
 public:
  enum class Count { None, One, Several };

  explicit Servo(Conversation &conversation, const QString &portName)
      : conversation_(conversation), portName_(portName) {}

  Count detect();
  /// What to say when there is not exactly one.
  static Failure wrongCount(Count count, const QString &portName);
  /// Fails with NoServo unless there is exactly one.
  void expectOne();

  int read(const RegisterRow &row);
  /// Writes and reads back; what the register holds then. Nothing when the servo refused the value.
  std::optional<int> write(const RegisterRow &row, int value);

  int position();
  void move(int position);
  void release() { conversation_.ask({CommandCode::ReleaseServo, {}}); }
  void reboot() { conversation_.ask({CommandCode::RebootServo, {}}); }
  void restoreFactorySettings() { conversation_.ask({CommandCode::ResetServo, {}}); }
  /// The reply to any command, which may be an error report.
  QByteArray send(const Command &command) { return conversation_.askOnce(command); }

 private:
  Conversation &conversation_;
  QString portName_;
};

/// What to say of a value that was written: what the servo holds instead, or that it refused it.
QString notKeptText(const QString &key, int value, std::optional<int> held);

}  // namespace tavril::cli
