#pragma once

#include "servo/MemoryLine.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <random>
#include <set>
#include <span>
#include <utility>
#include <vector>

namespace tavril::servo {

/// What befalls a servo and its line. Commands are counted from 1.
struct Mishaps {
  unsigned lostCommands = 0;  ///< in a hundred
  unsigned lostReplies = 0;
  unsigned lateReplies = 0;
  unsigned doubledReplies = 0;

  std::set<int> refused = {};           ///< registers whose values are refused
  std::set<int> deaf = {};              ///< registers that take values and do not keep them
  std::map<int, int> instead = {};      ///< registers that keep another value than was sent
  std::set<int> forgetful = {};         ///< registers that lose their value when another one is written
  std::map<int, int> pulled = {};       ///< with the one register, the other gets the value 1
  std::optional<int> silentFrom = {};   ///< no command is answered from this one on
  bool answersDetection = false;        ///< nevertheless
  std::optional<int> powerLostAt = {};  ///< the command at which the power goes
  Time powerOffFor{0};
  bool losesLastWrite = false;  ///< with the power
  bool bridgeSaysSo = false;    ///< it reports what the servo does not answer; else it is silent
  bool obeysReplyPolicy = true;
};

/// A servo with its bridge, as bytes. It knows nothing of the program's own frames and registers.
class ModelServo final : public MemoryLine {
 public:
  explicit ModelServo(unsigned seed = 1)
      : MemoryLine([this](std::span<const std::uint8_t> sent) { return hear(sent); }), random_(seed) {}

  Mishaps mishaps;
  std::array<int, 21> registers{};
  int servos = 1;
  std::function<void(int command)> beforeCommand = nullptr;

  int commands = 0;
  int writes = 0;                  ///< that arrived
  std::set<int> sentTo = {};       ///< registers to which a write was sent, whether or not it arrived
  std::map<int, int> readAt = {};  ///< of each register, the last command that read it
  std::map<int, int> writtenAt = {};
  /// Registers that were pulled along; since then, no read of them was answered soon.
  std::set<int> pulledUnseen = {};

 private:
  using Frame = std::vector<std::uint8_t>;
  struct Write {
    int number;
    int valueBefore;
  };

  bool happens(unsigned percent) { return random_() % 100 < percent; }

  std::vector<Piece> hear(std::span<const std::uint8_t> sent) {
    using std::chrono::milliseconds;
    ++commands;
    if (beforeCommand) beforeCommand(commands);
    if (sent[2] == 0x92) {
      sentTo.insert(sent[3]);
      writtenAt[sent[3]] = commands;
    }
    if (sent[2] == 0x91) readAt[sent[3]] = commands;
    if (mishaps.powerLostAt == commands) losePower();
    if (happens(mishaps.lostCommands)) return {};
    const Frame reply = now() < powerBackAt_ ? withoutServo(sent[2]) : answerTo(sent);
    if (reply.empty() || happens(mishaps.lostReplies)) return {};
    const Time due = milliseconds(happens(mishaps.lateReplies) ? 1 + random_() % 700 : 4);
    // A reply does not overtake those before it.
    lastDue_ = std::max(lastDue_, now() + due);
    if (reply[2] == 0x91 && lastDue_ < now() + milliseconds(100)) pulledUnseen.erase(reply[3]);
    std::vector<Piece> pieces{{due, reply}};
    if (happens(mishaps.doubledReplies)) pieces.push_back({due + milliseconds(random_() % 50), reply});
    return pieces;
  }

  void losePower() {
    powerBackAt_ = now() + mishaps.powerOffFor;
    if (mishaps.losesLastWrite && lastWrite_) set(lastWrite_->number, lastWrite_->valueBefore);
    lastWrite_.reset();
  }

  Frame withoutServo(std::uint8_t code) const {
    if (!mishaps.bridgeSaysSo) return {};
    if (code == 0x90) return {0xFF, 0x05, 0x90, 0x00, 0xFE};
    return {0xFF, 0x05, 0xF9, 0x04, 0xFE};
  }
  Frame unanswered() const { return mishaps.bridgeSaysSo ? Frame{0xFF, 0x05, 0xF9, 0x01, 0xFE} : Frame(); }

  Frame answerTo(std::span<const std::uint8_t> sent) {
    const std::uint8_t code = sent[2];
    const bool isSilent = mishaps.silentFrom && commands >= *mishaps.silentFrom;
    if (isSilent && !(mishaps.answersDetection && code == 0x90)) return {};
    if (code == 0x90) return {0xFF, 0x05, 0x90, static_cast<std::uint8_t>(servos), 0xFE};
    if (servos != 1) return withoutServo(code);
    const std::uint8_t number = sent[3];
    if (code == 0x91) {
      if (mishaps.obeysReplyPolicy && registers[2] == 0) return unanswered();
      const int value = registers.at(number);
      return {0xFF,
              0x07,
              0x91,
              number,
              static_cast<std::uint8_t>(value < 0 ? 0xFF : value / 256),
              static_cast<std::uint8_t>(value & 0xFF),
              0xFE};
    }
    if (mishaps.refused.contains(number)) return {0xFF, 0x05, 0xF9, 0x03, 0xFE};
    take(number, number == 15 ? static_cast<std::int8_t>(sent[5]) : sent[4] * 256 + sent[5]);
    if (mishaps.obeysReplyPolicy && registers[2] != 2) return registers[2] == 0 ? unanswered() : Frame();
    return {0xFF, 0x05, 0x92, number, 0xFE};
  }

  void take(int number, int value) {
    ++writes;
    // With the reply policy only itself changes, as afterwards nobody may be able to look.
    if (number != 2) {
      for (const auto &[forgotten, before] : std::exchange(unsure_, {})) {
        if (forgotten != number) set(forgotten, before);
      }
    }
    const int before = registers.at(static_cast<std::size_t>(number));
    if (mishaps.forgetful.contains(number)) unsure_[number] = before;
    lastWrite_ = Write{number, before};
    if (mishaps.deaf.contains(number)) return;
    const auto other = mishaps.instead.find(number);
    set(number, other == mishaps.instead.end() ? value : other->second);
    if (number == 2) return;
    if (const auto drawn = mishaps.pulled.find(number); drawn != mishaps.pulled.end()) {
      set(drawn->second, 1);
      pulledUnseen.insert(drawn->second);
    }
  }

  void set(int number, int value) { registers.at(static_cast<std::size_t>(number)) = value; }

  std::mt19937 random_;
  std::optional<Write> lastWrite_;
  std::map<int, int> unsure_;
  Time powerBackAt_{0};
  Time lastDue_{0};
};

}  // namespace tavril::servo
