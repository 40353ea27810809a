#pragma once

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <vector>

/// The frames, written down a second time on purpose: the virtual servo shares no code with the application,
/// so that neither can hide a mistake of the other.
namespace tavril::simulator {

using Bytes = std::vector<std::uint8_t>;

namespace wire {

inline constexpr std::uint8_t startMark = 0xFF;
inline constexpr std::uint8_t endMark = 0xFE;
/// The host fills each delivery with zeros to this many bytes.
inline constexpr int deliverySize = 50;
/// The shortest frame has start mark, length, command and end mark. The longest fills a delivery.
inline constexpr std::uint8_t shortestFrame = 4;
inline constexpr std::uint8_t longestFrame = deliverySize;

/// One byte at 115200 baud, 8N1: ten bit times.
inline constexpr std::chrono::nanoseconds byteTime{86806};

inline constexpr std::uint8_t detect = 0x90;
inline constexpr std::uint8_t readRegister = 0x91;
inline constexpr std::uint8_t writeRegister = 0x92;
inline constexpr std::uint8_t release = 0x93;
inline constexpr std::uint8_t reboot = 0x94;
inline constexpr std::uint8_t factoryReset = 0x95;
inline constexpr std::uint8_t setPosition = 0x96;
inline constexpr std::uint8_t readPosition = 0x97;
inline constexpr std::uint8_t errorReport = 0xF9;

/// A command and the length its frame must have.
struct CommandRow {
  std::uint8_t code;
  std::uint8_t length;
};

inline constexpr std::array<CommandRow, 9> commands{{
    {detect, 4},
    {readRegister, 5},
    {writeRegister, 7},
    {release, 4},
    {reboot, 4},
    {factoryReset, 4},
    {setPosition, 6},
    {readPosition, 4},
    {errorReport, 5},
}};

/// Errors that the bridge reports by itself.
enum class Error : std::uint8_t {
  UnknownCommand = 0,
  TimedOut = 1,
  WrongLength = 2,
  OverRange = 3,
  LostServo = 4,
};

}  // namespace wire
}  // namespace tavril::simulator
