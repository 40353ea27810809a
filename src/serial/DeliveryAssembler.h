#pragma once

#include <QByteArray>

#include <chrono>
#include <cstddef>
#include <memory>
#include <optional>
#include <span>

namespace tavril {

struct DeliveryRule;

/// What was read and is not delivered yet. Without a rule every read is one delivery; with one, pieces are
/// put together and what is glued is parted as the rule says. Knows no clock but the times it is given. For
/// one thread.
class DeliveryAssembler {
 public:
  using Time = std::chrono::steady_clock::time_point;

  /// No delivery is larger, and no more than this is ever kept.
  static constexpr std::size_t largestDelivery = 1024;

  /// `rule`: none leaves everything as it comes.
  explicit DeliveryAssembler(std::shared_ptr<const DeliveryRule> rule);

  /// How many bytes may be added: at least one once next() has nothing more to give.
  std::size_t room() const { return largestDelivery - static_cast<std::size_t>(held_.size()); }
  void add(std::span<const std::byte> bytes, Time now);
  /// The next delivery, as long as there is one for which nothing more has to come.
  std::optional<QByteArray> next();

  /// Whether a beginning waits for its rest, and how long it still may; none once its time is over.
  bool isWaiting() const { return !held_.isEmpty(); }
  std::chrono::milliseconds timeLeft(Time now) const;
  /// What is there, whatever the rule would say: its rest has not come in time, or never will.
  QByteArray takeAsItIs();

 private:
  QByteArray takeFirst(qsizetype count);

  std::shared_ptr<const DeliveryRule> rule_;
  QByteArray held_;
  bool isJudged_ = false;  // as the beginning of something
  Time lastAdded_{};
  Time since_{};  // when the first byte of what is held came
};

}  // namespace tavril
