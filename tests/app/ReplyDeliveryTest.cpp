#include "app/ReplyDelivery.h"
#include "serial/DeliveryAssembler.h"

#include <gtest/gtest.h>

#include <random>
#include <span>
#include <vector>

namespace tavril {
namespace {

using Kind = DeliveryRule::Verdict::Kind;
using Deliveries = std::vector<QByteArray>;

QByteArray hex(const char *text) {
  return QByteArray::fromHex(text);
}

DeliveryRule::Verdict judged(const char *text) {
  return replyDeliveryRule()->judge(hex(text));
}

/// What becomes of these reads when no time passes between them; what still waits at the end comes last.
Deliveries deliveriesOf(const std::vector<QByteArray> &reads) {
  DeliveryAssembler assembler(replyDeliveryRule());
  Deliveries deliveries;
  for (const QByteArray &read : reads) {
    assembler.add(std::as_bytes(std::span(read.constData(), static_cast<std::size_t>(read.size()))), {});
    while (auto delivery = assembler.next()) deliveries.push_back(*delivery);
  }
  if (assembler.isWaiting()) deliveries.push_back(assembler.takeAsItIs());
  return deliveries;
}

TEST(ReplyDelivery, WaitsTwentyMillisecondsForTheRest) {
  EXPECT_EQ(replyDeliveryRule()->longestWait, std::chrono::milliseconds(20));
}

TEST(ReplyDelivery, AWholeReplyIsWholeWhateverFollows) {
  EXPECT_EQ(judged("ff059001fe").kind, Kind::Whole);
  EXPECT_EQ(judged("ff059001fe").count, 5);
  EXPECT_EQ(judged("ff059001feff07").count, 5);
  EXPECT_EQ(judged("ff03fe").count, 3) << "the shortest that counts as a reply";
}

TEST(ReplyDelivery, ABeginningIsWorthWaitingFor) {
  for (const char *beginning : {"ff", "ff07", "ff0791", "ff07910801ff", "ffff", "fffe0000"}) {
    EXPECT_EQ(judged(beginning).kind, Kind::MoreToCome) << beginning;
  }
}

TEST(ReplyDelivery, AnythingElseIsLeftAsItCame) {
  for (const char *other : {"00", "010203", "fe", "4fff059001fe", "ff00", "ff01", "ff02", "ff02fe",
                            "ff05900101", "ff07910801ff00"}) {
    EXPECT_EQ(judged(other).kind, Kind::AsItIs) << other;
  }
}

TEST(ReplyDelivery, AReplyCutAnywhereIsOneDelivery) {
  const QByteArray reply = hex("ff079108012cfe");
  for (qsizetype at = 1; at < reply.size(); ++at) {
    EXPECT_EQ(deliveriesOf({reply.first(at), reply.sliced(at)}), Deliveries{reply}) << at;
  }
}

TEST(ReplyDelivery, AValueThatLooksLikeAMarkDoesNotEndAReply) {
  const QByteArray reply = hex("ff079108fefffe");
  EXPECT_EQ(deliveriesOf({reply.first(5), reply.sliced(5)}), Deliveries{reply});
}

TEST(ReplyDelivery, GluedRepliesAreTwo) {
  EXPECT_EQ(deliveriesOf({hex("ff059001feff0791010063fe")}),
            (Deliveries{hex("ff059001fe"), hex("ff0791010063fe")}));
}

TEST(ReplyDelivery, APieceThatStaysAloneIsDeliveredAsItIs) {
  EXPECT_EQ(deliveriesOf({hex("ff07910801")}), Deliveries{hex("ff07910801")});
}

TEST(ReplyDelivery, ManyRepliesCutAtRandomPlacesAreThoseReplies) {
  std::mt19937 random(1);
  for (int round = 0; round < 2000; ++round) {
    Deliveries replies;
    QByteArray line;
    for (unsigned count = 1 + random() % 8; count > 0; --count) {
      QByteArray reply(static_cast<qsizetype>(3 + random() % 253), '\0');
      for (char &byte : reply) byte = static_cast<char>(random());
      reply.front() = '\xFF';
      reply[1] = static_cast<char>(reply.size());
      reply.back() = '\xFE';
      replies.push_back(reply);
      line += reply;
    }
    std::vector<QByteArray> reads;
    for (qsizetype at = 0; at < line.size(); at += reads.back().size()) {
      reads.push_back(line.sliced(at, std::min<qsizetype>(line.size() - at, 1 + random() % 300)));
    }
    ASSERT_EQ(deliveriesOf(reads), replies) << "round " << round;
  }
}

}  // namespace
}  // namespace tavril
