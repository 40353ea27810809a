#pragma once

#include "servo/Line.h"

#include <atomic>
#include <cstdint>
#include <deque>
#include <functional>
#include <vector>

namespace tavril::servo {

/// A line to a function, which gets what is sent and says what comes back and when. Time passes only while
/// somebody waits.
class MemoryLine : public Line {
 public:
  /// Bytes, and how long after the question they come.
  struct Piece {
    Time after;
    std::vector<std::uint8_t> bytes;
  };
  using Answer = std::function<std::vector<Piece>(wire::Bytes sent)>;

  explicit MemoryLine(Answer answer);

  Received request(wire::Bytes data, Time timeout, Rule rule) override;
  Received::End pause(Time duration) override;
  Time now() const override { return clock_; }
  void cancel() override { cancelled_ = true; }

  /// Has a piece come that nobody asked for. None overtakes those that are on their way.
  void deliver(Piece piece);

 private:
  struct Arrival {
    Time at;
    std::vector<std::uint8_t> bytes;
  };

  const Answer answer_;
  Time clock_{0};
  std::deque<Arrival> onTheWay_;
  std::atomic<bool> cancelled_ = false;
};

}  // namespace tavril::servo
