#include "app/ReplyDelivery.h"

#include "protocol/Frames.h"

#include <QByteArray>

#include <chrono>
#include <cstdint>

namespace tavril {

namespace {

/// More than the 16 ms for which an adapter may hold the rest, and less than anybody notices.
constexpr std::chrono::milliseconds longestWait{20};

std::uint8_t byteAt(const QByteArray &bytes, qsizetype place) {
  return static_cast<std::uint8_t>(bytes[place]);
}

DeliveryRule::Verdict judge(const QByteArray &bytes) {
  if (byteAt(bytes, FrameByte::start) != startMark) return DeliveryRule::Verdict::asItIs();
  if (bytes.size() <= qsizetype(FrameByte::length)) return DeliveryRule::Verdict::moreToCome();
  const qsizetype length = byteAt(bytes, FrameByte::length);
  const bool isLengthOfAReply = length >= qsizetype(shortestReply) && length <= qsizetype(longestReply);
  if (!isLengthOfAReply) return DeliveryRule::Verdict::asItIs();
  if (bytes.size() < length) return DeliveryRule::Verdict::moreToCome();
  if (byteAt(bytes, length - 1) != endMark) return DeliveryRule::Verdict::asItIs();
  return DeliveryRule::Verdict::whole(length);
}

}  // namespace

std::shared_ptr<const DeliveryRule> replyDeliveryRule() {
  return std::make_shared<const DeliveryRule>(DeliveryRule{judge, longestWait});
}

}  // namespace tavril
