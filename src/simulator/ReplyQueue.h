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

/// What leaves the bridge in one write, and the log lines that tell of it.
struct Delivery {
  Bytes bytes;
  std::vector<QString> lines;
};

/// Replies on their way to the host: late, in pieces, glued, spoilt and at wire speed, as the options say.
/// Times are counted from the start of the bridge. Not thread-safe.
class ReplyQueue {
 public:
  /// The options are looked at for each reply anew and must live as long as this.
  explicit ReplyQueue(const Options &options);

  /// `readyAt` is when the command it answers was in.
  void add(Bytes reply, std::chrono::nanoseconds readyAt);
  /// Forgets what is under way; times begin anew.
  void clear();
  /// The next delivery, once it is due.
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
