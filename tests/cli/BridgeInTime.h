#pragma once

#include "cli/Line.h"

#include <QByteArray>

#include <gtest/gtest.h>

#include <array>
#include <deque>
#include <optional>
#include <random>
#include <vector>

namespace tavril::cli {

/// What happens on the way, by chance.
struct BridgeFaults {
  unsigned lostCommands = 0;  ///< in a hundred
  unsigned lostReplies = 0;   ///< in a hundred
  unsigned noisyReplies = 0;  ///< in a hundred
  int longestDelay_ms = 0;
  std::optional<int> error = {};  ///< what registers are answered with instead
};

/// A bridge and its servo behind a line with faults, in time that passes only when somebody waits. Answers in
/// order, but late, or not at all, as the seed has it. Speaks in bytes of its own making.
class BridgeInTime final : public Line {
 public:
  explicit BridgeInTime(const BridgeFaults &faultsThere = {}, unsigned seed = 1)
      : faults(faultsThere), random_(seed) {}

  Heard request(const QByteArray &data, Time timeout, Rule rule) override {
    ++sent;
    dropWhatCame();
    askedAt.push_back(clock_);
    const bool arrives =
        clock_ >= deafUntil && !happens(faults.lostCommands) && (silentAfter == 0 || sent < silentAfter);
    if (arrives) answer(data);
    const Time deadline = clock_ + timeout;
    QByteArray received;
    while (!onTheWay_.empty() && onTheWay_.front().due <= deadline) {
      clock_ = std::max(clock_, onTheWay_.front().due);
      received += onTheWay_.front().bytes;
      onTheWay_.pop_front();
      if (rule(received)) return {Heard::Kind::Response, received};
    }
    clock_ = deadline;
    return {Heard::Kind::TimedOut, {}};
  }
  void pause(Time duration) override { clock_ += duration; }
  Time now() const override { return clock_; }
  QString name() const override { return QStringLiteral("usbserial-test"); }

  /// Has these bytes come so much later.
  void deliver(const QByteArray &bytes, Time after) { onTheWay_.push_back({clock_ + after, bytes}); }

  BridgeFaults faults;
  std::array<int, 21> registers{};  ///< the sixteen bits of each, by number
  int position = 512;
  char servos = 1;
  bool blocked = false;  ///< the shaft does not move
  int silentAfter = 0;   ///< this command and all later ones are lost; 0: none is
  int stuck = 0;         ///< a register that takes values and does not keep them
  int refused = 0;       ///< a register whose values are refused
  int refusedCode = 0;   ///< a command that is unknown
  bool answersWrites = true;
  Time deafUntil{0};  ///< all that comes before is lost
  int goal = 0;
  int sent = 0;
  std::vector<Time> askedAt;

 private:
  struct Piece {
    Time due;
    QByteArray bytes;
  };

  unsigned draw(unsigned below) { return static_cast<unsigned>(random_() % below); }
  bool happens(unsigned percent) { return draw(100) < percent; }

  /// Nobody hears what comes while nothing is asked.
  void dropWhatCame() {
    while (!onTheWay_.empty() && onTheWay_.front().due <= clock_) onTheWay_.pop_front();
  }

  void answer(const QByteArray &data) {
    ASSERT_EQ(data.size(), 50);
    const QByteArray reply = replyTo(data);
    if (reply.isEmpty()) return;
    if (happens(faults.lostReplies)) return;
    Time due = clock_ + Time(1);
    if (faults.longestDelay_ms > 0) due += Time(draw(static_cast<unsigned>(faults.longestDelay_ms)));
    if (!onTheWay_.empty()) due = std::max(due, onTheWay_.back().due);
    if (happens(faults.noisyReplies)) {
      QByteArray noise;
      // Start marks and lengths, which look most like a frame.
      for (unsigned i = draw(6) + 1; i > 0; --i) noise += "\xFF\x07\x91\x05\xFE\x92"[draw(6)];
      onTheWay_.push_back({due, noise});
    }
    // In two pieces, the second of which may be late by itself.
    const auto cut = static_cast<qsizetype>(draw(static_cast<unsigned>(reply.size())));
    onTheWay_.push_back({due, reply.first(cut)});
    onTheWay_.push_back({due + Time(faults.longestDelay_ms > 0 ? draw(20) : 0), reply.sliced(cut)});
  }

  QByteArray replyTo(const QByteArray &data) {
    const auto byte = [&](qsizetype index) { return static_cast<unsigned char>(data[index]); };
    if (refusedCode == byte(2)) return QByteArray("\xFF\x05\xF9\x00\xFE", 5);
    switch (byte(2)) {
      case 0x90:
        return QByteArray("\xFF\x05\x90", 3) + servos + '\xFE';
      case 0x91: {
        if (faults.error) return QByteArray("\xFF\x05\xF9", 3) + static_cast<char>(*faults.error) + '\xFE';
        const int value = registers[byte(3)];
        return QByteArray("\xFF\x07\x91", 3) + data[3] + static_cast<char>(value >> 8) +
               static_cast<char>(value & 0xFF) + '\xFE';
      }
      case 0x92:
        if (refused == byte(3)) return QByteArray("\xFF\x05\xF9\x03\xFE", 5);
        if (stuck != byte(3)) registers[byte(3)] = byte(4) * 256 + byte(5);
        return answersWrites ? QByteArray("\xFF\x05\x92", 3) + data[3] + '\xFE' : QByteArray();
      case 0x96:
        goal = byte(3) * 256 + byte(4);
        if (!blocked) position = goal;
        return QByteArray("\xFF\x04\x96\xFE", 4);
      case 0x97:
        return QByteArray("\xFF\x06\x97", 3) + static_cast<char>(position >> 8) +
               static_cast<char>(position & 0xFF) + '\xFE';
      default:
        return QByteArray("\xFF\x04", 2) + data[2] + '\xFE';
    }
  }

  std::mt19937 random_;
  Time clock_{0};
  std::deque<Piece> onTheWay_;
};

}  // namespace tavril::cli
