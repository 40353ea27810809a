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

/// The bridge: takes bytes from the host, acts on the servo and has replies ready when they are due. Knows no
/// clock: time, the servo's included, passes only in advance(). Not thread-safe but for framesSeen().
class FrameEndpoint {
 public:
  /// A frame that is not finished within this time is given up and reported.
  static constexpr std::chrono::milliseconds frameTimeout{100};
  /// A delivery whose padding pauses for so long is taken to be over; only the log asks.
  static constexpr std::chrono::milliseconds paddingPause{20};

  /// The model must live as long as this.
  FrameEndpoint(ServoModel &model, const Options &options);
  FrameEndpoint(const FrameEndpoint &) = delete;
  FrameEndpoint &operator=(const FrameEndpoint &) = delete;

  /// A new start of the bridge: its clock and its count for unplugAfter begin anew, and bytes under way are
  /// lost.
  void plugIn();
  void receive(std::span<const std::uint8_t> bytes);
  void advance(std::chrono::nanoseconds elapsed);
  /// What is due to leave now, one write at a time; nothing when there is no more.
  std::optional<Bytes> takeDelivery();
  /// How long advance() has nothing to do without new bytes; nothing means for ever.
  std::optional<std::chrono::nanoseconds> timeToNextEvent() const;
  /// How long the host may yet be silent before advance() takes a frame or a delivery that has begun for all
  /// there is; nothing when none has begun.
  std::optional<std::chrono::nanoseconds> timeToEndOfPatience() const;

  /// True once the options' unplugAfter is reached: nothing is taken or sent any more.
  bool unplugged() const { return unplugged_; }
  /// Whole frames so far, whatever became of them. Thread-safe.
  int framesSeen() const { return framesSeen_; }
  /// The faults may be changed at any time; they hold for the commands that follow (seed and callbacks do
  /// not).
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
  // Of its own, so that the noise stays the same with and without losses.
  std::mt19937 losses_;
  std::atomic<int> framesSeen_{0};
  int framesSincePlugIn_ = 0;
  bool unplugged_ = false;
  std::chrono::nanoseconds now_{0};
  // When the byte that came last was through on the wire; ahead of now_ when the pace is kept.
  std::chrono::nanoseconds lastArrival_{0};
  std::optional<std::chrono::nanoseconds> frameDeadline_;
  std::optional<std::chrono::nanoseconds> logDeadline_;
};

}  // namespace tavril::simulator
