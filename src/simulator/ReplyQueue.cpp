#include "simulator/ReplyQueue.h"

#include "simulator/FrameWords.h"

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <utility>

namespace tavril::simulator {

using std::chrono::nanoseconds;

ReplyQueue::ReplyQueue(const Options &options) : options_(options), random_(options.seed) {}

void ReplyQueue::add(Bytes reply, nanoseconds readyAt) {
  const QString words = replyInWords(reply);
  if (options_.wrongLength) ++reply[1];
  Delivery delivery{reply, {inHex(reply) + QStringLiteral("  ") + words}};

  if (held_) {
    Held first = *std::exchange(held_, std::nullopt);
    first.delivery.bytes.insert(first.delivery.bytes.end(), reply.begin(), reply.end());
    std::move(delivery.lines.begin(), delivery.lines.end(), std::back_inserter(first.delivery.lines));
    schedule(std::move(first.delivery), readyAt);
  } else if (options_.glue) {
    held_ = Held{std::move(delivery), readyAt, readyAt + options_.glueWait};
  } else {
    schedule(std::move(delivery), readyAt);
  }
}

void ReplyQueue::clear() {
  queue_.clear();
  held_.reset();
  lineFree_ = nanoseconds{0};
}

std::optional<Delivery> ReplyQueue::take(nanoseconds now) {
  if (held_ && held_->deadline <= now) {
    Held lonely = *std::exchange(held_, std::nullopt);
    schedule(std::move(lonely.delivery), lonely.deadline);
  }
  if (queue_.empty() || queue_.front().due > now) return std::nullopt;
  Delivery delivery = std::move(queue_.front().delivery);
  queue_.pop_front();
  return delivery;
}

std::optional<nanoseconds> ReplyQueue::nextDue() const {
  std::optional<nanoseconds> next;
  if (held_) next = held_->deadline;
  if (!queue_.empty()) next = next ? std::min(*next, queue_.front().due) : queue_.front().due;
  return next;
}

void ReplyQueue::schedule(Delivery delivery, nanoseconds readyAt) {
  nanoseconds start = readyAt + options_.delay;
  if (options_.noise) addNoise(delivery, start);

  // Pieces of the given size, and the last byte by itself if it comes late.
  std::vector<std::size_t> cuts;
  const std::size_t size = delivery.bytes.size();
  if (options_.splitSize > 0) {
    const auto piece = static_cast<std::size_t>(options_.splitSize);
    for (std::size_t at = piece; at < size; at += piece) cuts.push_back(at);
  }
  if (options_.lateEnds && (cuts.empty() || cuts.back() != size - 1)) cuts.push_back(size - 1);
  cuts.push_back(size);

  // The log lines go with the first piece, so that they keep the order of events.
  auto lines = std::move(delivery.lines);
  std::size_t from = 0;
  for (const std::size_t to : cuts) {
    const auto begin = delivery.bytes.begin();
    Delivery piece{Bytes(begin + static_cast<std::ptrdiff_t>(from), begin + static_cast<std::ptrdiff_t>(to)),
                   std::exchange(lines, {})};
    send(std::move(piece), start);
    start = queue_.back().due + options_.splitGap;
    from = to;
  }
}

void ReplyQueue::addNoise(Delivery &delivery, nanoseconds start) {
  Bytes noise(1 + random_() % 8);
  for (std::uint8_t &byte : noise) byte = static_cast<std::uint8_t>(random_() & 0xFF);
  const QString line = inHex(noise) + QStringLiteral("  noise");
  if (random_() % 2 == 0) {
    send(Delivery{noise, {line}}, start);
  } else {
    delivery.bytes.insert(delivery.bytes.begin(), noise.begin(), noise.end());
    delivery.lines.insert(delivery.lines.begin(), line);
  }
}

void ReplyQueue::send(Delivery delivery, nanoseconds start) {
  // An adapter delivers a short reply at once, when its last byte has arrived.
  lineFree_ = std::max(lineFree_, start);
  if (options_.pace) lineFree_ += wire::byteTime * static_cast<int>(delivery.bytes.size());
  queue_.push_back({lineFree_, std::move(delivery)});
}

}  // namespace tavril::simulator
