#pragma once

#include "servo/Conversation.h"
#include "servo/Line.h"
#include "servo/Problem.h"
#include "wire/Frames.h"

#include <chrono>
#include <functional>
#include <optional>

namespace tavril::wire {
struct Register;
}

namespace tavril::servo {

/// Tells from positions and their times whether the servo has come to rest. Pure.
class RestWatch {
 public:
  /// The position must not change for so long; a count more or less is only the reading.
  static constexpr Time restTime = std::chrono::milliseconds(500);

  /// True once the servo is at rest.
  bool saw(int position, Time at);

 private:
  std::optional<int> position_;
  Time since_{0};
};

/// The servo behind the bridge, in terms of what it can do. All calls block; for one thread.
class Servo {
 public:
  explicit Servo(Line &line, Patience patience = {}, Conversation::Trace trace = nullptr);

  /// Told how long it has waited, as often as it looks.
  using Waiting = std::function<void(Time waited)>;
  /// Returns when the bridge answers, or after `bootWait` at the latest. It is asked at once. Where it does
  /// not answer, opening the port may have restarted it, and a boot loader may listen: it is left in peace
  /// until bootLoaderTime, and then asked every askInterval. With no `bootWait` it is not asked at all. After
  /// an answer, the next detect() need not ask.
  Outcome<Done> waitForBridge(Time bootWait, const Waiting &waiting = nullptr);
  static constexpr Time bootLoaderTime = std::chrono::milliseconds(2000);
  static constexpr Time askInterval = std::chrono::milliseconds(500);

  Outcome<Count> detect();
  /// Has the next detect() ask in any case; for what comes after a while.
  void forgetDetection() { known_.reset(); }
  /// Fails unless there is exactly one.
  Outcome<Done> expectOne();

  Outcome<int> read(const wire::Register &row);
  /// What has become of a value that was written.
  struct Written {
    std::optional<int> held = {};  ///< what the register holds now; nothing when the value was refused
    int error = 0;                 ///< the error report, if it was refused
  };
  /// Writes and reads back. A write without a reply is no problem if the reading shows the value: with some
  /// reply policies the servo does not answer writes.
  Outcome<Written> write(const wire::Register &row, int value);
  /// Writes one time and does not read back. The reply may be an error report.
  Outcome<wire::Reply> writeOnce(const wire::Register &row, int value);

  Outcome<int> position();
  Outcome<Done> move(int position);
  /// Told each position, and how long it has waited.
  using Moving = std::function<void(int position, Time waited)>;
  /// Where the servo has come to rest.
  Outcome<int> waitForRest(const Moving &moving = nullptr);
  static constexpr Time longestMove = std::chrono::seconds(30);

  /// Nothing promises a reply to this one, so that none is needed.
  Outcome<Done> release() { return conversation_.tell({wire::CommandCode::ReleaseServo}); }
  Outcome<Done> reboot() { return carryOut({wire::CommandCode::RebootServo}); }
  Outcome<Done> restoreFactorySettings() { return carryOut({wire::CommandCode::ResetServo}); }
  /// The reply to any command, which may be an error report.
  Outcome<wire::Reply> send(const wire::Command &command) { return conversation_.askOnce(command); }

 private:
  Outcome<Done> tryToDetect(Time longest);
  Outcome<Done> carryOut(const wire::Command &command);

  Line &line_;
  Conversation conversation_;
  std::optional<Count> known_;
};

}  // namespace tavril::servo
