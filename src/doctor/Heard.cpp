#include "doctor/Heard.h"

#include "protocol/Frames.h"
#include "protocol/ReplyFrame.h"

namespace tavril::doctor {

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
    if (length == 0) {
      ++heard.noise;
      ++at;
      continue;
    }
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
