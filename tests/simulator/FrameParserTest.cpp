#include "simulator/FrameParser.h"

#include <gtest/gtest.h>

#include <random>

namespace tavril::simulator {

static void PrintTo(const ParsedItem &item, std::ostream *out) {
  *out << "kind " << static_cast<int>(item.kind) << " " << testing::PrintToString(item.bytes);
}
static bool operator==(const ParsedItem &a, const ParsedItem &b) {
  return a.kind == b.kind && a.bytes == b.bytes;
}

namespace {

using Kind = ParsedItem::Kind;
using Items = std::vector<ParsedItem>;

Items feedAll(FrameParser &parser, const Bytes &bytes) {
  Items items;
  for (const std::uint8_t byte : bytes) {
    for (ParsedItem &item : parser.feed(byte)) items.push_back(std::move(item));
  }
  return items;
}

std::vector<Bytes> framesIn(FrameParser &parser, const Bytes &bytes) {
  std::vector<Bytes> frames;
  for (ParsedItem &item : feedAll(parser, bytes)) {
    if (item.kind == Kind::Frame) frames.push_back(std::move(item.bytes));
  }
  return frames;
}

TEST(FrameParser, TellsAFrameAtItsLastByteAndNotBefore) {
  FrameParser parser;
  for (const std::uint8_t byte : Bytes{0xFF, 0x05, 0x91, 0x01}) {
    EXPECT_TRUE(parser.feed(byte).empty());
    EXPECT_TRUE(parser.pending());
  }
  EXPECT_EQ(parser.feed(0xFE), (Items{{Kind::Frame, {0xFF, 0x05, 0x91, 0x01, 0xFE}}}));
  EXPECT_FALSE(parser.pending());
}

TEST(FrameParser, TellsThePaddingOfADeliveryZeroByZero) {
  FrameParser parser;
  Bytes delivery{0xFF, 0x04, 0x90, 0xFE};
  delivery.resize(50, 0x00);
  const Items items = feedAll(parser, delivery);
  ASSERT_EQ(items.size(), 47U);
  EXPECT_EQ(items[0], (ParsedItem{Kind::Frame, {0xFF, 0x04, 0x90, 0xFE}}));
  for (std::size_t i = 1; i < items.size(); ++i) EXPECT_EQ(items[i], (ParsedItem{Kind::Padding, {0x00}}));
}

TEST(FrameParser, TakesMarksAndZerosInParametersForWhatTheyAre) {
  FrameParser parser;
  EXPECT_EQ(framesIn(parser, {0xFF, 0x07, 0x92, 0x0F, 0xFF, 0xFE, 0xFE}),
            (std::vector<Bytes>{{0xFF, 0x07, 0x92, 0x0F, 0xFF, 0xFE, 0xFE}}));
  EXPECT_EQ(framesIn(parser, {0xFF, 0x07, 0x92, 0xFE, 0x00, 0xFF, 0xFE}),
            (std::vector<Bytes>{{0xFF, 0x07, 0x92, 0xFE, 0x00, 0xFF, 0xFE}}));
  EXPECT_EQ(framesIn(parser, {0xFF, 0x07, 0x92, 0xFF, 0x04, 0x90, 0xFE}),
            (std::vector<Bytes>{{0xFF, 0x07, 0x92, 0xFF, 0x04, 0x90, 0xFE}}));
  EXPECT_EQ(framesIn(parser, {0xFF, 0x06, 0x96, 0x00, 0x00, 0xFE}),
            (std::vector<Bytes>{{0xFF, 0x06, 0x96, 0x00, 0x00, 0xFE}}));
}

TEST(FrameParser, FindsFramesThatFollowEachOtherWithoutPadding) {
  FrameParser parser;
  EXPECT_EQ(framesIn(parser, {0xFF, 0x04, 0x97, 0xFE, 0xFF, 0x04, 0x93, 0xFE}),
            (std::vector<Bytes>{{0xFF, 0x04, 0x97, 0xFE}, {0xFF, 0x04, 0x93, 0xFE}}));
}

TEST(FrameParser, DropsGarbageBeforeAFrame) {
  FrameParser parser;
  EXPECT_EQ(feedAll(parser, {0x41, 0xFE, 0x00, 0xFF, 0x04, 0x90, 0xFE}),
            (Items{{Kind::Garbage, {0x41}},
                   {Kind::Garbage, {0xFE}},
                   {Kind::Padding, {0x00}},
                   {Kind::Frame, {0xFF, 0x04, 0x90, 0xFE}}}));
}

TEST(FrameParser, AStartMarkWithoutAPlausibleLengthIsGarbage) {
  for (const std::uint8_t length : Bytes{0x01, 0x03, 0x33, 0x90, 0xFE}) {
    FrameParser parser;
    const Items items = feedAll(parser, {0xFF, length, 0xFF, 0x04, 0x90, 0xFE});
    ASSERT_EQ(items.size(), 3U) << int{length};
    EXPECT_EQ(items[0], (ParsedItem{Kind::Garbage, {0xFF}}));
    EXPECT_EQ(items[1], (ParsedItem{Kind::Garbage, {length}}));
    EXPECT_EQ(items[2], (ParsedItem{Kind::Frame, {0xFF, 0x04, 0x90, 0xFE}}));
  }
}

TEST(FrameParser, TakesTheLastOfSeveralStartMarks) {
  FrameParser parser;
  EXPECT_EQ(
      feedAll(parser, {0xFF, 0xFF, 0xFF, 0x04, 0x90, 0xFE}),
      (Items{{Kind::Garbage, {0xFF}}, {Kind::Garbage, {0xFF}}, {Kind::Frame, {0xFF, 0x04, 0x90, 0xFE}}}));
}

TEST(FrameParser, TheLongestFrameIsAsLongAsADelivery) {
  FrameParser parser;
  Bytes frame(50, 0x11);
  frame[0] = 0xFF;
  frame[1] = 50;
  frame[49] = 0xFE;
  EXPECT_EQ(framesIn(parser, frame), std::vector<Bytes>{frame});
}

TEST(FrameParser, LooksAgainAtTheRestOfAFrameWithoutEndMark) {
  FrameParser parser;
  // The first looks seven bytes long and holds the beginning of the one that was meant.
  EXPECT_EQ(feedAll(parser, {0xFF, 0x07, 0x92, 0xFF, 0x05, 0x91, 0x02, 0xFE}),
            (Items{{Kind::BrokenFrame, {0xFF}},
                   {Kind::Garbage, {0x07}},
                   {Kind::Garbage, {0x92}},
                   {Kind::Frame, {0xFF, 0x05, 0x91, 0x02, 0xFE}}}));
}

TEST(FrameParser, FindsTwoFramesInTheRestOfABrokenOne) {
  FrameParser parser;
  EXPECT_EQ(framesIn(parser, {0xFF, 0x0B, 0xFF, 0x04, 0x97, 0xFE, 0xFF, 0x04, 0x93, 0xFE, 0x00}),
            (std::vector<Bytes>{{0xFF, 0x04, 0x97, 0xFE}, {0xFF, 0x04, 0x93, 0xFE}}));
  EXPECT_FALSE(parser.pending());
}

TEST(FrameParser, ATimeOutGivesUpWhatWasBegun) {
  FrameParser parser;
  feedAll(parser, {0xFF, 0x05, 0x91});
  EXPECT_EQ(parser.timeOut(), (Items{{Kind::TimedOut, {0xFF, 0x05, 0x91}}}));
  EXPECT_FALSE(parser.pending());
  EXPECT_EQ(framesIn(parser, {0xFF, 0x04, 0x90, 0xFE}), (std::vector<Bytes>{{0xFF, 0x04, 0x90, 0xFE}}));
}

TEST(FrameParser, ATimeOutStillFindsTheFrameInsideTheOneThatWasGivenUp) {
  FrameParser parser;
  feedAll(parser, {0xFF, 0x32, 0xFF, 0x04, 0x90, 0xFE});
  EXPECT_EQ(parser.timeOut(), (Items{{Kind::TimedOut, {0xFF, 0x32, 0xFF, 0x04, 0x90, 0xFE}},
                                     {Kind::Frame, {0xFF, 0x04, 0x90, 0xFE}}}));
}

TEST(FrameParser, ALoneStartMarkIsNoFrameThatCouldTimeOut) {
  FrameParser parser;
  feedAll(parser, {0xFF});
  EXPECT_EQ(parser.timeOut(), (Items{{Kind::Garbage, {0xFF}}}));
}

TEST(FrameParser, ATimeOutWithNothingBegunIsNothing) {
  FrameParser parser;
  EXPECT_TRUE(parser.timeOut().empty());
}

TEST(FrameParser, AfterAnyGarbageAndOnePaddingItHearsAgainAndLosesNoByte) {
  std::mt19937 random(20);
  // Marks and short lengths far more often than chance would have them.
  const Bytes usual{0xFF, 0xFF, 0xFE, 0xFE, 0x04, 0x05, 0x07, 0x00, 0x91, 0x32};
  for (int round = 0; round < 2000; ++round) {
    Bytes bytes(random() % 60);
    for (std::uint8_t &byte : bytes) {
      byte = random() % 2 == 0 ? usual[random() % usual.size()] : static_cast<std::uint8_t>(random() % 256);
    }
    bytes.resize(bytes.size() + 50, 0x00);
    const Bytes frame{0xFF, 0x05, 0x91, 0x01, 0xFE};
    bytes.insert(bytes.end(), frame.begin(), frame.end());

    FrameParser parser;
    Bytes seen;
    const Items items = feedAll(parser, bytes);
    for (const ParsedItem &item : items) seen.insert(seen.end(), item.bytes.begin(), item.bytes.end());
    ASSERT_EQ(seen, bytes);
    ASSERT_EQ(items.back(), (ParsedItem{Kind::Frame, frame}));
  }
}

}  // namespace
}  // namespace tavril::simulator
