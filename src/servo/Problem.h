#pragma once

#include "servo/Line.h"
#include "wire/Frames.h"

#include <cstddef>
#include <optional>
#include <utility>
#include <variant>

namespace tavril::servo {

/// How many servos there are behind the bridge.
enum class Count { None, One, Several };

/// What the errors mean that the bridge reports, as far as it makes a difference.
struct BridgeError {
  enum : int { OutOfRange = 3, LostServo = 4 };
};

/// Why something was not done. Only the facts that belong to the kind are set.
struct Problem {
  enum class Kind {
    NoAnswer,           ///< none to `command` within `timeout`, in `tries`; `strayBytes` came
    Unsteady,           ///< `command` was answered differently each of `tries`
    TooManyUnanswered,  ///< late replies cannot be told from new ones any more
    ErrorReport,        ///< the bridge answered `command` with `error`
    NotOneServo,        ///< but `count`
    StillMoving,        ///< after `timeout`, at `position`
    Cancelled,
    Gone,      ///< there is no port any more
    NotTaken,  ///< the adapter did not take what was to be sent
  };

  Kind kind = Kind::NoAnswer;
  wire::Command command = {};
  Time timeout{0};
  int tries = 0;
  std::size_t strayBytes = 0;
  int error = 0;
  Count count = Count::None;
  int position = 0;

  /// No answer, or none that can be trusted; the next try may go better.
  bool isNoAnswer() const {
    return kind == Kind::NoAnswer || kind == Kind::Unsteady || kind == Kind::TooManyUnanswered;
  }
};

/// The problem with which a request or a pause has ended, if there is one.
inline std::optional<Problem> problemOf(Received::End end) {
  switch (end) {
    case Received::End::Cancelled:
      return Problem{.kind = Problem::Kind::Cancelled};
    case Received::End::Gone:
      return Problem{.kind = Problem::Kind::Gone};
    case Received::End::NotTaken:
      return Problem{.kind = Problem::Kind::NotTaken};
    default:
      return std::nullopt;
  }
}

/// What was asked for, or the problem.
template <typename Value>
class Outcome {
 public:
  Outcome(Value value) : content_(std::move(value)) {}
  Outcome(Problem problem) : content_(problem) {}

  explicit operator bool() const { return std::holds_alternative<Value>(content_); }
  const Value &operator*() const { return *std::get_if<Value>(&content_); }
  const Value *operator->() const { return std::get_if<Value>(&content_); }
  const Problem &problem() const { return *std::get_if<Problem>(&content_); }

 private:
  std::variant<Value, Problem> content_;
};

/// The value of what has none but that it was done.
struct Done {};

}  // namespace tavril::servo
