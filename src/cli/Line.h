#pragma once

#include <QByteArray>
#include <QString>

#include <chrono>
#include <functional>

namespace tavril::cli {

/// What came of sending something.
struct Heard {
  enum class Kind { Response, TimedOut };
  Kind kind = Kind::TimedOut;
  QByteArray bytes;  ///< all that came since it was sent, up to the end of the response or of the time
};

/// The way to the bridge. All calls block, and throw a Failure when the port is gone or the user wants to
/// stop. To be used by one thread.
class Line {
 public:
  using Rule = std::function<bool(const QByteArray &received)>;
  using Time = std::chrono::milliseconds;

  virtual ~Line() = default;

  /// Sends, and collects what comes until the rule accepts it or the time is over. The rule is called on
  /// other threads.
  virtual Heard request(const QByteArray &data, Time timeout, Rule rule) = 0;
  /// Lets time pass.
  virtual void pause(Time duration) = 0;
  /// Since some moment in the past.
  virtual Time now() const = 0;
  /// The name of the port, for messages.
  virtual QString name() const = 0;
};

}  // namespace tavril::cli
