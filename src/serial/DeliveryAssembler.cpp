#include "serial/DeliveryAssembler.h"

#include "serial/DeliveryRule.h"

#include <algorithm>
#include <utility>

namespace tavril {

using Kind = DeliveryRule::Verdict::Kind;

DeliveryAssembler::DeliveryAssembler(std::shared_ptr<const DeliveryRule> rule) : rule_(std::move(rule)) {}

bool DeliveryAssembler::canAsk() const {
  return rule_ && rule_->judge;
}

void DeliveryAssembler::add(std::span<const std::byte> bytes, Time now) {
  const QByteArray read(reinterpret_cast<const char *>(bytes.data()), static_cast<qsizetype>(bytes.size()));
  const bool isBehindOthers = !reads_.empty();
  reads_.push_back({read.size(), now, isBehindOthers && canAsk() && rule_->judge(read).kind == Kind::Whole});
  held_.append(read);
  isJudged_ = false;
}

std::optional<QByteArray> DeliveryAssembler::next() {
  if (reads_.empty() || isJudged_) return std::nullopt;
  if (!canAsk()) return takeFirstRead();
  const DeliveryRule::Verdict verdict = rule_->judge(held_);
  switch (verdict.kind) {
    case Kind::Whole:
      // A rule that counts wrong must neither lose bytes nor give the same answer for ever.
      if (verdict.count <= 0 || verdict.count > held_.size() || hasWholeReadWithin(verdict.count)) break;
      return takeFirst(verdict.count);
    case Kind::MoreToCome:
      if (room() == 0 || hasWholeReadWithin(held_.size())) break;
      isJudged_ = true;
      return std::nullopt;
    case Kind::AsItIs:
      break;
  }
  return takeFirstRead();
}

/// Whether a read that begins with a whole delivery would be taken for a piece of the first so many bytes.
bool DeliveryAssembler::hasWholeReadWithin(qsizetype count) const {
  qsizetype begin = 0;
  return std::ranges::any_of(reads_, [&](const Read &read) {
    const bool isWithin = begin > 0 && begin < count;
    begin += read.size;
    return isWithin && read.beginsWithWhole;
  });
}

std::chrono::milliseconds DeliveryAssembler::timeLeft(Time now) const {
  if (!rule_ || reads_.empty()) return {};
  const auto left =
      std::chrono::ceil<std::chrono::milliseconds>(reads_.front().came + rule_->longestWait - now);
  return std::max(left, std::chrono::milliseconds(0));
}

QByteArray DeliveryAssembler::takeFirstRead() {
  return takeFirst(reads_.empty() ? 0 : reads_.front().size);
}

QByteArray DeliveryAssembler::takeFirst(qsizetype count) {
  isJudged_ = false;
  QByteArray first = held_.first(count);
  held_.remove(0, count);
  auto left = reads_.begin();
  while (left != reads_.end() && count >= left->size) count -= (left++)->size;
  if (left != reads_.end()) left->size -= count;
  reads_.erase(reads_.begin(), left);
  return first;
}

}  // namespace tavril
