#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <variant>
#include <vector>

/// What goes over the line, as bytes and numbers; docs/protocol.md describes it.
namespace tavril::wire {

using Bytes = std::span<const std::uint8_t>;

/// Every transmission is the whole buffer: the frame, then zeros. Kept: C8.
inline constexpr std::size_t commandBufferSize = 50;
using CommandBuffer = std::array<std::uint8_t, commandBufferSize>;

/// Where a frame's bytes stand. The length counts both marks.
namespace FrameByte {
inline constexpr std::size_t start = 0;
inline constexpr std::size_t length = 1;
inline constexpr std::size_t code = 2;
inline constexpr std::size_t firstData = 3;
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

/// One command: how many parameter bytes it sends and how many data bytes its reply has.
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

/// The row of this code, or nothing.
constexpr const FrameRow *findFrameRow(CommandCode code) {
  const auto *row = std::ranges::find(frameTable, code, &FrameRow::code);
  return row == frameTable.end() ? nullptr : row;
}

// ------------------------------------------------------------------------------------------------ commands

/// One command to the bridge. No range is checked.
struct Command {
  CommandCode code = CommandCode::InitServo;
  std::array<std::uint8_t, 3> parameters{};  ///< as many as the command has, then zeros

  static Command detect() { return {}; }
  static Command readRegister(int number);
  /// A signed register gets its low byte with the sign extended, the others quotient and remainder by 256.
  static Command writeRegister(int number, int value);
  /// Bits of the position above 15 are dropped.
  static Command setPosition(int position);
  static Command readPosition() { return {CommandCode::ReadServoPosition}; }
  static Command reportError(int error);

  /// The register that the command names, or 0.
  int registerNumber() const;
  /// The number of two bytes that the command sends last: a value or a position. 0 if it sends none.
  int word() const;

  bool operator==(const Command &) const = default;
};

/// The command as it goes over the line.
CommandBuffer encode(const Command &command);
/// The frame in a buffer, without the zeros behind it.
Bytes frameIn(const CommandBuffer &buffer);

/// Why bytes are not the frame of a command. The first reason counts, in this order.
enum class CommandProblem { TooShort, StartMark, EndMark, LengthByte, Code, LengthOfCode };
/// The command whose frame the bytes are. What its parameters say is not checked.
std::variant<Command, CommandProblem> commandFrom(Bytes frame);

// ------------------------------------------------------------------------------------------------- replies

struct Lengths {
  std::size_t shortest;
  std::size_t longest;
};
inline constexpr Lengths anyLength{0, 255};
/// Of the replies in the table.
inline constexpr Lengths replyLengths{std::ranges::min(frameTable, {}, &FrameRow::replyLength).replyLength(),
                                      std::ranges::max(frameTable, {}, &FrameRow::replyLength).replyLength()};

/// What bytes begin with, as far as marks and length byte tell.
struct FoundFrame {
  enum class Kind {
    None,
    Beginning,  ///< all the bytes are the beginning of a frame
    Whole,      ///< the first `length` bytes are a frame
  };
  Kind kind = Kind::None;
  std::size_t length = 0;  ///< of a whole frame
};
FoundFrame frameAt(Bytes bytes, Lengths lengths = anyLength);
/// Whether the bytes are one frame, from mark to mark.
bool isFrame(Bytes bytes);
bool hasStartMark(Bytes bytes);
/// The code in the place where a frame has it; nothing if the bytes are fewer than a frame has.
std::optional<CommandCode> codeIn(Bytes bytes);

/// A well-formed reply: a code that there is, the length that replies of this code have, and data that the
/// protocol allows. The functions for the data are for the replies that have them.
struct Reply {
  std::vector<std::uint8_t> frame;

  CommandCode code() const { return static_cast<CommandCode>(frame[FrameByte::code]); }
  int servos() const { return frame[FrameByte::firstData]; }  ///< 0, 1, or 2 for several
  int error() const { return frame[FrameByte::firstData]; }
  int position() const;
  /// The register that the reply names, or 0.
  int registerNumber() const;
  /// The value of this register.
  int value() const;
  /// The commands of a code are told apart by their registers, and replies as well.
  bool answers(const Command &command) const;

  bool operator==(const Reply &) const = default;
};

/// The reply that the bytes begin with, or nothing.
std::optional<Reply> replyAt(Bytes bytes);
/// Whether all the bytes are the beginning of a reply whose rest may follow.
bool mayBeginReply(Bytes bytes);

}  // namespace tavril::wire
