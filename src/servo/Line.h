#pragma once

#include "wire/Frames.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <vector>

namespace tavril::servo {

/// How long something takes, or a moment of the steady clock.
using Time = std::chrono::microseconds;

/// What came of sending something.
struct Received {
  enum class End {
    Accepted,  ///< by the rule
    TimedOut,
    Cancelled,
    Gone,      ///< there is no port any more
    NotTaken,  ///< the adapter did not take what was to be sent
  };

  End end = End::TimedOut;
  std::vector<std::uint8_t> bytes = {};  ///< all that came since it was sent
  Time sentAt{0};
  Time arrivedAt{0};  ///< when the last of the bytes came
};

/// The way to the bridge. request() and pause() block, and are for one thread.
class Line {
 public:
  using Rule = std::function<bool(wire::Bytes received)>;

  virtual ~Line() = default;

  /// Sends, and collects what comes until the rule accepts it or the time is over. The rule may be called on
  /// other threads, also after this has returned.
  virtual Received request(wire::Bytes data, Time timeout, Rule rule) = 0;
  /// Lets time pass. TimedOut if nothing has ended it before.
  virtual Received::End pause(Time duration) = 0;
  virtual Time now() const = 0;
  /// Ends what is waited for, now and later. May be called on any thread.
  virtual void cancel() = 0;
};

}  // namespace tavril::servo
