#pragma once

#include "servo/MemoryLine.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <random>
#include <vector>

namespace tavril::servo {

/// What happens on the way, by chance.
struct BridgeFaults {
  unsigned lostCommands = 0;  ///< in a hundred
  unsigned lostReplies = 0;   ///< in a hundred
  unsigned noisyReplies = 0;  ///< in a hundred
  int longestDelay_ms = 0;
  std::optional<std::uint8_t> error = {};  ///< what registers are answered with instead
};

/// A bridge and its servo behind a line with faults, in time that passes only when somebody waits. Answers in
/// order, but late, or not at all, as the seed has it. Speaks in bytes of its own making.
class BridgeInTime final : public MemoryLine {
 public:
  explicit BridgeInTime(const BridgeFaults &faultsThere = {}, unsigned seed = 1)
      : MemoryLine([this](wire::Bytes sentBytes) { return hear(sentBytes); }),
        faults(faultsThere),
        random_(seed) {}

  BridgeFaults faults;
  std::function<void()> beforeEach = nullptr;  ///< called when a command arrives
  std::array<int, 21> registers{};             ///< the sixteen bits of each, by number
  int position = 512;
  std::uint8_t servos = 1;
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
  using Frame = std::vector<std::uint8_t>;

  unsigned draw(unsigned below) { return static_cast<unsigned>(random_() % below); }
  bool happens(unsigned percent) { return draw(100) < percent; }
  static std::uint8_t high(int value) { return static_cast<std::uint8_t>(value >> 8); }
  static std::uint8_t low(int value) { return static_cast<std::uint8_t>(value & 0xFF); }

  std::vector<Piece> hear(wire::Bytes data) {
    ++sent;
    askedAt.push_back(now());
    if (beforeEach) beforeEach();
    const bool arrives =
        now() >= deafUntil && !happens(faults.lostCommands) && (silentAfter == 0 || sent < silentAfter);
    return arrives ? answer(data) : std::vector<Piece>();
  }

  std::vector<Piece> answer(wire::Bytes data) {
    using std::chrono::milliseconds;
    EXPECT_EQ(data.size(), 50U);
    const Frame reply = replyTo(data);
    if (reply.empty()) return {};
    if (happens(faults.lostReplies)) return {};
    Time due = milliseconds(1);
    if (faults.longestDelay_ms > 0) due += milliseconds(draw(static_cast<unsigned>(faults.longestDelay_ms)));
    std::vector<Piece> pieces;
    if (happens(faults.noisyReplies)) {
      Frame noise;
      // Start marks and lengths, which look most like a frame.
      constexpr std::array<std::uint8_t, 6> likely{0xFF, 0x07, 0x91, 0x05, 0xFE, 0x92};
      for (unsigned i = draw(6) + 1; i > 0; --i) noise.push_back(likely[draw(6)]);
      pieces.push_back({due, noise});
    }
    // In two pieces, the second of which may be late by itself.
    const auto cut = reply.begin() + draw(static_cast<unsigned>(reply.size()));
    pieces.push_back({due, {reply.begin(), cut}});
    pieces.push_back({due + milliseconds(faults.longestDelay_ms > 0 ? draw(20) : 0), {cut, reply.end()}});
    return pieces;
  }

  Frame replyTo(wire::Bytes data) {
    if (refusedCode == data[2]) return {0xFF, 0x05, 0xF9, 0x00, 0xFE};
    switch (data[2]) {
      case 0x90:
        return {0xFF, 0x05, 0x90, servos, 0xFE};
      case 0x91: {
        if (faults.error) return {0xFF, 0x05, 0xF9, *faults.error, 0xFE};
        const int value = registers[data[3]];
        return {0xFF, 0x07, 0x91, data[3], high(value), low(value), 0xFE};
      }
      case 0x92:
        if (refused == data[3]) return {0xFF, 0x05, 0xF9, 0x03, 0xFE};
        if (stuck != data[3]) registers[data[3]] = data[4] * 256 + data[5];
        return answersWrites ? Frame{0xFF, 0x05, 0x92, data[3], 0xFE} : Frame();
      case 0x96:
        goal = data[3] * 256 + data[4];
        if (!blocked) position = goal;
        return {0xFF, 0x04, 0x96, 0xFE};
      case 0x97:
        return {0xFF, 0x06, 0x97, high(position), low(position), 0xFE};
      default:
        return {0xFF, 0x04, data[2], 0xFE};
    }
  }

  std::mt19937 random_;
};

}  // namespace tavril::servo
