#include "servo/MemoryLine.h"

#include <algorithm>
#include <utility>

namespace tavril::servo {

MemoryLine::MemoryLine(Answer answer) : answer_(std::move(answer)) {}

Received MemoryLine::request(wire::Bytes data, Time timeout, Rule rule) {
  // Nobody hears what comes while nothing is asked.
  while (!onTheWay_.empty() && onTheWay_.front().at <= clock_) onTheWay_.pop_front();
  Received received;
  received.sentAt = clock_;
  received.end = Received::End::Cancelled;
  if (cancelled_) return received;
  for (Piece &piece : answer_(data)) deliver(std::move(piece));
  if (cancelled_) return received;
  received.end = Received::End::TimedOut;
  const Time deadline = clock_ + timeout;
  while (!onTheWay_.empty() && onTheWay_.front().at <= deadline) {
    const Arrival arrival = std::move(onTheWay_.front());
    onTheWay_.pop_front();
    clock_ = std::max(clock_, arrival.at);
    received.arrivedAt = clock_;
    received.bytes.insert(received.bytes.end(), arrival.bytes.begin(), arrival.bytes.end());
    if (rule(received.bytes)) {
      received.end = Received::End::Accepted;
      return received;
    }
  }
  clock_ = deadline;
  return received;
}

Received::End MemoryLine::pause(Time duration) {
  if (cancelled_) return Received::End::Cancelled;
  clock_ += duration;
  return Received::End::TimedOut;
}

void MemoryLine::deliver(Piece piece) {
  Time at = clock_ + piece.after;
  if (!onTheWay_.empty()) at = std::max(at, onTheWay_.back().at);
  onTheWay_.push_back({at, std::move(piece.bytes)});
}

}  // namespace tavril::servo
