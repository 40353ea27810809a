#include "cli/Conversation.h"
#include "cli/Failure.h"
#include "cli/RegisterFacts.h"
#include "cli/Servo.h"
#include "tests/cli/BridgeInTime.h"

#include <gtest/gtest.h>

#include <optional>

namespace tavril::cli {
namespace {

using std::chrono::milliseconds;

const wire::Register &kp() {
  return *wire::findRegister(9);
}

std::optional<Failure> failureOf(const std::function<void()> &act) {
  try {
    act();
  } catch (const Failure &failure) {
    return failure;
  }
  return std::nullopt;
}

struct Bench {
  explicit Bench(const BridgeFaults &faults = {}, unsigned seed = 1) : bridge(faults, seed) {}

  BridgeInTime bridge;
  QStringList trace;
  Conversation conversation{bridge, {milliseconds(300), 2}, [this](const QString &line) { trace += line; }};
  Servo servo{conversation, bridge.name()};
};

TEST(Conversation, AsksOnceWhereTheAnswerComes) {
  Bench bench;
  bench.bridge.registers[9] = 440;
  EXPECT_EQ(bench.servo.read(kp()), 440);
  EXPECT_EQ(bench.bridge.sent, 1);
  EXPECT_EQ(bench.trace, (QStringList{QStringLiteral("-> FF 05 91 09 FE  read kp"),
                                      QStringLiteral("<- FF 07 91 09 01 B8 FE  kp is 440")}));
}

TEST(Conversation, GivesUpAfterTheRetriesAndNotLater) {
  Bench bench({.lostReplies = 100});
  const auto failure = failureOf([&] { bench.servo.read(kp()); });
  ASSERT_TRUE(failure);
  EXPECT_EQ(failure->code, ExitCode::Failed);
  EXPECT_TRUE(failure->text.startsWith(
      QStringLiteral("no answer from usbserial-test to \"read kp\" within 300 ms, sent 3 times. Check")))
      << failure->text.toStdString();
  EXPECT_EQ(bench.bridge.sent, 3);
  EXPECT_EQ(bench.bridge.now(), milliseconds(900));
}

TEST(Conversation, GivesUpWhereRepliesCannotBeToldApart) {
  Bench bench({.lostReplies = 100});
  for (const wire::Register &row : wire::registers) {
    ASSERT_TRUE(failureOf([&] { bench.servo.read(row); }));
  }
  const auto failure = failureOf([&] { bench.servo.read(kp()); });
  ASSERT_TRUE(failure);
  EXPECT_TRUE(failure->text.contains(
      QStringLiteral("that late replies cannot be told from new ones. Check the cable")))
      << failure->text.toStdString();
}

TEST(Conversation, TakesALateReplyToItsOwnCommandForAnAnswer) {
  Bench bench;
  bench.bridge.faults.lostReplies = 100;
  bench.bridge.deliver(QByteArray("\xFF\x07\x91\x09\x01\xB8\xFE", 7), milliseconds(400));
  EXPECT_EQ(bench.servo.read(kp()), 440);
  EXPECT_EQ(bench.bridge.now(), milliseconds(400));
}

TEST(Conversation, IsNotFooledByALateReplyThatHasTheOldValue) {
  Bench bench;
  // The first reading is answered late, and so is its repetition.
  bench.bridge.faults.lostReplies = 100;
  bench.bridge.deliver(QByteArray("\xFF\x07\x91\x09\x01\xB8\xFE", 7), milliseconds(400));
  bench.bridge.deliver(QByteArray("\xFF\x07\x91\x09\x01\xB8\xFE", 7), milliseconds(405));
  EXPECT_EQ(bench.servo.read(kp()), 440);
  bench.bridge.faults.lostReplies = 0;
  bench.bridge.registers[9] = 500;
  EXPECT_EQ(bench.servo.read(kp()), 500);
  EXPECT_TRUE(bench.trace.contains(QStringLiteral("-> FF 05 91 01 FE  read sid")));
  EXPECT_TRUE(bench.trace.contains(QStringLiteral("<- FF 07 91 09 01 B8 FE  kp is 440 (late)")));
}

TEST(Conversation, KnowsThatNothingIsLateAnyMoreOnceALaterCommandWasAnswered) {
  Bench bench;
  bench.bridge.faults.lostReplies = 100;
  bench.bridge.deliver(QByteArray("\xFF\x07\x91\x09\x01\xB8\xFE", 7), milliseconds(400));
  EXPECT_EQ(bench.servo.read(kp()), 440);
  bench.bridge.faults.lostReplies = 0;
  EXPECT_EQ(bench.servo.write(kp(), 500).held, 500);
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
      const auto failure = failureOf([&] {
        if (writes && number != 15) {
          EXPECT_EQ(bench.servo.write(row, value).held, value) << "seed " << seed << " step " << step;
        } else {
          // Changed behind our back, so that a late reply to an earlier reading has another value.
          bench.bridge.registers[static_cast<std::size_t>(number)] = value;
          EXPECT_EQ(bench.servo.read(row), value) << "seed " << seed << " step " << step;
        }
      });
      if (failure) {
        EXPECT_TRUE(failure->text.contains(QStringLiteral("no answer from"))) << failure->text.toStdString();
      }
      ++(failure ? unanswered : answered);
    }
  }
  EXPECT_GT(answered, unanswered * 3);
  EXPECT_GT(unanswered, 0);
}

TEST(Conversation, ConfirmsASettingThatCameWithNoise) {
  Bench bench({.noisyReplies = 100});
  bench.bridge.registers[9] = 440;
  EXPECT_EQ(bench.servo.read(kp()), 440);
  EXPECT_EQ(bench.bridge.sent, 2);
}

TEST(Conversation, DoesNotConfirmALiveValueWhichMayDiffer) {
  Bench bench({.noisyReplies = 100});
  bench.bridge.registers[18] = 74;
  EXPECT_EQ(bench.servo.read(*wire::findRegister(18)), 74);
  EXPECT_EQ(bench.bridge.sent, 1);
}

TEST(Conversation, DoesNotTrustASettingThatIsAnotherEachTime) {
  Bench bench;
  bench.bridge.faults.lostReplies = 100;
  for (char value = 0; value < 6; ++value) {
    bench.bridge.deliver(QByteArray("\x55\xFF\x07\x91\x09\x00", 6) + value + '\xFE',
                         milliseconds(value * 300 + 10));
  }
  // A register that is asked between them to sort them out is answered too.
  const auto failure = failureOf([&] { bench.servo.read(kp()); });
  ASSERT_TRUE(failure);
  EXPECT_EQ(failure->code, ExitCode::Failed);
}

TEST(Conversation, RepeatsACommandThatTheBridgeDidNotUnderstand) {
  Bench bench({.error = 1});
  const auto failure = failureOf([&] { bench.servo.read(kp()); });
  ASSERT_TRUE(failure);
  EXPECT_EQ(failure->text.toStdString(),
            "the bridge on usbserial-test answered \"read kp\" with: the command came too slowly (error 1).");
  EXPECT_EQ(bench.bridge.sent, 3);
}

TEST(Conversation, BelievesAtOnceThatTheServoIsLost) {
  Bench bench({.error = 4});
  const auto failure = failureOf([&] { bench.servo.read(kp()); });
  ASSERT_TRUE(failure);
  EXPECT_EQ(failure->code, ExitCode::NoServo);
  EXPECT_EQ(bench.bridge.sent, 1);
}

TEST(Conversation, DoesNotTakeAnErrorForItsOwnWhileAnotherMayBeMeant) {
  Bench bench({.lostReplies = 100});
  EXPECT_TRUE(failureOf([&] { bench.servo.read(*wire::findRegister(8)); }));
  bench.bridge.faults.lostReplies = 0;
  bench.bridge.registers[9] = 440;
  // The late answer to the read of register 8, which the servo had lost.
  bench.bridge.deliver(QByteArray("\xFF\x05\xF9\x04\xFE", 5), milliseconds(0));
  bench.bridge.deliver(QByteArray("\xFF\x05\xF9\x04\xFE", 5), milliseconds(1));
  EXPECT_EQ(bench.servo.read(kp()), 440);
}

TEST(Servo, TellsHowManyThereAre) {
  Bench bench;
  bench.bridge.servos = 0;
  EXPECT_EQ(bench.servo.detect(), Servo::Count::None);
  bench.bridge.servos = 2;
  const auto failure = failureOf([&] { bench.servo.expectOne(); });
  ASSERT_TRUE(failure);
  EXPECT_EQ(failure->code, ExitCode::NoServo);
  bench.bridge.servos = 1;
  EXPECT_FALSE(failureOf([&] { bench.servo.expectOne(); }));
}

TEST(Servo, ReadsAndMovesItsPosition) {
  Bench bench;
  bench.servo.move(1023);
  EXPECT_EQ(bench.bridge.position, 1023);
  EXPECT_EQ(bench.servo.position(), 1023);
}

}  // namespace
}  // namespace tavril::cli
