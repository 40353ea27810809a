#pragma once

#include "simulator/FrameParser.h"
#include "simulator/Options.h"
#include "simulator/ReplyQueue.h"
#include "simulator/TrafficLog.h"

#include <atomic>
#include <chrono>
#include <cstdint>
#include <initializer_list>
#include <optional>
#include <random>
#include <span>
#include <vector>

namespace tavril::simulator {

class ServoModel;

/// The bridge: takes bytes from the host, acts on the servo and has replies ready when they are due. It has
/// no clock: time passes only in advance(), for the servo as well. Not thread-safe except for framesSeen().
class FrameEndpoint {
 public:
  /// A frame that is not complete within this time is dropped and reported.
  static constexpr std::chrono::milliseconds frameTimeout{100};
  /// A pause of this length in the padding ends a delivery for the log.
  static constexpr std::chrono::milliseconds paddingPause{20};

  /// The model must live as long as this.
  FrameEndpoint(ServoModel &model, const Options &options);
  FrameEndpoint(const FrameEndpoint &) = delete;
  FrameEndpoint &operator=(const FrameEndpoint &) = delete;

  /// Starts the bridge again. Its clock and the count for unplugAfter begin at 0, and bytes in transit are
  /// lost.
  void plugIn();
  void receive(std::span<const std::uint8_t> bytes);
  void advance(std::chrono::nanoseconds elapsed);
  /// The next write that is due, or nothing.
  std::optional<Bytes> takeDelivery();
  /// The time until advance() has something to do without new bytes, or nothing.
  std::optional<std::chrono::nanoseconds> timeToNextEvent() const;
  /// The time until advance() ends a frame or a delivery that is not complete, or nothing.
  std::optional<std::chrono::nanoseconds> timeToEndOfPatience() const;

  /// True when unplugAfter is reached: nothing is received or sent any more.
  bool unplugged() const { return unplugged_; }
  /// All whole frames so far, also those that were refused. Thread-safe.
  int framesSeen() const { return framesSeen_; }
  /// The faults may be changed at any time and apply to the commands that follow. Seed and callbacks may not.
  Options &options() { return options_; }
  TrafficLog &log() { return log_; }

 private:
  void take(const ParsedItem &item, std::chrono::nanoseconds answerAt);
  void takeFrame(const Bytes &frame, std::chrono::nanoseconds answerAt);
  Bytes answer(const Bytes &frame);
  bool isAnswered(const Bytes &frame) const;
  Bytes answerForServo(const Bytes &frame);
  void giveUpFrame();
  void reply(Bytes reply, std::chrono::nanoseconds answerAt);
  void awaitPadding();
  std::optional<std::chrono::nanoseconds> timeToFirst(
      std::initializer_list<std::optional<std::chrono::nanoseconds>> times) const;

  ServoModel &model_;
  Options options_;
  FrameParser parser_;
  TrafficLog log_;
  ReplyQueue replies_;
  // Separate, so that the noise is the same with and without losses.
  std::mt19937 losses_;
  std::atomic<int> framesSeen_{0};
  int framesSincePlugIn_ = 0;
  bool unplugged_ = false;
  std::chrono::nanoseconds now_{0};
  // When the last byte has arrived on the wire. It is later than now_ if the pace is kept.
  std::chrono::nanoseconds lastArrival_{0};
  std::optional<std::chrono::nanoseconds> frameDeadline_;
  std::optional<std::chrono::nanoseconds> logDeadline_;
};

}  // namespace tavril::simulator
