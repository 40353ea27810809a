#pragma once

#include "app/ReplyDelivery.h"
#include "serial/DeliveryAssembler.h"

#include <QByteArray>

#include <chrono>
#include <deque>
#include <span>
#include <vector>

namespace tavril {

using Deliveries = std::vector<QByteArray>;

struct TimedRead {
  std::chrono::milliseconds after{0};  ///< since the read before
  QByteArray bytes;
};

/// What the assembler makes of these reads under the rule for replies, when each is added as it comes. In the
/// end all time is over.
inline Deliveries assembledDeliveries(const std::vector<TimedRead> &reads) {
  DeliveryAssembler assembler(replyDeliveryRule());
  Deliveries deliveries;
  const auto takeAll = [&] {
    while (auto delivery = assembler.next()) deliveries.push_back(*delivery);
  };
  DeliveryAssembler::Time now{std::chrono::hours(1)};
  const auto passTime = [&](std::chrono::milliseconds time) {
    now += time;
    while (assembler.isWaiting() && assembler.timeLeft(now).count() == 0) {
      deliveries.push_back(assembler.takeFirstRead());
      takeAll();
    }
  };
  for (const TimedRead &read : reads) {
    passTime(read.after);
    assembler.add(
        std::as_bytes(std::span(read.bytes.constData(), static_cast<std::size_t>(read.bytes.size()))), now);
    takeAll();
  }
  passTime(std::chrono::hours(1));
  return deliveries;
}

/// The same, reckoned in another way: all reads are known from the beginning, and only the one in front is
/// decided upon. Either a whole reply begins with it, or it is delivered as it came.
inline Deliveries modelDeliveries(const std::vector<TimedRead> &reads) {
  struct Piece {
    std::chrono::milliseconds at;
    QByteArray bytes;
  };
  constexpr std::chrono::milliseconds longestWait{20};
  // How long the whole reply is that the bytes begin with. 0: they begin none. -1: the rest is missing.
  const auto wholeReply = [](const QByteArray &bytes) -> qsizetype {
    if (bytes[0] != '\xFF') return 0;
    if (bytes.size() == 1) return -1;
    const int length = static_cast<unsigned char>(bytes[1]);
    if (length < 4 || length > 7) return 0;
    if (bytes.size() < length) return -1;
    return bytes[length - 1] == '\xFE' ? length : 0;
  };

  std::deque<Piece> line;
  std::chrono::milliseconds now{0};
  for (const TimedRead &read : reads) line.push_back({now += read.after, read.bytes});
  Deliveries deliveries;
  while (!line.empty()) {
    QByteArray joined = line[0].bytes;
    std::size_t last = 0;
    while (wholeReply(joined) < 0 && last + 1 < line.size()) {
      const Piece &following = line[last + 1];
      if (following.at >= line[0].at + longestWait || wholeReply(following.bytes) > 0) break;
      joined += following.bytes;
      ++last;
    }
    const qsizetype length = wholeReply(joined);
    if (length <= 0) {
      deliveries.push_back(line[0].bytes);
      line.pop_front();
      continue;
    }
    deliveries.push_back(joined.first(length));
    const Piece rest{line[last].at, joined.sliced(length)};
    line.erase(line.begin(), line.begin() + static_cast<std::ptrdiff_t>(last) + 1);
    if (!rest.bytes.isEmpty()) line.push_front(rest);
  }
  return deliveries;
}

}  // namespace tavril
