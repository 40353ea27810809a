#include "doctor/Heard.h"

#include "protocol/Frames.h"
#include "protocol/ReplyFrame.h"

#include <QByteArrayView>

#include <algorithm>

namespace tavril::doctor {

namespace {

/// Whether all these bytes can be the beginning of a reply that is not complete.
bool mayBeginReply(QByteArrayView bytes) {
  const auto byteAt = [&](qsizetype index) { return static_cast<unsigned char>(bytes[index]); };
  if (byteAt(FrameByte::start) != startMark) return false;
  if (bytes.size() > static_cast<qsizetype>(FrameByte::code)) {
    const auto row =
        std::ranges::find(frameTable, static_cast<CommandCode>(byteAt(FrameByte::code)), &FrameRow::code);
    return row != frameTable.end() && byteAt(FrameByte::length) == row->replyLength() &&
           bytes.size() < byteAt(FrameByte::length);
  }
  constexpr unsigned char shortestReply = 4;
  constexpr unsigned char longestReply = 7;
  return bytes.size() <= static_cast<qsizetype>(FrameByte::length) ||
         (byteAt(FrameByte::length) >= shortestReply && byteAt(FrameByte::length) <= longestReply);
}

bool isGreeting(QByteArrayView bytes) {
  return std::ranges::all_of(bytes, [](char c) { return (c >= ' ' && c <= '~') || c == '\r' || c == '\n'; });
}

}  // namespace

Heard Heard::in(const QByteArray &received) {
  constexpr qsizetype shown = 16;
  Heard heard;
  heard.bytes = received.size();
  heard.beginning = received.first(std::min(shown, received.size()));
  const QByteArrayView all(received);
  qsizetype at = 0;
  while (at < all.size()) {
    const QByteArrayView rest = all.sliced(at);
    const qsizetype length = replyLengthAt(rest);
    if (length == 0 && mayBeginReply(rest)) {
      heard.isUnfinished = true;
      break;
    }
    if (length == 0) {
      ++heard.noise;
      ++at;
      continue;
    }
    if (!heard.isFrame && isGreeting(all.first(at))) heard.noise = 0;
    heard.isFrame = true;
    const auto code = static_cast<CommandCode>(static_cast<unsigned char>(rest[FrameByte::code]));
    const int data = static_cast<unsigned char>(rest[FrameByte::firstParameter]);
    if (code == CommandCode::InitServo) heard.servos = data;
    if (code == CommandCode::ErrorMessage) heard.error = data;
    at += length;
  }
  return heard;
}

}  // namespace tavril::doctor
