#pragma once

#include <QString>

#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>

namespace tavril::simulator {

/// How the virtual servo behaves. By default: one servo, no faults, no time on the wire.
struct Options {
  enum class Servos { None, One, Several };

  /// The servos behind the bridge. Several of them have the same settings and reply like one, except to a
  /// detection.
  Servos servos = Servos::One;
  /// Commands take effect, but no replies are sent.
  bool mute = false;
  /// One of this many replies is lost, at random; 0 means none.
  int loseOneIn = 0;
  /// The time from a command to its reply.
  std::chrono::milliseconds delay{0};
  /// Bytes that come within this time of the start are lost, as while a bridge boots.
  std::chrono::milliseconds startUp{0};
  /// Replies are cut in pieces of this many bytes; 0 leaves them whole.
  int splitSize = 0;
  /// The pause between two pieces, and before a late end mark. It is longer than the editor waits for the
  /// rest.
  std::chrono::milliseconds splitGap{50};
  /// Two replies leave in one write. The first waits for the second, though no longer than glueWait.
  bool glue = false;
  std::chrono::milliseconds glueWait{100};
  /// Random bytes come before each reply, sometimes in a write of their own.
  bool noise = false;
  std::uint32_t seed = 1;
  /// The length byte of each reply is one too large.
  bool wrongLength = false;
  /// The end mark of each reply comes splitGap after the rest.
  bool lateEnds = false;
  /// Register reads are answered with this error report.
  std::optional<std::uint8_t> readError = std::nullopt;
  /// Register writes are answered with this error report, and have no effect.
  std::optional<std::uint8_t> writeError = std::nullopt;
  /// Whether the reply policy of the servo has an effect. 0: only the detection and reads of registers 16 to
  /// 20 get a reply; 1: also all other reads and the position; 2: everything. This is our guess of what the
  /// policy means; whether real bridges do so is not known.
  bool obeysReplyPolicy = false;
  /// The plug is pulled after this many frames, without a reply to the last one; 0 means never.
  int unplugAfter = 0;
  /// Bytes take the time they need on a wire of 115200 baud, in both directions.
  bool pace = false;

  /// Gets each command and reply as one line. Called on the server's thread without a lock.
  std::function<void(const QString &line)> log = nullptr;
  /// Called when unplugAfter has pulled the plug, at the end of the server's thread.
  std::function<void()> unplugged = nullptr;
};

}  // namespace tavril::simulator
