#include "app/ReplyDelivery.h"

#include "platform/Bytes.h"
#include "wire/Frames.h"

#include <QByteArray>

#include <chrono>

namespace tavril {

namespace {

/// Longer than the 16 ms for which an adapter may keep the rest, and too short to be noticed.
constexpr std::chrono::milliseconds longestWait{20};

DeliveryRule::Verdict judge(const QByteArray &bytes) {
  const wire::FoundFrame found = wire::frameAt(asBytes(bytes), wire::replyLengths);
  switch (found.kind) {
    case wire::FoundFrame::Kind::Beginning:
      return DeliveryRule::Verdict::moreToCome();
    case wire::FoundFrame::Kind::Whole:
      return DeliveryRule::Verdict::whole(static_cast<qsizetype>(found.length));
    case wire::FoundFrame::Kind::None:
      break;
  }
  return DeliveryRule::Verdict::asItIs();
}

}  // namespace

std::shared_ptr<const DeliveryRule> replyDeliveryRule() {
  return std::make_shared<const DeliveryRule>(DeliveryRule{judge, longestWait});
}

}  // namespace tavril
