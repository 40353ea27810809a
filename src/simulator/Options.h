#pragma once

#include <QString>

#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>

namespace tavril::simulator {

/// How the virtual servo behaves. As it stands: one servo, no faults, no wire time.
struct Options {
  enum class Servos { None, One, Several };

  /// What hangs on the bridge. Several answer all but the detection as one: they hold the same settings.
  Servos servos = Servos::One;
  /// Commands take effect, but nothing is ever sent back.
  bool mute = false;
  /// One reply in so many is lost, at random; 0 loses none.
  int loseOneIn = 0;
  /// Time the bridge thinks before it replies.
  std::chrono::milliseconds delay{0};
  /// Bytes that come within this time of the start are lost, as while a bridge boots.
  std::chrono::milliseconds startUp{0};
  /// Replies are cut in pieces of this many bytes; 0 leaves them whole.
  int splitSize = 0;
  /// Pause between two pieces, and before an end that comes late. Longer than a host puts pieces together.
  std::chrono::milliseconds splitGap{50};
  /// Two replies leave in one write. The first waits for the second, though no longer than glueWait.
  bool glue = false;
  std::chrono::milliseconds glueWait{100};
  /// Random bytes come before each reply, at times as a write of their own.
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
  /// Whether the servo's reply policy decides what is answered. 0: only detection and reads of the registers
  /// 16 to 20; 1: also all other reads and the position; 2: everything. Otherwise the bridge always answers.
  /// Which of the two a real bridge does is not known; this is our guess of what the policy may mean.
  bool obeysReplyPolicy = false;
  /// The plug is pulled when this many frames have come; the last of them is not answered. 0 never.
  int unplugAfter = 0;
  /// Bytes take the time they need on a wire of 115200 baud, in both directions.
  bool pace = false;

  /// Told each command and reply as one line. Called on the server's thread, with no lock held.
  std::function<void(const QString &line)> log = nullptr;
  /// Told when unplugAfter has pulled the plug. Called on the server's thread, as its last act.
  std::function<void()> unplugged = nullptr;
};

}  // namespace tavril::simulator
