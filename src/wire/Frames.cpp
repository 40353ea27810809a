#include "wire/Frames.h"

#include "wire/Range.h"
#include "wire/Registers.h"

namespace tavril::wire {

namespace {

constexpr std::uint8_t startMark = 0xFF;
constexpr std::uint8_t endMark = 0xFE;
constexpr std::size_t shortestFrame = 4;
constexpr int severalServos = 2;

constexpr std::uint8_t lowByte(int value) {
  return static_cast<std::uint8_t>(value & 0xFF);
}

bool namesRegister(CommandCode code) {
  return code == CommandCode::ReadServoSettingValue || code == CommandCode::WriteServoSettingValue;
}

bool isAllowed(const Reply &reply) {
  switch (reply.code()) {
    case CommandCode::InitServo:
      return reply.servos() <= severalServos;
    case CommandCode::ReadServoSettingValue:
      return findRegister(reply.registerNumber()) != nullptr;
    case CommandCode::WriteServoSettingValue: {
      const Register *row = findRegister(reply.registerNumber());
      return row && row->isSetting();
    }
    case CommandCode::ReadServoPosition:
      return positionRange.contains(reply.position());
    default:
      return true;
  }
}

}  // namespace

Command Command::readRegister(int number) {
  return {CommandCode::ReadServoSettingValue, {lowByte(number)}};
}

Command Command::writeRegister(int number, int value) {
  std::uint8_t high = lowByte(value / 256);  // Kept: C10.
  std::uint8_t low = lowByte(value % 256);
  const Register *row = findRegister(number);
  if (row && row->reply == ReplyValue::SignedByte) {
    high = value >= 0 ? 0x00 : 0xFF;
    low = lowByte(value);
  }
  return {CommandCode::WriteServoSettingValue, {lowByte(number), high, low}};
}

Command Command::setPosition(int position) {
  return {CommandCode::SetServoPosition, {lowByte(position >> 8), lowByte(position)}};
}

Command Command::reportError(int error) {
  return {CommandCode::ErrorMessage, {lowByte(error)}};
}

int Command::registerNumber() const {
  return namesRegister(code) ? parameters[0] : 0;
}

int Command::word() const {
  if (code == CommandCode::WriteServoSettingValue) return wordOf(parameters[1], parameters[2]);
  if (code == CommandCode::SetServoPosition) return wordOf(parameters[0], parameters[1]);
  return 0;
}

CommandBuffer encode(const Command &command) {
  const FrameRow &row = *findFrameRow(command.code);
  CommandBuffer buffer{};
  buffer[FrameByte::start] = startMark;
  buffer[FrameByte::length] = static_cast<std::uint8_t>(row.length());
  buffer[FrameByte::code] = static_cast<std::uint8_t>(command.code);
  std::ranges::copy(Bytes(command.parameters).first(row.parameters), buffer.begin() + FrameByte::firstData);
  buffer[row.length() - 1] = endMark;
  return buffer;
}

Bytes frameIn(const CommandBuffer &buffer) {
  return Bytes(buffer).first(std::min<std::size_t>(buffer[FrameByte::length], buffer.size()));
}

std::variant<Command, CommandProblem> commandFrom(Bytes frame) {
  if (frame.size() < shortestFrame) return CommandProblem::TooShort;
  if (frame.front() != startMark) return CommandProblem::StartMark;
  if (frame.back() != endMark) return CommandProblem::EndMark;
  if (frame[FrameByte::length] != frame.size()) return CommandProblem::LengthByte;
  Command command{static_cast<CommandCode>(frame[FrameByte::code])};
  const FrameRow *row = findFrameRow(command.code);
  if (!row) return CommandProblem::Code;
  if (row->length() != frame.size()) return CommandProblem::LengthOfCode;
  std::ranges::copy(frame.subspan(FrameByte::firstData, row->parameters), command.parameters.begin());
  return command;
}

FoundFrame frameAt(Bytes bytes, Lengths lengths) {
  if (!hasStartMark(bytes)) return {};
  if (bytes.size() <= FrameByte::length) return {FoundFrame::Kind::Beginning};
  const std::size_t length = bytes[FrameByte::length];
  if (length <= FrameByte::code || length < lengths.shortest || length > lengths.longest) return {};
  if (bytes.size() < length) return {FoundFrame::Kind::Beginning};
  if (bytes[length - 1] != endMark) return {};
  return {FoundFrame::Kind::Whole, length};
}

bool isFrame(Bytes bytes) {
  const FoundFrame found = frameAt(bytes);
  return found.kind == FoundFrame::Kind::Whole && found.length == bytes.size();
}

bool hasStartMark(Bytes bytes) {
  return !bytes.empty() && bytes[FrameByte::start] == startMark;
}

std::optional<CommandCode> codeIn(Bytes bytes) {
  if (bytes.size() < shortestFrame) return std::nullopt;
  return static_cast<CommandCode>(bytes[FrameByte::code]);
}

int Reply::position() const {
  return wordOf(frame[FrameByte::firstData], frame[FrameByte::firstData + 1]);
}

int Reply::registerNumber() const {
  return namesRegister(code()) ? frame[FrameByte::firstData] : 0;
}

int Reply::value() const {
  return valueOf(*findRegister(registerNumber()), frame[FrameByte::firstData + 1],
                 frame[FrameByte::firstData + 2]);
}

bool Reply::answers(const Command &command) const {
  return code() == command.code && registerNumber() == command.registerNumber();
}

std::optional<Reply> replyAt(Bytes bytes) {
  const FoundFrame found = frameAt(bytes);
  if (found.kind != FoundFrame::Kind::Whole || found.length < replyLengths.shortest) return std::nullopt;
  const FrameRow *row = findFrameRow(static_cast<CommandCode>(bytes[FrameByte::code]));
  // Nobody looks at what a reply to a release carries, so it may carry anything.
  if (!row || (row->code != CommandCode::ReleaseServo && row->replyLength() != found.length)) {
    return std::nullopt;
  }
  const Bytes frame = bytes.first(found.length);
  Reply reply{{frame.begin(), frame.end()}};
  if (!isAllowed(reply)) return std::nullopt;
  return reply;
}

bool mayBeginReply(Bytes bytes) {
  if (frameAt(bytes, replyLengths).kind != FoundFrame::Kind::Beginning) return false;
  if (bytes.size() <= FrameByte::code) return true;
  const FrameRow *row = findFrameRow(static_cast<CommandCode>(bytes[FrameByte::code]));
  return row && row->replyLength() == bytes[FrameByte::length];
}

}  // namespace tavril::wire
