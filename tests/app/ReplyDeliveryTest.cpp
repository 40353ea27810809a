#include "app/ReplyDelivery.h"
#include "tests/app/DeliveryModel.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>
#include <vector>

namespace tavril {
namespace {

using Kind = DeliveryRule::Verdict::Kind;

QByteArray hex(const char *text) {
  return QByteArray::fromHex(text);
}

DeliveryRule::Verdict judged(const char *text) {
  return replyDeliveryRule()->judge(hex(text));
}

/// What becomes of these reads when no time passes between them; what still waits at the end comes last.
Deliveries deliveriesOf(const Deliveries &reads) {
  std::vector<TimedRead> timed;
  for (const QByteArray &read : reads) timed.push_back({.bytes = read});
  return assembledDeliveries(timed);
}

/// Replies, pieces of replies and noise, each some milliseconds after the one before.
std::vector<TimedRead> randomReads(std::mt19937 &random) {
  static const Deliveries replies{hex("ff059001fe"), hex("ff079108012cfe"), hex("ff0494fe"),
                                  hex("ff069703fffe")};
  static const Deliveries noise{hex("ff"), hex("ff07"), hex("910801"), hex("fe"), hex("41"), hex("ff08")};
  const auto oneOf = [&](const Deliveries &all) { return all[random() % all.size()]; };
  std::vector<TimedRead> reads;
  const auto add = [&](const QByteArray &bytes) {
    reads.push_back(
        {.after = std::chrono::milliseconds(random() % 3 == 0 ? random() % 25 : 0), .bytes = bytes});
  };
  for (auto count = 1 + random() % 6; count > 0; --count) {
    const QByteArray reply = oneOf(replies);
    const qsizetype cut = 1 + static_cast<qsizetype>(random()) % (reply.size() - 1);
    switch (random() % 5) {
      case 0:
        add(reply);
        break;
      case 1:
        add(oneOf(noise));
        break;
      case 2:
        add(reply.first(cut));
        break;
      case 3:
        add(reply.first(cut));
        add(reply.sliced(cut));
        break;
      default:
        add(reply + oneOf(replies) + (random() % 2 == 0 ? oneOf(noise) : reply.first(cut)));
    }
  }
  return reads;
}

std::string textOf(const std::vector<TimedRead> &reads) {
  std::string text;
  for (const TimedRead &read : reads) {
    text += " after " + std::to_string(read.after.count()) + " ms " + read.bytes.toHex().toStdString();
  }
  return text;
}

TEST(ReplyDelivery, WaitsTwentyMillisecondsForTheRest) {
  EXPECT_EQ(replyDeliveryRule()->longestWait, std::chrono::milliseconds(20));
}

TEST(ReplyDelivery, AWholeReplyIsWholeWhateverFollows) {
  EXPECT_EQ(judged("ff059001fe").kind, Kind::Whole);
  EXPECT_EQ(judged("ff059001fe").count, 5);
  EXPECT_EQ(judged("ff059001feff07").count, 5);
  EXPECT_EQ(judged("ff0494fe").count, 4) << "the shortest reply";
  EXPECT_EQ(judged("ff079108012cfe").count, 7) << "the longest reply";
}

TEST(ReplyDelivery, ABeginningIsWorthWaitingFor) {
  for (const char *beginning : {"ff", "ff04", "ff07", "ff0791", "ff07910801ff"}) {
    EXPECT_EQ(judged(beginning).kind, Kind::MoreToCome) << beginning;
  }
}

TEST(ReplyDelivery, AnythingElseIsLeftAsItCame) {
  for (const char *other : {"00", "010203", "fe", "4fff059001fe", "ff00", "ff01", "ff02", "ff02fe",
                            "ff05900101", "ff07910801ff00"}) {
    EXPECT_EQ(judged(other).kind, Kind::AsItIs) << other;
  }
}

TEST(ReplyDelivery, ALengthThatNoReplyHasIsNoBeginning) {
  for (const char *other : {"ff03", "ff08", "ff32", "fffe0000", "ffff", "ff03fe", "ff08910801012cfe"}) {
    EXPECT_EQ(judged(other).kind, Kind::AsItIs) << other;
  }
}

TEST(ReplyDelivery, AReplyCutAnywhereIsOneDelivery) {
  const QByteArray reply = hex("ff079108012cfe");
  for (qsizetype at = 1; at < reply.size(); ++at) {
    EXPECT_EQ(deliveriesOf({reply.first(at), reply.sliced(at)}), Deliveries{reply}) << at;
  }
}

TEST(ReplyDelivery, AReplyBehindAFalseStartMarkIsDelivered) {
  EXPECT_EQ(deliveriesOf({hex("ff"), hex("ff079108012cfe")}), (Deliveries{hex("ff"), hex("ff079108012cfe")}));
  EXPECT_EQ(deliveriesOf({hex("ff"), hex("ff0791"), hex("08012cfe")}),
            (Deliveries{hex("ff"), hex("ff079108012cfe")}));
}

TEST(ReplyDelivery, AWholeReplyBehindAnyPartOfAnotherIsDelivered) {
  const Deliveries replies{hex("ff059001fe"), hex("ff079108012cfe"), hex("ff05920ffe"),   hex("ff0494fe"),
                           hex("ff0495fe"),   hex("ff0496fe"),       hex("ff069703fffe"), hex("ff05f903fe")};
  for (const QByteArray &lost : replies) {
    for (qsizetype size = 1; size < lost.size(); ++size) {
      const QByteArray part = lost.first(size);
      for (const QByteArray &reply : replies) {
        const Deliveries both{part, reply};
        EXPECT_EQ(deliveriesOf(both), both)
            << part.toHex(' ').toStdString() << " and " << reply.toHex(' ').toStdString();
      }
    }
  }
}

TEST(ReplyDelivery, AValueThatLooksLikeAReplyIsStillTheRestOfOne) {
  for (int value = 0; value < 0x10000; ++value) {
    QByteArray reply = hex("ff0791080000fe");
    reply[4] = static_cast<char>(value >> 8);
    reply[5] = static_cast<char>(value);
    ASSERT_EQ(deliveriesOf({reply.first(4), reply.sliced(4)}), Deliveries{reply}) << value;
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
  for (int round = 0; round < 20000; ++round) {
    Deliveries replies;
    QByteArray line;
    for (unsigned count = 1 + random() % 8; count > 0; --count) {
      QByteArray reply(static_cast<qsizetype>(4 + random() % 4), '\0');
      // Such data as replies have. With marks among them two cuts could make a whole reply inside another.
      for (char &byte : reply) byte = static_cast<char>(random() % 0xFE);
      reply.front() = '\xFF';
      reply[1] = static_cast<char>(reply.size());
      reply.back() = '\xFE';
      replies.push_back(reply);
      line += reply;
    }
    std::vector<QByteArray> reads;
    for (qsizetype at = 0; at < line.size(); at += reads.back().size()) {
      reads.push_back(line.sliced(at, std::min<qsizetype>(line.size() - at, 1 + random() % 20)));
    }
    ASSERT_EQ(deliveriesOf(reads), replies) << "round " << round;
  }
}

TEST(ReplyDelivery, RandomReadsBecomeWhatTheModelMakesOfThem) {
  std::mt19937 random(2);
  int joined = 0;
  int parted = 0;
  int alone = 0;
  for (int round = 0; round < 20000; ++round) {
    const std::vector<TimedRead> reads = randomReads(random);
    const Deliveries expected = modelDeliveries(reads);
    ASSERT_EQ(assembledDeliveries(reads), expected) << "round " << round << ":" << textOf(reads);
    const auto wasRead = [&](const QByteArray &delivery) {
      return std::ranges::any_of(reads, [&](const TimedRead &read) { return read.bytes == delivery; });
    };
    for (const QByteArray &delivery : expected) {
      const bool isPart = std::ranges::any_of(reads, [&](const TimedRead &read) {
        return read.bytes.size() > delivery.size() && read.bytes.contains(delivery);
      });
      ++(wasRead(delivery) ? alone : isPart ? parted : joined);
    }
  }
  EXPECT_GT(joined, 1000) << "or this run has not shown much";
  EXPECT_GT(parted, 1000);
  EXPECT_GT(alone, 1000);
}

}  // namespace
}  // namespace tavril
