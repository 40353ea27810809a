#include "doctor/Heard.h"

#include "platform/Bytes.h"
#include "wire/Frames.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace tavril::doctor {

namespace {

bool isGreeting(wire::Bytes bytes) {
  return std::ranges::all_of(bytes,
                             [](std::uint8_t c) { return (c >= ' ' && c <= '~') || c == '\r' || c == '\n'; });
}

}  // namespace

Heard Heard::in(const QByteArray &received) {
  constexpr qsizetype shown = 16;
  Heard heard;
  heard.bytes = received.size();
  heard.beginning = received.first(std::min(shown, received.size()));
  const wire::Bytes all = asBytes(received);
  std::size_t at = 0;
  while (at < all.size()) {
    const wire::Bytes rest = all.subspan(at);
    const std::optional<wire::Reply> reply = wire::replyAt(rest);
    if (!reply && wire::mayBeginReply(rest)) {
      heard.isUnfinished = true;
      break;
    }
    if (!reply) {
      ++heard.noise;
      ++at;
      continue;
    }
    if (!heard.isFrame && isGreeting(all.first(at))) heard.noise = 0;
    heard.isFrame = true;
    if (reply->code() == wire::CommandCode::InitServo) heard.servos = reply->servos();
    if (reply->code() == wire::CommandCode::ErrorMessage) heard.error = reply->error();
    at += reply->frame.size();
  }
  return heard;
}

}  // namespace tavril::doctor
