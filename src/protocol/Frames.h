#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>

namespace tavril {

inline constexpr std::uint8_t startMark = 0xFF;
inline constexpr std::uint8_t endMark = 0xFE;

/// Every transmission is the whole buffer: the frame, then zeros. Kept: C8.
inline constexpr std::size_t commandBufferSize = 50;
using CommandBuffer = std::array<std::uint8_t, commandBufferSize>;

/// Where a frame's bytes stand. The length counts both marks; parameters begin at byte 3.
namespace FrameByte {
inline constexpr std::size_t start = 0;
inline constexpr std::size_t length = 1;
inline constexpr std::size_t code = 2;
inline constexpr std::size_t firstParameter = 3;
}  // namespace FrameByte

enum class CommandCode : std::uint8_t {
  InitServo = 144,
  ReadServoSettingValue = 145,
  WriteServoSettingValue = 146,
  ReleaseServo = 147,
  RebootServo = 148,
  ResetServo = 149,
  SetServoPosition = 150,
  ReadServoPosition = 151,
  ErrorMessage = 249,
};

/// One command: how many parameter bytes it sends and how many data bytes the decoder reads from its reply.
struct FrameRow {
  CommandCode code;
  std::size_t parameters;
  std::size_t replyData;

  constexpr std::size_t length() const { return parameters + 4; }
  constexpr std::size_t replyLength() const { return replyData + 4; }
  /// How many bytes of a reply the decoder needs: all but the end mark.
  constexpr std::size_t replyPlaces() const { return replyData + 3; }
};

inline constexpr std::array<FrameRow, 9> frameTable{{
    {CommandCode::InitServo, 0, 1},
    {CommandCode::ReadServoSettingValue, 1, 3},
    {CommandCode::WriteServoSettingValue, 3, 1},
    {CommandCode::ReleaseServo, 0, 0},
    {CommandCode::RebootServo, 0, 0},
    {CommandCode::ResetServo, 0, 0},
    {CommandCode::SetServoPosition, 2, 0},
    {CommandCode::ReadServoPosition, 0, 2},
    {CommandCode::ErrorMessage, 1, 1},
}};

/// Of the replies in the table.
inline constexpr std::size_t shortestReply =
    std::ranges::min(frameTable, {}, &FrameRow::replyLength).replyLength();
inline constexpr std::size_t longestReply =
    std::ranges::max(frameTable, {}, &FrameRow::replyLength).replyLength();

constexpr const FrameRow &frameRow(CommandCode code) {
  std::size_t at = 0;
  while (frameTable[at].code != code) ++at;
  return frameTable[at];
}

}  // namespace tavril
