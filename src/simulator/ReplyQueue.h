#pragma once

#include "simulator/Options.h"
#include "simulator/Wire.h"

#include <QString>

#include <chrono>
#include <deque>
#include <optional>
#include <random>
#include <vector>

namespace tavril::simulator {

/// What the bridge sends in one write, and its log lines.
struct Delivery {
  Bytes bytes;
  std::vector<QString> lines;
};

/// Replies on their way to the host: delayed, split, joined, damaged, and at the speed of the wire, as the
/// options say. Times count from the start of the bridge. Not thread-safe.
class ReplyQueue {
 public:
  /// The options are read for each reply.
  explicit ReplyQueue(const Options &options);

  /// `readyAt` is when its command had arrived.
  void add(Bytes reply, std::chrono::nanoseconds readyAt);
  /// Drops everything; times begin at 0 again.
  void clear();
  /// The next delivery, or nothing if it is not due yet.
  std::optional<Delivery> take(std::chrono::nanoseconds now);
  std::optional<std::chrono::nanoseconds> nextDue() const;

 private:
  struct Timed {
    std::chrono::nanoseconds due;
    Delivery delivery;
  };
  struct Held {
    Delivery delivery;
    std::chrono::nanoseconds readyAt;
    std::chrono::nanoseconds deadline;
  };

  void addNoise(Delivery &delivery, std::chrono::nanoseconds start);
  void schedule(Delivery delivery, std::chrono::nanoseconds readyAt);
  void send(Delivery delivery, std::chrono::nanoseconds start);

  const Options &options_;
  std::mt19937 random_;
  std::deque<Timed> queue_;
  std::optional<Held> held_;
  std::chrono::nanoseconds lineFree_{0};
};

}  // namespace tavril::simulator
