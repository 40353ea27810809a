#pragma once

#include <QByteArray>

#include <chrono>
#include <functional>

namespace tavril {

/// Says what of the bytes read so far becomes a delivery of its own. Immutable, so that threads may share it.
struct DeliveryRule {
  /// What to do with the bytes read so far.
  struct Verdict {
    enum class Kind { Whole, MoreToCome, AsItIs };

    Kind kind = Kind::AsItIs;
    qsizetype count = 0;  ///< of a whole one only

    /// The first bytes, so many of them, are one delivery; what is left is judged anew.
    static Verdict whole(qsizetype count) { return {Kind::Whole, count}; }
    /// They are the beginning of one, for whose rest it is worth waiting.
    static Verdict moreToCome() { return {Kind::MoreToCome}; }
    /// Nothing to wait for and nothing to part: the first read is delivered as it came.
    static Verdict asItIs() { return {}; }
  };

  /// Called on the thread that reads, with at least one byte, once whenever there are others than before, and
  /// once with a read that comes while others are held: one that begins with a whole delivery is not taken
  /// for the rest of another. Must be quick, and must not throw or wait for the main thread.
  std::function<Verdict(const QByteArray &bytes)> judge;
  /// From the read that has the first byte of a beginning. Its rest may take so long, then that read is
  /// delivered as it came.
  std::chrono::milliseconds longestWait{0};
  /// If set: is asked about each delivery, whose first byte was read at `came`, on the thread that reads.
  /// Returns true if it has taken the delivery, which then goes no further. Must neither throw nor wait for
  /// the main thread.
  std::function<bool(const QByteArray &delivery, std::chrono::steady_clock::time_point came)> take{};
};

}  // namespace tavril
