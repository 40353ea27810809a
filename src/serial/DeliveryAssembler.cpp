#include "serial/DeliveryAssembler.h"

#include "serial/DeliveryRule.h"

#include <algorithm>
#include <utility>

namespace tavril {

DeliveryAssembler::DeliveryAssembler(std::shared_ptr<const DeliveryRule> rule) : rule_(std::move(rule)) {}

void DeliveryAssembler::add(std::span<const std::byte> bytes, Time now) {
  if (held_.isEmpty()) since_ = now;
  lastAdded_ = now;
  isJudged_ = false;
  held_.append(reinterpret_cast<const char *>(bytes.data()), static_cast<qsizetype>(bytes.size()));
}

std::optional<QByteArray> DeliveryAssembler::next() {
  if (held_.isEmpty() || isJudged_) return std::nullopt;
  if (!rule_ || !rule_->judge) return takeAsItIs();
  const DeliveryRule::Verdict verdict = rule_->judge(held_);
  switch (verdict.kind) {
    case DeliveryRule::Verdict::Kind::Whole:
      // A rule that counts wrong must neither lose bytes nor give the same answer for ever.
      if (verdict.count > 0 && verdict.count < held_.size()) return takeFirst(verdict.count);
      break;
    case DeliveryRule::Verdict::Kind::MoreToCome:
      if (room() == 0) break;
      isJudged_ = true;
      return std::nullopt;
    case DeliveryRule::Verdict::Kind::AsItIs:
      break;
  }
  return takeAsItIs();
}

std::chrono::milliseconds DeliveryAssembler::timeLeft(Time now) const {
  if (!rule_) return {};
  const auto left = std::chrono::ceil<std::chrono::milliseconds>(since_ + rule_->longestWait - now);
  return std::max(left, std::chrono::milliseconds(0));
}

QByteArray DeliveryAssembler::takeAsItIs() {
  isJudged_ = false;
  return std::exchange(held_, {});
}

QByteArray DeliveryAssembler::takeFirst(qsizetype count) {
  QByteArray first = held_.first(count);
  held_.remove(0, count);
  since_ = lastAdded_;  // what is left came with the last read, or was only now seen to begin something
  return first;
}

}  // namespace tavril
