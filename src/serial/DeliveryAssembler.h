#pragma once

#include <QByteArray>

#include <chrono>
#include <cstddef>
#include <memory>
#include <optional>
#include <span>
#include <vector>

namespace tavril {

struct DeliveryRule;

/// What was read and is not delivered yet. Without a rule every read is one delivery; with one, pieces are
/// put together and what is glued is parted as the rule says. What turns out to be no piece is delivered as
/// it was read. Knows no clock but the times it is given. For one thread.
class DeliveryAssembler {
 public:
  using Time = std::chrono::steady_clock::time_point;

  /// No delivery is larger, and no more than this is ever kept.
  static constexpr std::size_t largestDelivery = 1024;

  /// `rule`: none leaves everything as it comes.
  explicit DeliveryAssembler(std::shared_ptr<const DeliveryRule> rule);

  /// How many bytes may be added: at least one once next() has nothing more to give.
  std::size_t room() const { return largestDelivery - static_cast<std::size_t>(held_.size()); }
  /// One read, of at least one byte.
  void add(std::span<const std::byte> bytes, Time now);
  /// The next delivery, as long as there is one for which nothing more has to come.
  std::optional<QByteArray> next();

  /// Whether a beginning waits for its rest, and how long it still may; none once its time is over.
  bool isWaiting() const { return !reads_.empty(); }
  std::chrono::milliseconds timeLeft(Time now) const;
  /// When the first byte of what is there was read; only while there is something.
  Time firstCame() const { return reads_.front().came; }
  /// The first of what is there as it was read, whatever the rule would say: its rest has not come in time,
  /// or never will. What was read after it is judged anew.
  QByteArray takeFirstRead();

 private:
  struct Read {
    qsizetype size = 0;
    Time came{};
    bool beginsWithWhole = false;  // by itself; not asked of a read that nothing was held in front of
  };

  bool canAsk() const;
  bool hasWholeReadWithin(qsizetype count) const;
  QByteArray takeFirst(qsizetype count);

  std::shared_ptr<const DeliveryRule> rule_;
  QByteArray held_;
  std::vector<Read> reads_;  // of which held_ consists
  bool isJudged_ = false;    // as the beginning of something
};

}  // namespace tavril
