#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdlib>
#include <functional>
#include <mutex>
#include <thread>

namespace tavril {

/// Sees to it that a process that is to end does end, whatever hangs in it. It is made before all that might
/// hang and goes after it.
class EndOfProcess {
 public:
  using Time = std::chrono::milliseconds;
  using End = std::function<void(int status)>;

  /// When the lines are put back by force: closing may wait a second for a line's output before that.
  static constexpr Time putBackTime{1400};
  /// When the process is ended by force, within two seconds.
  static constexpr Time endTime{1700};

  /// `end` ends the process at once, running nothing more of it.
  explicit EndOfProcess(
      Time putBackAfter = putBackTime, Time endAfter = endTime,
      End end = [](int status) { std::_Exit(status); });
  /// The process has come to its end by itself: nothing is done any more.
  ~EndOfProcess();
  EndOfProcess(const EndOfProcess &) = delete;
  EndOfProcess &operator=(const EndOfProcess &) = delete;

  /// The process is to end with this status. `putBack` runs on a thread of its own when the time for it has
  /// come, and may hang as well. A second call changes nothing. On any thread.
  void begin(int status, std::function<void()> putBack);

 private:
  std::jthread later(Time time, std::function<void()> act);

  const Time putBackAfter_;
  const Time endAfter_;
  const End end_;
  std::once_flag begun_;
  std::mutex mutex_;
  std::condition_variable_any never_;
  // In this order, so that the second is still watched when it is waited for.
  std::jthread ending_;
  std::jthread puttingBack_;
};

}  // namespace tavril
