#include "cli/Replies.h"

#include "cli/Command.h"
#include "protocol/ReplyFrame.h"

#include <QByteArrayView>

namespace tavril::cli {

namespace {

int byteAt(QByteArrayView bytes, std::size_t index) {
  return static_cast<unsigned char>(bytes[static_cast<qsizetype>(index)]);
}

bool answers(QByteArrayView reply, const Command &command) {
  if (byteAt(reply, FrameByte::code) != static_cast<int>(command.code)) return false;
  const int number = command.registerNumber();
  return number == 0 || byteAt(reply, FrameByte::firstParameter) == number;
}

}  // namespace

ReplyScan scanForReply(const Command &command, const QByteArray &received) {
  ReplyScan scan;
  ReplyScan atError;
  const QByteArrayView bytes(received);
  qsizetype at = 0;
  while (at < bytes.size()) {
    const qsizetype length = replyLengthAt(bytes.sliced(at));
    if (length == 0) {
      scan.noise.append(bytes[at]);
      ++at;
      continue;
    }
    const QByteArray frame = received.mid(at, length);
    at += length;
    if (answers(frame, command)) {
      scan.reply = frame;
      scan.isErrorReport = false;
      return scan;
    }
    const bool isError = byteAt(frame, FrameByte::code) == static_cast<int>(CommandCode::ErrorMessage);
    if (isError && !atError.found()) {
      atError = scan;
      atError.reply = frame;
      atError.isErrorReport = true;
    }
    scan.foreign.push_back(frame);
  }
  return atError.found() ? atError : scan;
}

}  // namespace tavril::cli
