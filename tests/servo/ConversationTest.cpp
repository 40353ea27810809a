#include "servo/Conversation.h"
#include "servo/Problem.h"
#include "servo/Servo.h"
#include "tests/servo/BridgeInTime.h"
#include "wire/Registers.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <random>
#include <thread>
#include <vector>

namespace tavril::servo {
namespace {

using std::chrono::milliseconds;
using wire::Command;
using Kind = Problem::Kind;

const wire::Register &kp() {
  return *wire::findRegister(9);
}

struct Bench {
  explicit Bench(const BridgeFaults &faults = {}, unsigned seed = 1) : bridge(faults, seed) {}

  bool hasSent(const Command &command) const {
    return std::ranges::any_of(trace, [&](const Event &event) {
      return event.kind == Event::Kind::Sent && event.command == command;
    });
  }

  BridgeInTime bridge;
  std::vector<Event> trace;
  Servo servo{bridge, {}, [this](const Event &event) { trace.push_back(event); }};
};

TEST(Conversation, AsksOnceWhereTheAnswerComes) {
  Bench bench;
  bench.bridge.registers[9] = 440;
  EXPECT_EQ(*bench.servo.read(kp()), 440);
  EXPECT_EQ(bench.bridge.sent, 1);
  ASSERT_EQ(bench.trace.size(), 2U);
  EXPECT_EQ(bench.trace[0].kind, Event::Kind::Sent);
  EXPECT_EQ(bench.trace[0].command, Command::readRegister(9));
  EXPECT_EQ(bench.trace[1].kind, Event::Kind::Replied);
  EXPECT_EQ(bench.trace[1].reply.frame,
            (std::vector<std::uint8_t>{0xFF, 0x07, 0x91, 0x09, 0x01, 0xB8, 0xFE}));
}

TEST(Conversation, GivesUpAfterTheRetriesAndNotLater) {
  Bench bench({.lostReplies = 100});
  const Outcome<int> value = bench.servo.read(kp());
  ASSERT_FALSE(value);
  EXPECT_EQ(value.problem().kind, Kind::NoAnswer);
  EXPECT_EQ(value.problem().command, Command::readRegister(9));
  EXPECT_EQ(value.problem().timeout, milliseconds(300));
  EXPECT_EQ(value.problem().tries, 3);
  EXPECT_EQ(value.problem().strayBytes, 0U);
  EXPECT_EQ(bench.bridge.sent, 3);
  EXPECT_EQ(bench.bridge.now(), milliseconds(900));
}

TEST(Conversation, GivesUpWhereRepliesCannotBeToldApart) {
  Bench bench({.lostReplies = 100});
  for (const wire::Register &row : wire::registers) {
    ASSERT_FALSE(bench.servo.read(row));
  }
  const Outcome<int> value = bench.servo.read(kp());
  ASSERT_FALSE(value);
  EXPECT_EQ(value.problem().kind, Kind::TooManyUnanswered);
}

TEST(Conversation, TakesALateReplyToItsOwnCommandForAnAnswer) {
  Bench bench;
  bench.bridge.faults.lostReplies = 100;
  bench.bridge.deliver({milliseconds(400), {0xFF, 0x07, 0x91, 0x09, 0x01, 0xB8, 0xFE}});
  EXPECT_EQ(*bench.servo.read(kp()), 440);
  EXPECT_EQ(bench.bridge.now(), milliseconds(400));
}

TEST(Conversation, IsNotFooledByALateReplyThatHasTheOldValue) {
  Bench bench;
  // The first reading is answered late, and so is its repetition.
  bench.bridge.faults.lostReplies = 100;
  bench.bridge.deliver({milliseconds(400), {0xFF, 0x07, 0x91, 0x09, 0x01, 0xB8, 0xFE}});
  bench.bridge.deliver({milliseconds(405), {0xFF, 0x07, 0x91, 0x09, 0x01, 0xB8, 0xFE}});
  EXPECT_EQ(*bench.servo.read(kp()), 440);
  bench.bridge.faults.lostReplies = 0;
  bench.bridge.registers[9] = 500;
  EXPECT_EQ(*bench.servo.read(kp()), 500);
  EXPECT_TRUE(bench.hasSent(Command::readRegister(1)));
  EXPECT_TRUE(std::ranges::any_of(bench.trace, [](const Event &event) {
    return event.kind == Event::Kind::Late && event.reply.value() == 440;
  }));
}

TEST(Conversation, KnowsThatNothingIsLateAnyMoreOnceALaterCommandWasAnswered) {
  Bench bench;
  bench.bridge.faults.lostReplies = 100;
  bench.bridge.deliver({milliseconds(400), {0xFF, 0x07, 0x91, 0x09, 0x01, 0xB8, 0xFE}});
  EXPECT_EQ(*bench.servo.read(kp()), 440);
  bench.bridge.faults.lostReplies = 0;
  EXPECT_EQ(bench.servo.write(kp(), 500)->held, 500);
  EXPECT_EQ(bench.bridge.sent, 2 + 2);
}

TEST(Conversation, NeverReportsAWrongValueOverALineThatLosesAndDelaysAndAddsNoise) {
  int answered = 0;
  int unanswered = 0;
  for (unsigned seed = 1; seed <= 200; ++seed) {
    Bench bench({.lostCommands = 8, .lostReplies = 12, .noisyReplies = 30, .longestDelay_ms = 700}, seed);
    std::mt19937 random(seed);
    for (int step = 0; step < 60; ++step) {
      const int number = static_cast<int>(random() % 15) + 1;
      const wire::Register &row = *wire::findRegister(number);
      const int value = static_cast<int>(random() % 100);
      const bool writes = random() % 3 == 0;
      const auto told = [&]() -> Outcome<int> {
        if (writes && number != 15) {
          const Outcome<Servo::Written> written = bench.servo.write(row, value);
          if (!written) return written.problem();
          return written->held.value_or(-1);
        }
        // Changed behind our back, so that a late reply to an earlier reading has another value.
        bench.bridge.registers[static_cast<std::size_t>(number)] = value;
        return bench.servo.read(row);
      }();
      if (told) {
        EXPECT_EQ(*told, value) << "seed " << seed << " step " << step;
      } else {
        EXPECT_EQ(told.problem().kind, Kind::NoAnswer);
      }
      ++(told ? answered : unanswered);
    }
  }
  EXPECT_GT(answered, unanswered * 3);
  EXPECT_GT(unanswered, 0);
}

TEST(Conversation, ConfirmsASettingThatCameWithNoise) {
  Bench bench({.noisyReplies = 100});
  bench.bridge.registers[9] = 440;
  EXPECT_EQ(*bench.servo.read(kp()), 440);
  EXPECT_EQ(bench.bridge.sent, 2);
}

TEST(Conversation, DoesNotConfirmALiveValueWhichMayDiffer) {
  Bench bench({.noisyReplies = 100});
  bench.bridge.registers[18] = 74;
  EXPECT_EQ(*bench.servo.read(*wire::findRegister(18)), 74);
  EXPECT_EQ(bench.bridge.sent, 1);
}

TEST(Conversation, DoesNotTrustASettingThatIsAnotherEachTime) {
  Bench bench;
  bench.bridge.faults.lostReplies = 100;
  for (std::uint8_t value = 0; value < 6; ++value) {
    bench.bridge.deliver({milliseconds(value * 300 + 10), {0x55, 0xFF, 0x07, 0x91, 0x09, 0x00, value, 0xFE}});
  }
  // A register that is asked between them to sort them out is answered too.
  EXPECT_FALSE(bench.servo.read(kp()));
}

TEST(Conversation, RepeatsACommandThatTheBridgeDidNotUnderstand) {
  Bench bench({.error = 1});
  const Outcome<int> value = bench.servo.read(kp());
  ASSERT_FALSE(value);
  EXPECT_EQ(value.problem().kind, Kind::ErrorReport);
  EXPECT_EQ(value.problem().command, Command::readRegister(9));
  EXPECT_EQ(value.problem().error, 1);
  EXPECT_EQ(bench.bridge.sent, 3);
}

TEST(Conversation, BelievesAtOnceThatTheServoIsLost) {
  Bench bench({.error = 4});
  const Outcome<int> value = bench.servo.read(kp());
  ASSERT_FALSE(value);
  EXPECT_EQ(value.problem().error, BridgeError::LostServo);
  EXPECT_EQ(bench.bridge.sent, 1);
}

TEST(Conversation, DoesNotTakeAnErrorForItsOwnWhileAnotherMayBeMeant) {
  Bench bench({.lostReplies = 100});
  EXPECT_FALSE(bench.servo.read(*wire::findRegister(8)));
  bench.bridge.faults.lostReplies = 0;
  bench.bridge.registers[9] = 440;
  // The late answer to the read of register 8, which the servo had lost.
  bench.bridge.deliver({milliseconds(0), {0xFF, 0x05, 0xF9, 0x04, 0xFE}});
  bench.bridge.deliver({milliseconds(1), {0xFF, 0x05, 0xF9, 0x04, 0xFE}});
  EXPECT_EQ(*bench.servo.read(kp()), 440);
}

TEST(Servo, TellsHowManyThereAre) {
  Bench bench;
  bench.bridge.servos = 0;
  EXPECT_EQ(*bench.servo.detect(), Count::None);
  bench.bridge.servos = 2;
  const Outcome<Done> outcome = bench.servo.expectOne();
  ASSERT_FALSE(outcome);
  EXPECT_EQ(outcome.problem().kind, Kind::NotOneServo);
  EXPECT_EQ(outcome.problem().count, Count::Several);
  bench.bridge.servos = 1;
  EXPECT_TRUE(bench.servo.expectOne());
}

TEST(Servo, ReadsAndMovesItsPosition) {
  Bench bench;
  EXPECT_TRUE(bench.servo.move(1023));
  EXPECT_EQ(bench.bridge.position, 1023);
  EXPECT_EQ(*bench.servo.position(), 1023);
}

TEST(Servo, IsCancelledFromAnotherThreadWhileItWaits) {
  Bench bench({.lostReplies = 100});
  bench.bridge.beforeEach = [&] {
    if (bench.bridge.sent == 2) std::thread([&] { bench.bridge.cancel(); }).join();
  };
  const Outcome<int> value = bench.servo.read(kp());
  ASSERT_FALSE(value);
  EXPECT_EQ(value.problem().kind, Kind::Cancelled);
  EXPECT_EQ(bench.bridge.sent, 2);
  EXPECT_EQ(bench.servo.waitForBridge(milliseconds(5000)).problem().kind, Kind::Cancelled);
}

TEST(Rest, IsAPositionThatStaysForHalfASecond) {
  RestWatch watch;
  EXPECT_FALSE(watch.saw(512, milliseconds(0)));
  EXPECT_FALSE(watch.saw(520, milliseconds(400)));
  EXPECT_FALSE(watch.saw(521, milliseconds(600)));  // a count is only the reading
  EXPECT_FALSE(watch.saw(520, milliseconds(899)));
  EXPECT_TRUE(watch.saw(520, milliseconds(900)));
}

TEST(Rest, IsNotACreep) {
  RestWatch watch;
  for (int step = 0; step < 20; ++step) {
    EXPECT_FALSE(watch.saw(500 + step, milliseconds(step * 200))) << step;
  }
}

TEST(MemoryLine, StampsWhatIsSentAndWhatComes) {
  MemoryLine line([](wire::Bytes) {
    return std::vector<MemoryLine::Piece>{{milliseconds(3), {1}}, {milliseconds(5), {2}}};
  });
  EXPECT_EQ(line.pause(milliseconds(10)), Received::End::TimedOut);
  const Received both =
      line.request({}, milliseconds(100), [](wire::Bytes bytes) { return bytes.size() == 2; });
  EXPECT_EQ(both.end, Received::End::Accepted);
  EXPECT_EQ(both.bytes, (std::vector<std::uint8_t>{1, 2}));
  EXPECT_EQ(both.sentAt, milliseconds(10));
  EXPECT_EQ(both.arrivedAt, milliseconds(15));
  const Received some = line.request({}, milliseconds(4), [](wire::Bytes) { return false; });
  EXPECT_EQ(some.end, Received::End::TimedOut);
  EXPECT_EQ(some.bytes, (std::vector<std::uint8_t>{1}));
  EXPECT_EQ(line.now(), milliseconds(19));
}

}  // namespace
}  // namespace tavril::servo
