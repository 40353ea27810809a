#pragma once

#include "simulator/FileDescriptor.h"
#include "simulator/FrameEndpoint.h"
#include "simulator/ServoModel.h"

#include <QString>

#include <atomic>
#include <chrono>
#include <cstdint>
#include <deque>
#include <thread>

namespace tavril::bench {

/// A terminal with the virtual servo at the end of a wire of 115200 baud. Its adapter hands over what has
/// come when its timer fires, which runs freely and so cuts some replies; without a timer it hands over each
/// reply when its last byte has come. Thread-safe.
class WireLine {
 public:
  using Nanoseconds = std::chrono::nanoseconds;
  static constexpr Nanoseconds byteTime{86806};

  /// `timer`: 0 is none.
  explicit WireLine(Nanoseconds timer);
  ~WireLine();
  WireLine(const WireLine &) = delete;
  WireLine &operator=(const WireLine &) = delete;

  const QString &path() const { return path_; }
  int framesSeen() const { return endpoint_.framesSeen(); }
  Nanoseconds timer() const { return timer_.load(); }
  void setTimer(Nanoseconds timer) { timer_ = timer; }

 private:
  using Clock = std::chrono::steady_clock;
  struct Byte {
    Clock::time_point at;
    std::uint8_t value;
  };

  void openTerminal();
  void serve();
  void takeIn(Clock::time_point now);
  void carryOut(Clock::time_point now);
  void handOver(Clock::time_point now);
  Clock::time_point handOverTime() const;
  Clock::time_point nextEvent() const;
  void waitFor(Clock::time_point due) const;

  const Clock::time_point begin_ = Clock::now();
  std::atomic<Nanoseconds> timer_;
  simulator::FileDescriptor master_;
  simulator::FileDescriptor slave_;
  QString path_;
  simulator::ServoModel model_;
  simulator::FrameEndpoint endpoint_{model_, {}};
  std::deque<Byte> toServo_;
  std::deque<Byte> toHost_;
  Clock::time_point toServoFree_{};
  Clock::time_point toHostFree_{};
  Clock::time_point lastAdvance_ = begin_;
  std::atomic<bool> stopping_{false};
  std::thread thread_;
};

}  // namespace tavril::bench
