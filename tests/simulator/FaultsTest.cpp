#include "tests/simulator/EndpointBench.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace tavril::simulator {
namespace {

using namespace std::chrono_literals;
using Deliveries = std::vector<Bytes>;

const Bytes detect{0xFF, 0x04, 0x90, 0xFE};
const Bytes detected{0xFF, 0x05, 0x90, 0x01, 0xFE};
const Bytes readMaxTemperature{0xFF, 0x05, 0x91, 0x05, 0xFE};

TEST(Faults, AMuteBridgeActsAndSaysNothing) {
  EndpointBench bench({.mute = true});
  EXPECT_EQ(bench.exchange({0xFF, 0x07, 0x92, 0x01, 0x00, 0x2A, 0xFE}), Bytes{});
  bench.endpoint.receive(Bytes{0xFF, 0x05});
  EXPECT_EQ(bench.dueInTheEnd(), Deliveries{});
  EXPECT_EQ(bench.servo.read(1), 42);
  EXPECT_EQ(bench.endpoint.framesSeen(), 1);
}

TEST(Faults, WritesMayBeRefusedAndReadsNot) {
  EndpointBench bench({.writeError = 3});
  EXPECT_EQ(bench.exchange({0xFF, 0x07, 0x92, 0x01, 0x00, 0x2A, 0xFE}),
            (Bytes{0xFF, 0x05, 0xF9, 0x03, 0xFE}));
  EXPECT_EQ(bench.servo.read(1), 1);
  EXPECT_EQ(bench.exchange(detect), detected);
  EXPECT_EQ(bench.exchange(readMaxTemperature).size(), 7U);
}

/// Whether each of these is answered: detection, a read of a setting, of a live value, of the position; a
/// write, a new goal, a reboot.
std::vector<bool> answeredUnder(std::uint8_t policy, bool obeys) {
  EndpointBench bench({.obeysReplyPolicy = obeys});
  EXPECT_TRUE(bench.servo.write(2, policy));
  std::vector<bool> answered;
  for (const Bytes &command : {detect, readMaxTemperature, Bytes{0xFF, 0x05, 0x91, 0x10, 0xFE},
                               Bytes{0xFF, 0x04, 0x97, 0xFE}, Bytes{0xFF, 0x07, 0x92, 0x01, 0x00, 0x2A, 0xFE},
                               Bytes{0xFF, 0x06, 0x96, 0x02, 0x00, 0xFE}, Bytes{0xFF, 0x04, 0x94, 0xFE}}) {
    answered.push_back(!bench.exchange(command).empty());
  }
  EXPECT_EQ(bench.servo.read(1), 42) << "commands take effect, answered or not";
  return answered;
}

TEST(ReplyPolicy, DecidesWhatIsAnsweredWhereTheBridgeObeysIt) {
  EXPECT_EQ(answeredUnder(0, true), (std::vector<bool>{true, false, true, false, false, false, false}));
  EXPECT_EQ(answeredUnder(1, true), (std::vector<bool>{true, true, true, true, false, false, false}));
  EXPECT_EQ(answeredUnder(2, true), std::vector<bool>(7, true));
}

TEST(ReplyPolicy, DecidesNothingOtherwise) {
  for (std::uint8_t policy = 0; policy <= 2; ++policy)
    EXPECT_EQ(answeredUnder(policy, false), std::vector<bool>(7, true));
}

TEST(Faults, ALossyLineLosesOneReplyInSoManyByTheSeed) {
  const auto answered = [](std::uint32_t seed) {
    EndpointBench bench({.loseOneIn = 5, .seed = seed});
    std::vector<bool> came;
    for (int i = 0; i < 1000; ++i) came.push_back(!bench.exchange(detect).empty());
    return came;
  };
  const std::vector<bool> came = answered(1);
  const auto lost = std::count(came.begin(), came.end(), false);
  EXPECT_GT(lost, 150);
  EXPECT_LT(lost, 250);
  EXPECT_EQ(answered(1), came);
  EXPECT_NE(answered(2), came);
}

TEST(Faults, ALostReplyIsLoggedAndItsCommandCarriedOut) {
  EndpointBench bench({.loseOneIn = 1});
  EXPECT_EQ(bench.exchange({0xFF, 0x07, 0x92, 0x01, 0x00, 0x2A, 0xFE}), Bytes{});
  EXPECT_EQ(bench.servo.read(1), 42);
  EXPECT_TRUE(bench.logLines().contains(QStringLiteral("<- FF 05 92 01 FE  lost on its way")));
}

TEST(Faults, ASlowBridgeRepliesAfterItsDelay) {
  EndpointBench bench({.delay = 300ms});
  EXPECT_EQ(bench.exchange(detect), Bytes{});
  EXPECT_EQ(bench.endpoint.timeToNextEvent(), 300ms);
  bench.endpoint.advance(299ms);
  EXPECT_EQ(bench.due(), Deliveries{});
  bench.endpoint.advance(1ms);
  EXPECT_EQ(bench.due(), Deliveries{detected});
}

TEST(Faults, AStartingBridgeLosesWhatComesTooEarly) {
  EndpointBench bench({.startUp = 2s});
  bench.endpoint.advance(1999ms);
  EXPECT_EQ(bench.exchange(detect), Bytes{});
  EXPECT_EQ(bench.endpoint.framesSeen(), 0);
  bench.endpoint.advance(1ms);
  EXPECT_EQ(bench.exchange(detect), detected);
}

TEST(Faults, SplitRepliesComeInPiecesWithPauses) {
  EndpointBench bench({.splitSize = 3, .splitGap = 15ms});
  bench.endpoint.receive(EndpointBench::delivery(readMaxTemperature));
  EXPECT_EQ(bench.due(), (Deliveries{{0xFF, 0x07, 0x91}}));
  bench.endpoint.advance(14ms);
  EXPECT_EQ(bench.due(), Deliveries{});
  bench.endpoint.advance(1ms);
  EXPECT_EQ(bench.due(), (Deliveries{{0x05, 0x00, 0x50}}));
  bench.endpoint.advance(15ms);
  EXPECT_EQ(bench.due(), (Deliveries{{0xFE}}));
  EXPECT_EQ(bench.endpoint.timeToNextEvent(), std::nullopt);
}

TEST(Faults, APieceLargerThanTheReplyLeavesItWhole) {
  EndpointBench bench({.splitSize = 5});
  bench.endpoint.receive(EndpointBench::delivery(detect));
  EXPECT_EQ(bench.dueInTheEnd(), Deliveries{detected});
}

TEST(Faults, RepliesKeepTheirOrderWhenTheFirstIsStillInPieces) {
  EndpointBench bench({.splitSize = 4});
  bench.endpoint.receive(EndpointBench::delivery(detect));
  bench.endpoint.receive(EndpointBench::delivery({0xFF, 0x04, 0x93, 0xFE}));
  EXPECT_EQ(bench.dueInTheEnd(), (Deliveries{{0xFF, 0x05, 0x90, 0x01}, {0xFE}, {0xFF, 0x04, 0x93, 0xFE}}));
}

TEST(Faults, GluedRepliesLeaveTwoInAWrite) {
  EndpointBench bench({.glue = true});
  EXPECT_EQ(bench.exchange(detect), Bytes{});
  bench.endpoint.receive(EndpointBench::delivery({0xFF, 0x04, 0x93, 0xFE}));
  EXPECT_EQ(bench.due(), (Deliveries{{0xFF, 0x05, 0x90, 0x01, 0xFE, 0xFF, 0x04, 0x93, 0xFE}}));
}

TEST(Faults, AReplyWithoutASecondToGlueToLeavesAfterAWhile) {
  EndpointBench bench({.glue = true});
  bench.exchange(detect);
  bench.endpoint.advance(99ms);
  EXPECT_EQ(bench.due(), Deliveries{});
  bench.endpoint.advance(1ms);
  EXPECT_EQ(bench.due(), Deliveries{detected});
  EXPECT_EQ(bench.endpoint.timeToNextEvent(), std::nullopt);
}

TEST(Faults, NoiseComesBeforeEachReplyAndLeavesTheReplyWhole) {
  EndpointBench bench({.noise = true, .seed = 7});
  bool alone = false;
  bool attached = false;
  for (int i = 0; i < 40; ++i) {
    bench.endpoint.receive(EndpointBench::delivery(detect));
    const Deliveries writes = bench.due();
    ASSERT_FALSE(writes.empty());
    const Bytes &last = writes.back();
    ASSERT_GE(last.size(), detected.size());
    EXPECT_EQ(Bytes(last.end() - 5, last.end()), detected);
    const std::size_t noise = writes.size() == 2 ? writes.front().size() : last.size() - detected.size();
    EXPECT_GE(noise, 1U);
    EXPECT_LE(noise, 8U);
    (writes.size() == 2 ? alone : attached) = true;
  }
  EXPECT_TRUE(alone);
  EXPECT_TRUE(attached);
}

TEST(Faults, TheSameSeedMakesTheSameNoise) {
  const auto noiseOf = [](std::uint32_t seed) {
    EndpointBench bench({.noise = true, .seed = seed});
    Bytes all;
    for (int i = 0; i < 5; ++i) {
      const Bytes reply = bench.exchange(detect);
      all.insert(all.end(), reply.begin(), reply.end());
    }
    return all;
  };
  EXPECT_EQ(noiseOf(3), noiseOf(3));
  EXPECT_NE(noiseOf(3), noiseOf(4));
}

TEST(Faults, AWrongLengthIsOneTooLarge) {
  EndpointBench bench({.wrongLength = true});
  EXPECT_EQ(bench.exchange(detect), (Bytes{0xFF, 0x06, 0x90, 0x01, 0xFE}));
}

TEST(Faults, ALateEndComesByItself) {
  EndpointBench bench({.splitGap = 50ms, .lateEnds = true});
  bench.endpoint.receive(EndpointBench::delivery(detect));
  EXPECT_EQ(bench.due(), (Deliveries{{0xFF, 0x05, 0x90, 0x01}}));
  bench.endpoint.advance(49ms);
  EXPECT_EQ(bench.due(), Deliveries{});
  bench.endpoint.advance(1ms);
  EXPECT_EQ(bench.due(), (Deliveries{{0xFE}}));
}

TEST(Faults, ALateEndThatIsAPieceAlreadyIsNotCutAgain) {
  EndpointBench bench({.splitSize = 4, .lateEnds = true});
  bench.endpoint.receive(EndpointBench::delivery(detect));
  EXPECT_EQ(bench.dueInTheEnd(), (Deliveries{{0xFF, 0x05, 0x90, 0x01}, {0xFE}}));
}

TEST(Faults, AnErrorIsReportedForReadsAndNothingElse) {
  EndpointBench bench({.readError = 9});
  EXPECT_EQ(bench.exchange(readMaxTemperature), (Bytes{0xFF, 0x05, 0xF9, 0x09, 0xFE}));
  EXPECT_EQ(bench.exchange(detect), detected);
  EXPECT_EQ(bench.exchange({0xFF, 0x04, 0x97, 0xFE}), (Bytes{0xFF, 0x06, 0x97, 0x02, 0x00, 0xFE}));
}

TEST(Faults, ThePlugIsPulledAtTheFrameNamedWithoutAnAnswer) {
  EndpointBench bench({.unplugAfter = 3});
  EXPECT_EQ(bench.exchange(detect), detected);
  EXPECT_EQ(bench.exchange(detect), detected);
  EXPECT_FALSE(bench.endpoint.unplugged());
  EXPECT_EQ(bench.exchange(detect), Bytes{});
  EXPECT_TRUE(bench.endpoint.unplugged());
  EXPECT_EQ(bench.exchange(detect), Bytes{});
  EXPECT_EQ(bench.endpoint.framesSeen(), 3);
}

TEST(Faults, PluggedInAgainTheCountForThePlugBeginsAnew) {
  EndpointBench bench({.unplugAfter = 2});
  bench.exchange(detect);
  bench.exchange(detect);
  ASSERT_TRUE(bench.endpoint.unplugged());
  bench.endpoint.plugIn();
  EXPECT_EQ(bench.exchange(detect), detected);
  EXPECT_FALSE(bench.endpoint.unplugged());
}

TEST(Faults, PluggedInAgainTheBridgeStartsUpAgainAndForgetsWhatWasUnderWay) {
  EndpointBench bench({.delay = 10ms, .startUp = 1s});
  bench.endpoint.advance(1s);
  bench.endpoint.receive(EndpointBench::delivery(detect));
  bench.endpoint.receive(Bytes{0xFF, 0x05});
  bench.endpoint.plugIn();
  EXPECT_EQ(bench.dueInTheEnd(), Deliveries{});
  EXPECT_EQ(bench.exchange(detect), Bytes{});
  bench.endpoint.advance(1s);
  bench.endpoint.receive(EndpointBench::delivery(detect));
  EXPECT_EQ(bench.dueInTheEnd(), Deliveries{detected});
}

TEST(Faults, MayComeAndGoWhileItRuns) {
  EndpointBench bench;
  EXPECT_EQ(bench.exchange(detect), detected);
  bench.endpoint.options().servos = Options::Servos::None;
  EXPECT_EQ(bench.exchange(readMaxTemperature), (Bytes{0xFF, 0x05, 0xF9, 0x04, 0xFE}));
  bench.endpoint.options().servos = Options::Servos::One;
  EXPECT_EQ(bench.exchange(readMaxTemperature), (Bytes{0xFF, 0x07, 0x91, 0x05, 0x00, 0x50, 0xFE}));
}

// The pace of the wire: 86.806 us a byte.

TEST(Pace, AReplyIsThereWhenDeliveryAndReplyAreThroughOnTheWire) {
  EndpointBench bench({.pace = true});
  bench.endpoint.receive(EndpointBench::delivery(readMaxTemperature));
  EXPECT_EQ(bench.endpoint.timeToNextEvent(), 57 * 86806ns);
  bench.endpoint.advance(57 * 86806ns - 1ns);
  EXPECT_EQ(bench.due(), Deliveries{});
  bench.endpoint.advance(1ns);
  EXPECT_EQ(bench.due(), (Deliveries{{0xFF, 0x07, 0x91, 0x05, 0x00, 0x50, 0xFE}}));
}

TEST(Pace, ABareFrameNeedsNotWaitForPaddingThatNeverComes) {
  EndpointBench bench({.pace = true});
  bench.endpoint.receive(detect);
  bench.endpoint.advance(9 * 86806ns);
  EXPECT_EQ(bench.due(), Deliveries{detected});
}

TEST(Pace, DeliveriesQueueOnTheWireThoughTheyWereWrittenAtOnce) {
  EndpointBench bench({.pace = true});
  bench.endpoint.receive(EndpointBench::delivery(detect));
  bench.endpoint.receive(EndpointBench::delivery(detect));
  bench.endpoint.advance(55 * 86806ns);
  EXPECT_EQ(bench.due(), Deliveries{detected});
  bench.endpoint.advance(50 * 86806ns - 1ns);
  EXPECT_EQ(bench.due(), Deliveries{});
  bench.endpoint.advance(1ns);
  EXPECT_EQ(bench.due(), Deliveries{detected});
}

}  // namespace
}  // namespace tavril::simulator
