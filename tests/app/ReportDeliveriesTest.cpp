// What the program makes of replies that come in pieces, together, late or spoilt. The report finds them
// wherever they stand in what comes, and asks again for what does not come. The screen, of which a picture is
// made, puts pieces together that come soon after each other and parts replies that come together. It then
// looks at each delivery by itself: one that begins like a frame but is not a whole one makes the reading
// begin again, any other that is no frame is dropped.
#include "tests/support/Program.h"
#include "tests/support/ScriptedBridge.h"

#include <QTemporaryDir>

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

/// The same by way of the screen.
struct ScreenReading {
  explicit ScreenReading(ScriptedBridge::Script script) : bridge(std::move(script)) {}
  QTemporaryDir folder;
  ScriptedBridge bridge;
  TavrilProgram program{{QStringLiteral("--snapshot"), folder.filePath(QStringLiteral("screen.png")),
                         QStringLiteral("--port"), bridge.path()}};
};

/// Both, each on a bridge of its own.
struct BothReadings {
  explicit BothReadings(const ScriptedBridge::Script &script) : report(script), screen(script) {}
  Reading report;
  ScreenReading screen;
};

struct ServoReading {
  explicit ServoReading(const QStringList &faults) : servo(faults) {}
  ServoProgram servo;
  TavrilProgram program{TavrilProgram::reportOf(servo.path())};
};

struct Runs {
  BothReadings cutReply{once(5, [](const QByteArray &reply) { return cut(reply, 4); })};
  BothReadings cutLongBefore{once(5, [](const QByteArray &reply) { return cutWithAPause(reply, 4); })};
  BothReadings cutDetectionLongBefore{
      once(0, [](const QByteArray &reply) { return cutWithAPause(reply, 4); })};
  BothReadings cutDetection{once(0, [](const QByteArray &reply) { return cut(reply, 4); })};
  BothReadings gluedToTheDetection{once(0, [](const QByteArray &reply) {
    return QList<QByteArray>{reply + QByteArray("\xFF\x07\x91\x01\x00\x63\xFE", 7)};
  })};
  BothReadings tooLong{once(16, [](const QByteArray &reply) {
    QByteArray longer = reply;
    longer[1] = 8;
    return QList<QByteArray>{longer};
  })};
  BothReadings noiseBetween{[](const QByteArray &, const QByteArray &reply) {
    return QList<QByteArray>{QByteArray("\x00\xFE\xFF\x05", 4), reply, QByteArray("\xFE", 1)};
  }};
  BothReadings falseStart{once(2, [](const QByteArray &reply) {
    return QList<QByteArray>{QByteArray("\xFF\x01", 2), reply};
  })};
  BothReadings noiseInFront{
      once(7, [](const QByteArray &reply) { return QList<QByteArray>{QByteArray("\x41", 1) + reply}; })};
  BothReadings unknownFrames{[](const QByteArray &, const QByteArray &reply) {
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

void expectRightValues(Reading &reading) {
  expectSuccess(reading.program.outcome(), ScriptedBridge::json(portName(reading.bridge.path())));
}

/// The standard error output is not looked at: Qt writes there too where there is no display.
void expectPicture(ScreenReading &reading) {
  EXPECT_EQ(reading.program.outcome().out, "");
  EXPECT_EQ(reading.program.outcome().status, 0);
}

void expectWholeReading(ScreenReading &reading, const std::vector<int> &commands) {
  expectPicture(reading);
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
void expectCutReplyToBeWhole(ScreenReading &first, int number) {
  ScreenReading *reading = &first;
  std::unique_ptr<ScreenReading> again;
  reading->program.outcome();
  for (int attempt = 0; attempt < 20 && reading->bridge.longestGap() >= bearableGap; ++attempt) {
    again =
        std::make_unique<ScreenReading>(once(number, [](const QByteArray &reply) { return cut(reply, 4); }));
    reading = again.get();
    reading->program.outcome();
  }
  ASSERT_LT(reading->bridge.longestGap(), bearableGap)
      << "the machine is too busy to send two pieces in time";
  expectWholeReading(*reading, readings({20}));
}

TEST(ReportDeliveries, TwoPiecesThatComeSoonAfterEachOtherAreOneReply) {
  expectCutReplyToBeWhole(runs->cutReply.screen, 5);
  expectCutReplyToBeWhole(runs->cutDetection.screen, 0);
  for (Reading *reading : {&runs->cutReply.report, &runs->cutDetection.report}) {
    expectRightValues(*reading);
    EXPECT_EQ(reading->bridge.commands(), readings({20}));
  }
}

TEST(ReportDeliveries, AReplyInTwoPiecesMakesTheReadingBeginAgain) {
  expectWholeReading(runs->cutLongBefore.screen, readings({5, 20}));
  expectRightValues(runs->cutLongBefore.report);
  EXPECT_EQ(runs->cutLongBefore.report.bridge.commands(), readings({20})) << "but not that for the report";
}

TEST(ReportDeliveries, ADetectionWhoseEndComesLateIsAskedForAgainAfterTheReading) {
  ScreenReading &reading = runs->cutDetectionLongBefore.screen;
  expectPicture(reading);
  std::vector<int> expected = readings({20});
  expected.push_back(0);
  const auto &commands = reading.bridge.commands();
  ASSERT_GE(commands.size(), expected.size());
  EXPECT_EQ(std::vector(commands.begin(), commands.begin() + 22), expected);
  expectRightValues(runs->cutDetectionLongBefore.report);
}

TEST(ReportDeliveries, OfTwoRepliesThatComeTogetherBothCount) {
  expectPicture(runs->gluedToTheDetection.screen);
  // The stray reply has begun a reading of its own beside the one that the detection began.
  const auto &commands = runs->gluedToTheDetection.screen.bridge.commands();
  ASSERT_GE(commands.size(), 4U);
  EXPECT_EQ(std::vector(commands.begin(), commands.begin() + 4), (std::vector<int>{0, 1, 2, 2}));
  expectRightValues(runs->gluedToTheDetection.report);
}

TEST(ReportDeliveries, AReplyWithAWrongLengthMakesTheReadingBeginAgain) {
  expectWholeReading(runs->tooLong.screen, readings({16, 20}));
  expectRightValues(runs->tooLong.report);
}

TEST(ReportDeliveries, NoiseInDeliveriesOfItsOwnIsDropped) {
  expectWholeReading(runs->noiseBetween.screen, readings({20}));
  expectRightValues(runs->noiseBetween.report);
}

TEST(ReportDeliveries, WholeFramesOfAnUnknownKindAreIgnored) {
  expectWholeReading(runs->unknownFrames.screen, readings({20}));
  expectRightValues(runs->unknownFrames.report);
}

TEST(ReportDeliveries, TwoReadingsThatRunAtOnceEndWithTheRightValues) {
  expectPicture(runs->falseStart.screen);
  expectRightValues(runs->falseStart.report);
}

TEST(ReportDeliveries, AReplyBehindNoiseInTheSameDeliveryIsLostAndTheSilenceReported) {
  const Program::Outcome &outcome = runs->noiseInFront.screen.program.outcome();
  const std::string port = portName(runs->noiseInFront.screen.bridge.path());
  EXPECT_TRUE(outcome.err.ends_with("tavril: " + silentAfter(6, port) + "\n")) << outcome.err;
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(runs->noiseInFront.screen.bridge.commands(), readings({7}));
  expectRightValues(runs->noiseInFront.report);
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
