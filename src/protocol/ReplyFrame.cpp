#include "protocol/ReplyFrame.h"

#include "protocol/Frames.h"
#include "protocol/RegisterCatalogue.h"

#include <algorithm>

namespace tavril {

namespace {

constexpr int highestPosition = 1023;
constexpr int severalServos = 2;

int byteAt(QByteArrayView bytes, std::size_t index) {
  return static_cast<unsigned char>(bytes[static_cast<qsizetype>(index)]);
}

const FrameRow *rowOf(int code) {
  const auto *row = std::ranges::find(frameTable, static_cast<CommandCode>(code), &FrameRow::code);
  return row == frameTable.end() ? nullptr : row;
}

bool dataIsAllowed(CommandCode code, QByteArrayView frame) {
  const auto first = FrameByte::firstParameter;
  switch (code) {
    case CommandCode::InitServo:
      return byteAt(frame, first) <= severalServos;
    case CommandCode::ReadServoSettingValue:
      return findRegister(byteAt(frame, first)) != nullptr;
    case CommandCode::WriteServoSettingValue: {
      const RegisterRow *row = findRegister(byteAt(frame, first));
      return row && row->isSetting();
    }
    case CommandCode::ReadServoPosition:
      return byteAt(frame, first) * 256 + byteAt(frame, first + 1) <= highestPosition;
    default:
      return true;
  }
}

}  // namespace

qsizetype replyLengthAt(QByteArrayView bytes) {
  if (bytes.size() <= static_cast<qsizetype>(FrameByte::code)) return 0;
  const FrameRow *row = rowOf(byteAt(bytes, FrameByte::code));
  if (!row || byteAt(bytes, FrameByte::start) != startMark) return 0;
  const int length = byteAt(bytes, FrameByte::length);
  // Nobody looks at what a reply to a release carries, so it may carry anything.
  const bool lengthFits = row->code == CommandCode::ReleaseServo
                              ? length >= static_cast<int>(row->replyLength())
                              : length == static_cast<int>(row->replyLength());
  if (!lengthFits || length > bytes.size()) return 0;
  const QByteArrayView frame = bytes.first(length);
  if (byteAt(frame, static_cast<std::size_t>(length) - 1) != endMark) return 0;
  return dataIsAllowed(row->code, frame) ? length : 0;
}

}  // namespace tavril
