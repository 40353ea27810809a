#pragma once

#include "records/Crc32.h"
#include "records/HistoryLines.h"

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <random>
#include <string>
#include <utility>
#include <vector>

namespace tavril::records {

inline constexpr RawSettings someSettings{1, 2, 0, 1, 70, 90, 140, 400, 440, 0, 120, 100, 100, 100, -3};

/// Some settings, with another value of one register.
inline RawSettings settingsWith(int number, int value) {
  RawSettings settings = someSettings;
  settings.at(static_cast<std::size_t>(number) - 1) = value;
  return settings;
}

inline constexpr std::chrono::sys_seconds someTime{std::chrono::seconds(1'772'600'767)};

inline EntryLine entryWith(const RawSettings &settings, Reason why = Reason::ReadOut) {
  return {0, someTime, why, "usbserial-A1", "tavril 0.9.1", settings};
}

inline LineNumber &numberOf(HistoryLine &line) {
  return std::visit([](auto &known) -> LineNumber & { return known.number; }, line);
}

/// The line with its number, and its line break.
inline std::string numbered(HistoryLine line, LineNumber number) {
  numberOf(line) = number;
  return textOf(line) + '\n';
}

/// Ends any content with its checksum, as a line ends.
inline std::string sealed(const std::string &content) {
  std::array<char, 9> digits{};
  std::snprintf(digits.data(), digits.size(), "%08x", static_cast<unsigned>(crc32(content)));
  return content + ",\"crc\":\"" + digits.data() + "\"}";
}

/// Lines as a long life makes them: with texts of any characters, and numbers up to their ends.
class RandomLines {
 public:
  explicit RandomLines(std::uint32_t seed) : random_(seed) {}

  /// A line with this number, about those before it.
  HistoryLine line(LineNumber number) {
    const std::chrono::sys_seconds time{std::chrono::seconds(upTo(4'000'000'000))};
    switch (upTo(5)) {
      case 0:
        return NameLine{number, time, text(), numbersBelow(number)};
      case 1:
        return PlanBeginLine{number, time, text(), text(), settings(), settings()};
      case 2:
        return PlanEndLine{number, time, 1 + upTo(number),
                           static_cast<PlanOutcome>(upTo(static_cast<int>(PlanOutcome::Other))), text()};
      default:
        return EntryLine{number, time,   static_cast<Reason>(upTo(static_cast<int>(Reason::Other))),
                         text(), text(), settings()};
    }
  }
  /// From 0; both ends belong to it.
  std::int64_t upTo(std::int64_t highest) {
    return std::uniform_int_distribution<std::int64_t>(0, highest)(random_);
  }

 private:
  std::string text() {
    static constexpr auto pieces =
        std::to_array<const char *>({"a", "Z", " ", "\"", "\\", "\n", "\r", "\t", "\x01", "{", "}",
                                     ",\"crc\":\"", "ü", "髖", "🦿", "\x7f"});
    std::string made;
    for (std::int64_t length = upTo(12); length > 0; --length) {
      made += pieces.at(static_cast<std::size_t>(upTo(pieces.size() - 1)));
    }
    return made;
  }
  std::vector<LineNumber> numbersBelow(LineNumber number) {
    std::vector<LineNumber> all(static_cast<std::size_t>(upTo(5)));
    for (LineNumber &one : all) one = 1 + upTo(number);
    return all;
  }
  RawSettings settings() {
    RawSettings all{};
    for (int &value : all) value = static_cast<int>(upTo(131070)) - 65535;
    return all;
  }

  std::mt19937 random_;
};

}  // namespace tavril::records
