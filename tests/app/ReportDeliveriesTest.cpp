// What the program makes of replies that come in pieces, together, late or spoilt. Pieces that come soon
// after each other are put together and replies that come together are parted. Each delivery is then looked
// at by itself: one that begins like a frame but is not a whole one makes the reading begin again, any other
// that is no frame is dropped.
#include "tests/support/Program.h"
#include "tests/support/ScriptedBridge.h"

#include <gtest/gtest.h>

#include <memory>
#include <regex>

namespace tavril {
namespace {

/// The link waits for 20 ms.
constexpr std::chrono::milliseconds bearableGap(15);

const QByteArray wholeDetection("\xFF\x05\x90\x01\xFE", 5);

bool asksFor(const QByteArray &command, int number) {
  return command == QByteArray("\xFF\x05\x91", 3) + static_cast<char>(number) + '\xFE';
}

/// The script that spoils the first reply to one register's read, or to the detection (0).
ScriptedBridge::Script once(int number, std::function<QList<QByteArray>(const QByteArray &reply)> spoil) {
  return [=, done = false](const QByteArray &command, const QByteArray &reply) mutable {
    const bool matches = number == 0 ? reply == wholeDetection : asksFor(command, number);
    if (done || !matches) return QList<QByteArray>{reply};
    done = true;
    return spoil(reply);
  };
}

QList<QByteArray> cut(const QByteArray &reply, qsizetype at) {
  return {reply.first(at), reply.sliced(at)};
}

/// The bridge sends nothing for a while, a millisecond for each of the empty deliveries.
QList<QByteArray> cutWithAPause(const QByteArray &reply, qsizetype at) {
  return QList<QByteArray>{reply.first(at)} + QList<QByteArray>(80) + QList<QByteArray>{reply.sliced(at)};
}

/// Detection, then the registers from the first on as far as each of the numbers.
std::vector<int> readings(const std::vector<int> &lasts) {
  std::vector<int> commands{0};
  for (const int last : lasts) {
    for (int number = 1; number <= last; ++number) commands.push_back(number);
  }
  return commands;
}

struct Reading {
  explicit Reading(ScriptedBridge::Script script) : bridge(std::move(script)) {}
  ScriptedBridge bridge;
  TavrilProgram program{TavrilProgram::reportOf(bridge.path())};
};

struct ServoReading {
  explicit ServoReading(const QStringList &faults) : servo(faults) {}
  ServoProgram servo;
  TavrilProgram program{TavrilProgram::reportOf(servo.path())};
};

struct Runs {
  Reading cutReply{once(5, [](const QByteArray &reply) { return cut(reply, 4); })};
  Reading cutLongBefore{once(5, [](const QByteArray &reply) { return cutWithAPause(reply, 4); })};
  Reading cutDetectionLongBefore{once(0, [](const QByteArray &reply) { return cutWithAPause(reply, 4); })};
  Reading cutDetection{once(0, [](const QByteArray &reply) { return cut(reply, 4); })};
  Reading gluedToTheDetection{once(0, [](const QByteArray &reply) {
    return QList<QByteArray>{reply + QByteArray("\xFF\x07\x91\x01\x00\x63\xFE", 7)};
  })};
  Reading tooLong{once(16, [](const QByteArray &reply) {
    QByteArray longer = reply;
    longer[1] = 8;
    return QList<QByteArray>{longer};
  })};
  Reading noiseBetween{[](const QByteArray &, const QByteArray &reply) {
    return QList<QByteArray>{QByteArray("\x00\xFE\xFF\x05", 4), reply, QByteArray("\xFE", 1)};
  }};
  Reading falseStart{once(2, [](const QByteArray &reply) {
    return QList<QByteArray>{QByteArray("\xFF\x01", 2), reply};
  })};
  Reading noiseInFront{
      once(7, [](const QByteArray &reply) { return QList<QByteArray>{QByteArray("\x41", 1) + reply}; })};
  Reading unknownFrames{[](const QByteArray &, const QByteArray &reply) {
    return QList<QByteArray>{QByteArray("\xFF\x04\x42\xFE", 4), reply};
  }};

  ServoReading glued{{QStringLiteral("--glue")}};
  ServoReading slow{{QStringLiteral("--delay"), QStringLiteral("100")}};
  ServoReading booting{{QStringLiteral("--start-up"), QStringLiteral("1500")}};
  ServoReading inPiecesLargerThanReplies{{QStringLiteral("--split"), QStringLiteral("7")}};

  std::vector<std::unique_ptr<ServoReading>> disturbed = readingsWith({
      {QStringLiteral("--split"), QStringLiteral("1")},
      {QStringLiteral("--split"), QStringLiteral("3")},
      {QStringLiteral("--split"), QStringLiteral("6"), QStringLiteral("--split-gap"), QStringLiteral("0")},
      {QStringLiteral("--late-ends")},
      {QStringLiteral("--noise"), QStringLiteral("--seed"), QStringLiteral("7")},
  });
  ServoReading wrongLength{{QStringLiteral("--wrong-length")}};
  ServoReading refusing{{QStringLiteral("--error"), QStringLiteral("4")}};

  static std::vector<std::unique_ptr<ServoReading>> readingsWith(const QList<QStringList> &faults) {
    std::vector<std::unique_ptr<ServoReading>> all;
    for (const QStringList &fault : faults) all.push_back(std::make_unique<ServoReading>(fault));
    return all;
  }
};

StartedFirst<Runs> runs;

void expectRightValues(Reading &reading, const std::vector<int> &commands) {
  expectSuccess(reading.program.outcome(), ScriptedBridge::json(portName(reading.bridge.path())));
  EXPECT_EQ(reading.bridge.commands(), commands);
}

std::string factoryJson(const ServoReading &reading) {
  return "{\n  \"port\": \"" + portName(reading.servo.path()) +
         "\",\n  \"registers\": {\n"
         "    \"sid\": 1,\n    \"ack_policy\": 2,\n    \"alarm_led_policy\": 0,\n"
         "    \"torque_policy\": 1,\n    \"max_tempertaure\": 80,\n    \"min_voltage\": 60,\n"
         "    \"max_voltage\": 84,\n    \"max_load\": 400,\n    \"kp\": 440,\n    \"ki\": 10,\n"
         "    \"kd\": 8000,\n    \"over_temperature\": 12,\n    \"over_voltage\": 20,\n"
         "    \"over_load\": 30,\n    \"calibration_angle\": 0,\n    \"status_error\": \"0 Items\",\n"
         "    \"status_detail\": \"1 Items\",\n    \"present_voltage\": 74,\n"
         "    \"present_temperature\": 27,\n    \"present_load\": 20\n  }\n}\n";
}

std::string silentAfter(int registers, const std::string &port) {
  return port + " stopped answering after " + std::to_string(registers) +
         " of 20 registers: check the servo's cable and power, then retry.";
}

/// A reading in which a reply, the first to this command, came in two pieces soon after each other. A machine
/// that has other things to do may have kept us from sending the second in time; then it is done over,
/// without the other readings.
void expectCutReplyToBeWhole(Reading &first, int number) {
  Reading *reading = &first;
  std::unique_ptr<Reading> again;
  reading->program.outcome();
  for (int attempt = 0; attempt < 20 && reading->bridge.longestGap() >= bearableGap; ++attempt) {
    again = std::make_unique<Reading>(once(number, [](const QByteArray &reply) { return cut(reply, 4); }));
    reading = again.get();
    reading->program.outcome();
  }
  ASSERT_LT(reading->bridge.longestGap(), bearableGap)
      << "the machine is too busy to send two pieces in time";
  expectRightValues(*reading, readings({20}));
}

TEST(ReportDeliveries, TwoPiecesThatComeSoonAfterEachOtherAreOneReply) {
  expectCutReplyToBeWhole(runs->cutReply, 5);
  expectCutReplyToBeWhole(runs->cutDetection, 0);
}

TEST(ReportDeliveries, AReplyInTwoPiecesMakesTheReadingBeginAgain) {
  expectRightValues(runs->cutLongBefore, readings({5, 20}));
}

TEST(ReportDeliveries, ADetectionWhoseEndComesLateIsAskedForAgainAfterTheReading) {
  Reading &reading = runs->cutDetectionLongBefore;
  expectSuccess(reading.program.outcome(), ScriptedBridge::json(portName(reading.bridge.path())));
  std::vector<int> expected = readings({20});
  expected.push_back(0);
  const auto &commands = reading.bridge.commands();
  ASSERT_GE(commands.size(), expected.size());
  EXPECT_EQ(std::vector(commands.begin(), commands.begin() + 22), expected);
}

TEST(ReportDeliveries, OfTwoRepliesThatComeTogetherBothCount) {
  expectSuccess(runs->gluedToTheDetection.program.outcome(),
                ScriptedBridge::json(portName(runs->gluedToTheDetection.bridge.path())));
  // The stray reply has begun a reading of its own beside the one that the detection began.
  const auto &commands = runs->gluedToTheDetection.bridge.commands();
  ASSERT_GE(commands.size(), 4U);
  EXPECT_EQ(std::vector(commands.begin(), commands.begin() + 4), (std::vector<int>{0, 1, 2, 2}));
}

TEST(ReportDeliveries, AReplyWithAWrongLengthMakesTheReadingBeginAgain) {
  expectRightValues(runs->tooLong, readings({16, 20}));
}

TEST(ReportDeliveries, NoiseInDeliveriesOfItsOwnIsDropped) {
  expectRightValues(runs->noiseBetween, readings({20}));
}

TEST(ReportDeliveries, WholeFramesOfAnUnknownKindAreIgnored) {
  expectRightValues(runs->unknownFrames, readings({20}));
}

TEST(ReportDeliveries, TwoReadingsThatRunAtOnceEndWithTheRightValues) {
  expectSuccess(runs->falseStart.program.outcome(),
                ScriptedBridge::json(portName(runs->falseStart.bridge.path())));
}

TEST(ReportDeliveries, AReplyBehindNoiseInTheSameDeliveryIsLostAndTheSilenceReported) {
  expectComplaint(runs->noiseInFront.program.outcome(),
                  silentAfter(6, portName(runs->noiseInFront.bridge.path())));
  EXPECT_EQ(runs->noiseInFront.bridge.commands(), readings({7}));
}

TEST(ReportDeliveries, RepliesThatWaitForASecondOneAreRead) {
  expectSuccess(runs->glued.program.outcome(), factoryJson(runs->glued));
}

TEST(ReportDeliveries, LateRepliesAreRead) {
  expectSuccess(runs->slow.program.outcome(), factoryJson(runs->slow));
}

TEST(ReportDeliveries, ABridgeThatIsDeafWhileItBootsIsWaitedFor) {
  expectSuccess(runs->booting.program.outcome(), factoryJson(runs->booting));
}

TEST(ReportDeliveries, RepliesThatFitInOnePieceAreRead) {
  expectSuccess(runs->inPiecesLargerThanReplies.program.outcome(),
                factoryJson(runs->inPiecesLargerThanReplies));
}

TEST(ReportDeliveries, ALineThatSpoilsEveryReplyGivesTheRightValuesOrOneLineThatSaysWhy) {
  // What comes together and what does not is up to the machine, so that a disturbed line may get through.
  for (const auto &reading : runs->disturbed) {
    const Program::Outcome &outcome = reading->program.outcome();
    if (outcome.status == 0) {
      expectSuccess(outcome, factoryJson(*reading));
      continue;
    }
    const std::string port = portName(reading->servo.path());
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.out, "");
    const std::regex line("tavril: (no answer from " + port + " within 30 s: |" + port +
                          " stopped answering after \\d+ of 20 registers: )[^\n]+\n");
    EXPECT_TRUE(std::regex_match(outcome.err, line)) << outcome.err;
  }
}

TEST(ReportDeliveries, RepliesOfWhichNoneIsWholeCountAsNoAnswer) {
  expectComplaint(runs->wrongLength.program.outcome(),
                  "no answer from " + portName(runs->wrongLength.servo.path()) +
                      " within 30 s: check that it is the servo's adapter, that the bridge has power and "
                      "that its cable is plugged in.");
}

TEST(ReportDeliveries, ErrorReportsInsteadOfValuesCountAsSilence) {
  expectComplaint(runs->refusing.program.outcome(), silentAfter(0, portName(runs->refusing.servo.path())));
}

}  // namespace
}  // namespace tavril
