#pragma once

#include <QByteArray>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdint>
#include <initializer_list>
#include <iterator>
#include <random>
#include <utility>
#include <vector>

namespace tavril {

/// The other side of a bad line, written by hand for tests: a servo that answers each command with a number
/// that tells which command it answers, and a line on which answers are lost, late, cut, doubled or
/// surrounded by noise. It answers in order and never later than 100 ms.
class FaultyServo {
 public:
  using Time = std::chrono::steady_clock::time_point;

  /// A command, or what a reply is about: the code, and the register if the code has one.
  using Subject = std::pair<int, int>;

  struct Byte {
    char value;
    int cause;  ///< the number of the command that it answers; `noise` if it answers none
  };
  static constexpr int noise = -1;
  struct Emission {
    Time at;
    std::vector<Byte> bytes;
  };

  enum class Faults { All, OfWholeAnswers };

  /// `answersAll`: also writes and moves. Faults of whole answers leave them as they are and add nothing.
  FaultyServo(std::uint32_t seed, bool answersAll, Faults faults = Faults::All)
      : random_(seed), answersAll_(answersAll), faults_(faults) {}

  static int byteAt(const QByteArray &bytes, qsizetype at) { return static_cast<unsigned char>(bytes[at]); }
  static Subject subjectOf(const QByteArray &frame) {
    const int code = byteAt(frame, 2);
    return {code, code == 145 || code == 146 ? byteAt(frame, 3) : 0};
  }
  /// Whether the bytes are one reply to a command, error reports not counted.
  static bool isReply(const QByteArray &bytes) {
    if (bytes.size() < 4 || byteAt(bytes, 0) != 255 || byteAt(bytes, bytes.size() - 1) != 254) return false;
    static constexpr std::array<qsizetype, 8> lengths{5, 7, 5, 4, 4, 4, 4, 6};
    const int code = byteAt(bytes, 2);
    if (code == 145 && (byteAt(bytes, 3) < 1 || byteAt(bytes, 3) > 20)) return false;
    return code >= 144 && code <= 151 && bytes.size() == lengths[static_cast<std::size_t>(code - 144)] &&
           bytes.size() == byteAt(bytes, 1);
  }
  /// Whether the value in the reply is that of the command with this number.
  static bool isValueOf(const QByteArray &reply, int number) {
    if (byteAt(reply, 2) == 145) return byteAt(reply, 4) * 250 + byteAt(reply, 5) == number % 62'500;
    if (byteAt(reply, 2) == 151) return byteAt(reply, 3) * 256 + byteAt(reply, 4) == number % 1000;
    return true;
  }

  /// What comes of the command with this number.
  std::vector<Emission> answersTo(const QByteArray &command, int number, Time now) {
    QByteArray reply = replyTo(command, number);
    int fault = below(100);
    if (faults_ == Faults::OfWholeAnswers && fault >= 18) fault = 99;
    if (reply.isEmpty() || fault < 6) return {};
    const bool isLate = fault < 12;
    Time at = std::max(last_, now + (isLate ? someTime(8, 80) : someTime(1, 8)));
    last_ = at;
    if (fault == 12) reply = QByteArray::fromHex("FF05F904FE");  // an error report
    std::vector<Byte> bytes = caused(reply, number);
    if (fault >= 13 && fault < 18) {  // a copy
      std::ranges::copy(caused(reply, number), std::back_inserter(bytes));
    } else if (fault >= 18 && fault < 23) {  // cut in two
      const auto cut = bytes.begin() + 1 + below(static_cast<int>(bytes.size()) - 1);
      last_ = at + someTime(1, 4);  // and an adapter may hold the rest for 15 ms more
      return {{at, {bytes.begin(), cut}}, {last_, {cut, bytes.end()}}};
    } else if (fault >= 23 && fault < 26) {
      bytes.insert(bytes.begin(), 1, {'\x41', noise});
    } else if (fault >= 26 && fault < 30) {
      std::ranges::copy(someNoise(), std::back_inserter(bytes));
    } else if (fault >= 30 && fault < 34) {
      return {{at, someNoise()}, {at, bytes}};
    }
    return {{at, bytes}};
  }

  std::vector<Byte> someNoise() {
    static const std::vector<QByteArray> kinds{"\xFF", "\xFF\x05",          "\xFF\x07\x91", "\xFE",
                                               "A",    QByteArray(3, '\0'), "\xFF\xFF"};
    return caused(kinds[static_cast<std::size_t>(below(static_cast<int>(kinds.size())))], noise);
  }

 private:
  int below(int end) { return static_cast<int>(random_() % static_cast<unsigned>(end)); }
  std::chrono::microseconds someTime(int least_ms, int most_ms) {
    return std::chrono::microseconds(least_ms * 1000 + below((most_ms - least_ms) * 1000));
  }
  static std::vector<Byte> caused(const QByteArray &bytes, int cause) {
    std::vector<Byte> all;
    for (const char byte : bytes) all.push_back({byte, cause});
    return all;
  }
  QByteArray replyTo(const QByteArray &command, int number) const {
    const auto bytes = [](std::initializer_list<int> values) {
      QByteArray all;
      for (const int value : values) all.append(static_cast<char>(value));
      return all;
    };
    const auto [code, registerNumber] = subjectOf(command);
    switch (code) {
      case 144:
        return bytes({255, 5, 144, 1, 254});
      case 145:
        return bytes({255, 7, 145, registerNumber, number % 62'500 / 250, number % 250, 254});
      case 146:
        return answersAll_ ? bytes({255, 5, 146, registerNumber, 254}) : QByteArray();
      case 147:
        return QByteArray();
      case 151:
        return bytes({255, 6, 151, number % 1000 / 256, number % 1000 % 256, 254});
      default:
        return answersAll_ ? bytes({255, 4, code, 254}) : QByteArray();
    }
  }

  std::mt19937 random_;
  const bool answersAll_;
  const Faults faults_;
  Time last_{};
};

}  // namespace tavril
