// What the commands make of what was typed, and what they decide by themselves.
#include "cli/ChangeWords.h"
#include "cli/FrameWords.h"
#include "cli/Monitor.h"
#include "cli/MotionCommands.h"
#include "cli/Progress.h"
#include "cli/RegisterCommands.h"
#include "cli/Script.h"
#include "cli/SendCommand.h"
#include "cli/Session.h"
#include "cli/SettingsCommands.h"
#include "cli/Table.h"
#include "servo/Servo.h"
#include "tests/cli/FailureOf.h"
#include "tests/cli/ScreenConsole.h"
#include "tests/servo/BridgeInTime.h"
#include "tests/support/KeyTable.h"
#include "wire/Registers.h"

#include <gtest/gtest.h>

namespace tavril::cli {
namespace {

using servo::BridgeInTime;
using servo::Change;
using std::chrono::milliseconds;

Failure assigning(const QStringList &texts) {
  return failureOf([&] { assignmentsFrom(texts); });
}

TEST(Assignments, AreARegisterAndItsValue) {
  const auto assignments =
      assignmentsFrom({QStringLiteral("kp=32766"), QStringLiteral("15=-20"), QStringLiteral("sid=0")});
  ASSERT_EQ(assignments.size(), 3U);
  EXPECT_EQ(assignments[0].row->number, 9);
  EXPECT_EQ(assignments[0].value, 32766);
  EXPECT_EQ(assignments[1].row->number, 15);
  EXPECT_EQ(assignments[1].value, -20);
}

TEST(Assignments, KeepToTheRanges) {
  for (const char *text : {"kp=32767", "kp=-1", "calibration_angle=-21", "calibration_angle=21", "sid=254",
                           "ack_policy=3", "kp=99999999999"}) {
    EXPECT_EQ(assigning({QString::fromLatin1(text)}).code, ExitCode::BadValue) << text;
  }
  EXPECT_EQ(assigning({QStringLiteral("sid=254")}).text.toStdString(),
            "sid: 254 is out of range (0 to 253). Nothing was written.");
}

TEST(Assignments, AreWrongAltogetherWithoutANumber) {
  for (const char *text : {"kp", "=5", "kp=", "kp=-", "kp=12a", "kp=1.5", "kp= 5", "kp=+5", "kp=0x10",
                           "kp=5ms", "over_load=5V", "kq=5", "present_load=5", "kp=5=6"}) {
    EXPECT_EQ(assigning({QString::fromLatin1(text)}).code, ExitCode::Usage) << text;
  }
}

TEST(Assignments, AreAllCheckedAndEveryProblemNamed) {
  const Failure failure =
      assigning({QStringLiteral("kp=40000"), QStringLiteral("ki=5"), QStringLiteral("sid=999")});
  EXPECT_EQ(failure.code, ExitCode::BadValue);
  EXPECT_TRUE(failure.text.contains(QStringLiteral("kp: 40000")));
  EXPECT_TRUE(failure.text.contains(QStringLiteral("sid: 999")));
}

TEST(Assignments, GoToARegisterOnce) {
  EXPECT_EQ(assigning({QStringLiteral("kp=5"), QStringLiteral("9=6")}).code, ExitCode::Usage);
}

TEST(Assignments, TakeTheUnitWhereItIsKnown) {
  const auto valueOf = [](const char *text) {
    return assignmentsFrom({QString::fromUtf8(text)}).front().value;
  };
  EXPECT_EQ(valueOf("over_load=300ms"), 30);
  EXPECT_EQ(valueOf("over_load=0.3s"), 30);
  EXPECT_EQ(valueOf("over_load=30"), 30);
  EXPECT_EQ(valueOf("max_temperature=75C"), 75);
  EXPECT_EQ(valueOf("max_tempertaure=75°C"), 75);
  EXPECT_EQ(assigning({QStringLiteral("max_temperature=warm")}).text.toStdString(),
            "max_tempertaure takes a whole number from 0 to 253, or a value with its unit such as 80°C, not "
            "\"warm\". Nothing was written.");
  EXPECT_TRUE(assigning({QStringLiteral("over_load=long")}).text.contains(QStringLiteral("such as 300ms")));
  EXPECT_EQ(assigning({QStringLiteral("over_load=305ms")}).text.toStdString(),
            "over_load: 305ms is not a multiple of 10 ms. Nothing was written.");
  EXPECT_EQ(assigning({QStringLiteral("over_load=2560ms")}).code, ExitCode::BadValue);
}

TEST(Assignments, AreNotEchoedWithControlCharacters) {
  EXPECT_EQ(assigning({QStringLiteral("kp=\x1b[2J\n")}).text.toStdString(),
            "kp takes a whole number from 0 to 32766, not \"\\u001b[2J\\u000a\". Nothing was written.");
}

TEST(RegistersNamed, AreTakenOnce) {
  EXPECT_EQ(registersNamed({QStringLiteral("kp"), QStringLiteral("ki"), QStringLiteral("9")}).size(), 2U);
}

TEST(Positions, MayBeGivenInDegrees) {
  EXPECT_EQ(positionFrom(QStringLiteral("90deg")), 307);
  EXPECT_EQ(positionFrom(QStringLiteral("0.5°")), 2);
  EXPECT_EQ(positionFrom(QStringLiteral("300deg")), 1023);
  EXPECT_EQ(failureOf([] { positionFrom(QStringLiteral("301deg")); }).code, ExitCode::BadValue);
  EXPECT_EQ(failureOf([] { positionFrom(QStringLiteral("90rad")); }).code, ExitCode::Usage);
}

TEST(Positions, GoFrom0To1023) {
  EXPECT_EQ(positionFrom(QStringLiteral("0")), 0);
  EXPECT_EQ(positionFrom(QStringLiteral("1023")), 1023);
  EXPECT_EQ(failureOf([] { positionFrom(QStringLiteral("1024")); }).code, ExitCode::BadValue);
  EXPECT_EQ(failureOf([] { positionFrom(QStringLiteral("-1")); }).code, ExitCode::BadValue);
  EXPECT_EQ(failureOf([] { positionFrom(QStringLiteral("middle")); }).code, ExitCode::Usage);
}

TEST(FrameToSend, IsTakenInAnyUsualWriting) {
  for (const QStringList &texts :
       {QStringList{QStringLiteral("FF"), QStringLiteral("05"), QStringLiteral("91"), QStringLiteral("08"),
                    QStringLiteral("FE")},
        QStringList{QStringLiteral("ff059108fe")},
        QStringList{QStringLiteral("0xFF 0x05 91 08"), QStringLiteral("fe")}}) {
    EXPECT_EQ(inHex(commandFromHex(texts)), QStringLiteral("FF 05 91 08 FE"));
  }
}

TEST(FrameToSend, IsCheckedLikeAnyOther) {
  const auto refused = [](const char *hex) {
    return failureOf([&] { commandFromHex({QString::fromLatin1(hex)}); });
  };
  EXPECT_EQ(
      refused("FF0591G8FE").text.toStdString(),
      "this is not a valid frame: \"FF0591G8FE\" is not a byte. Write two hexadecimal digits for each byte.");
  EXPECT_EQ(refused("FF FE").text.toStdString(),
            "this is not a valid frame: 2 bytes cannot be a whole frame.");
  EXPECT_EQ(refused("FE 04 90 FE").text.toStdString(), "this is not a valid frame: it must begin with FF.");
  EXPECT_EQ(refused("FF 04 90 FF").text.toStdString(), "this is not a valid frame: it must end with FE.");
  EXPECT_EQ(refused("FF 05 90 FE").text.toStdString(),
            "this is not a valid frame: the second byte says 5 bytes, but there are 4.");
  EXPECT_EQ(refused("FF 04 98 FE").text.toStdString(),
            "this is not a valid frame: there is no command with the code 98.");
  EXPECT_EQ(refused("FF 04 91 FE").text.toStdString(),
            "this is not a valid frame: a command of code 91 has 5 bytes, not 4.");
  EXPECT_EQ(refused("FF 05 91 15 FE").text.toStdString(),
            "this is not a valid frame: there is no register 21; they go from 1 to 20.");
  EXPECT_EQ(refused("FF 07 92 10 00 01 FE").text.toStdString(),
            "this is not a valid frame: status_error is measured by the servo and cannot be written.");
  EXPECT_EQ(refused("FF 04 98 FE").code, ExitCode::Usage);
  EXPECT_EQ(refused("FF 07 92 09 7F FF FE").code, ExitCode::BadValue);
  EXPECT_EQ(refused("FF 06 96 04 00 FE").code, ExitCode::BadValue);
  EXPECT_EQ(refused("FF 07 92 0F FF EB FE").code, ExitCode::BadValue);
  EXPECT_EQ(refused("FF 07 92 0F FF EC FE").code, ExitCode::Done);
}

TEST(FrameToSend, IsConfirmedWhereItsValueMayDoHarm) {
  const auto unconfirmed = [](const char *hex) {
    const wire::Command command = commandFromHex({QString::fromLatin1(hex)});
    EXPECT_EQ(failureOf([&] { expectConfirmed(command, true); }).code, ExitCode::Done) << hex;
    return failureOf([&] { expectConfirmed(command, false); });
  };
  const Failure failure = unconfirmed("FF 07 92 02 00 00 FE");
  EXPECT_EQ(failure.code, ExitCode::BadValue);
  EXPECT_EQ(failure.text.toStdString(),
            "ack_policy=0 may keep the servo from answering, and then Tavril can no longer set it up.\n"
            "Nothing was sent. Confirm with --yes.");
  EXPECT_EQ(unconfirmed("FF 07 92 08 00 00 FE").code, ExitCode::BadValue);
  for (const char *harmless : {"FF 07 92 02 00 01 FE", "FF 07 92 09 00 00 FE", "FF 05 91 02 FE"}) {
    EXPECT_EQ(unconfirmed(harmless).code, ExitCode::Done) << harmless;
  }
}

TEST(Table, AlignsItsColumns) {
  Table table;
  table.addRow({QStringLiteral("a"), QStringLiteral("long one"), QString()});
  table.addRow({QStringLiteral("bcd"), QStringLiteral("x"), QStringLiteral("y")});
  EXPECT_EQ(table.text().toStdString(), "a    long one\nbcd  x         y\n");
}

QStringList barsOf(bool isTerminal, milliseconds each) {
  ScreenConsole console(isTerminal);
  BridgeInTime line;
  {
    Progress progress(console, line, QStringLiteral("read"), 4);
    for (int done = 1; done <= 4; ++done) {
      line.pause(each);
      progress.done(done);
    }
  }
  return console.shown;
}

TEST(ProgressBar, ShowsWhereWorkTakesMoreThanASecond) {
  EXPECT_EQ(barsOf(true, milliseconds(400)),
            (QStringList{QStringLiteral("[#####---------------] 1/4 read"),
                         QStringLiteral("[##########----------] 2/4 read"),
                         QStringLiteral("[###############-----] 3/4 read"),
                         QStringLiteral("[####################] 4/4 read"), QString()}));
}

TEST(ProgressBar, DoesNotShowForShortWorkOrWithoutATerminal) {
  EXPECT_EQ(barsOf(true, milliseconds(100)), QStringList{QString()});
  EXPECT_EQ(barsOf(false, milliseconds(400)), QStringList());
}

struct CommandBench {
  BridgeInTime bridge;
  ScreenConsole console{false};
  KeyTable strings;
  servo::Servo servo{bridge};
  Session session{servo, bridge, QStringLiteral("usbserial-test"), console, strings};
};

std::vector<Assignment> assignmentsOf(const char *text) {
  return assignmentsFrom(QString::fromLatin1(text).split(u' '));
}

TEST(Writing, TellsOldAndNewValuesOnceAllIsDone) {
  CommandBench bench;
  bench.bridge.registers[9] = 440;
  writeRegisters(bench.session, assignmentsOf("kp=5 ki=6"), {});
  EXPECT_EQ(bench.console.printed, QStringLiteral("kp: 440 -> 5\nki: 0 -> 6\n"));
  EXPECT_EQ(bench.console.told, QStringList());
}

TEST(Writing, TellsOfEachValueThatTheServoDoesNotKeep) {
  CommandBench bench;
  bench.bridge.stuck = 9;
  bench.bridge.refused = 10;
  const Failure failure =
      failureOf([&] { writeRegisters(bench.session, assignmentsOf("kp=5 ki=6 kd=7"), {}); });
  EXPECT_EQ(failure.code, ExitCode::BadValue);
  EXPECT_EQ(failure.text.toStdString(),
            "2 of 3 values could not be set:\n"
            "kp: not changed, it is 0 (the servo did not keep 5)\n"
            "ki: not changed, it is 0 (the servo refused 6: value out of range (error 3))\n"
            "kd: changed, 0 -> 7");
  EXPECT_EQ(bench.console.printed, QString());
}

TEST(Writing, SaysOfEachValueWhatBecameOfItWhenTheLineFails) {
  CommandBench bench;
  bench.bridge.silentAfter = 3 + 2 + 1;  // three reads, one write that is read back, and another write
  const Failure failure =
      failureOf([&] { writeRegisters(bench.session, assignmentsOf("kp=5 ki=6 kd=7"), {}); });
  EXPECT_EQ(failure.code, ExitCode::Failed);
  EXPECT_TRUE(
      failure.text.endsWith(QStringLiteral("\nkp: changed, 0 -> 5\n"
                                           "ki: unknown, it was 0 and 6 was sent\n"
                                           "kd: not changed, it is 0")))
      << failure.text.toStdString();
}

TEST(Writing, SaysThatNothingIsChangedWhereTheLineFailsBeforeTheFirstWrite) {
  const auto failing = [](const char *texts, int silentAfter) {
    CommandBench bench;
    bench.bridge.silentAfter = silentAfter;
    return failureOf([&] { writeRegisters(bench.session, assignmentsOf(texts), {}); }).text;
  };
  EXPECT_TRUE(failing("kp=5 ki=6", 2).endsWith(QStringLiteral("\nkp: not changed\nki: not changed")))
      << failing("kp=5 ki=6", 2).toStdString();
  // The present load, with which the limit is compared.
  EXPECT_TRUE(failing("max_load=5", 2).endsWith(QStringLiteral("\nmax_load: not changed, it is 0")))
      << failing("max_load=5", 2).toStdString();
  CommandBench bench;
  bench.bridge.silentAfter = 1;
  const QString restoring = failureOf([&] { restore(bench.session, {{9, 5}, {11, 7}}, {}); }).text;
  EXPECT_TRUE(restoring.endsWith(QStringLiteral("\nkp: not changed\nkd: not changed")))
      << restoring.toStdString();
  CommandBench dry;
  dry.bridge.silentAfter = 1;
  EXPECT_FALSE(failureOf([&] {
                 restore(dry.session, {{9, 5}}, {.dryRun = true});
               }).text.contains(QStringLiteral("not changed")));
}

TEST(Writing, TellsTheValueThatTheServoTookInstead) {
  Change change{.number = 9, .from = 440, .to = 5};
  change.state = Change::State::NotKept;
  change.held = 7;
  EXPECT_EQ(outcomeInWords(change).toStdString(), "kp: changed, 440 -> 7 (5 was sent)");
}

TEST(Writing, SaysOfEachValueWhatBecameOfItWhenTheDiskIsFull) {
  CommandBench bench;
  bench.console.isFull = true;
  const Failure failure = failureOf([&] { writeRegisters(bench.session, assignmentsOf("kp=5"), {}); });
  EXPECT_EQ(failure.text.toStdString(), "the disk is full.\nkp: changed, 0 -> 5");
  EXPECT_EQ(bench.bridge.registers[9], 5);
}

TEST(Writing, IsDoneAlsoWhereTheServoAnswersNoWrites) {
  CommandBench bench;
  bench.bridge.answersWrites = false;
  writeRegisters(bench.session, assignmentsOf("kp=5"), {});
  EXPECT_EQ(bench.console.printed, QStringLiteral("kp: 0 -> 5\n"));
}

TEST(Writing, FailsWhereAWriteWithoutAReplyIsNotSeenInTheReading) {
  CommandBench bench;
  bench.bridge.answersWrites = false;
  bench.bridge.stuck = 9;
  const Failure failure = failureOf([&] { writeRegisters(bench.session, assignmentsOf("kp=5"), {}); });
  EXPECT_EQ(failure.code, ExitCode::Failed);
  EXPECT_TRUE(failure.text.startsWith(QStringLiteral("no answer from usbserial-test to \"write 5 to kp\"")))
      << failure.text.toStdString();
}

TEST(Writing, WantsToBeForcedWhereItMayDoHarm) {
  CommandBench bench;
  bench.bridge.registers[18] = 74;
  bench.bridge.registers[6] = 60;
  bench.bridge.registers[7] = 84;
  const Failure failure =
      failureOf([&] { writeRegisters(bench.session, assignmentsOf("max_voltage=70"), {}); });
  EXPECT_EQ(failure.code, ExitCode::BadValue);
  EXPECT_EQ(failure.text.toStdString(),
            "max_voltage=70 is below present_voltage, which is 74 now.\n"
            "Nothing was written. To write it nevertheless, add --force.");
  EXPECT_EQ(bench.bridge.registers[7], 84);
  writeRegisters(bench.session, assignmentsOf("max_voltage=70"), {.force = true});
  EXPECT_EQ(bench.bridge.registers[7], 70);
  EXPECT_EQ(
      bench.console.told,
      QStringList{QStringLiteral("Warning: max_voltage=70 is below present_voltage, which is 74 now.")});
}

TEST(SettingTheId, LooksForTheServoUnderItsNewOne) {
  CommandBench bench;
  setServoId(bench.session, assignmentsOf("sid=42").front(), {});
  EXPECT_EQ(bench.bridge.registers[1], 42);
  EXPECT_EQ(bench.bridge.sent, 4);  // read, written, read back, and the servo detected
  bench.bridge.servos = 0;
  EXPECT_EQ(failureOf([&] { setServoId(bench.session, assignmentsOf("sid=43").front(), {}); }).code,
            ExitCode::NoServo);
}

TEST(Restoring, SaysWhatCouldNotBeSetAndSetsTheRest) {
  CommandBench bench;
  bench.bridge.stuck = 9;
  const Failure failure = failureOf([&] { restore(bench.session, {{9, 5}, {10, 0}, {11, 7}}, {}); });
  EXPECT_EQ(failure.code, ExitCode::BadValue);
  EXPECT_EQ(failure.text.toStdString(),
            "1 of 2 values could not be set:\n"
            "kp: not changed, it is 0 (the servo did not keep 5)\nkd: changed, 0 -> 7");
  EXPECT_EQ(bench.bridge.registers[11], 7);
}

TEST(Restoring, WritesOnlyWhatDiffersAndTheReplyPolicyLast) {
  CommandBench bench;
  bench.bridge.registers[10] = 3;
  restore(bench.session, {{1, 42}, {2, 1}, {9, 5}, {10, 3}}, {});
  EXPECT_EQ(bench.console.printed, QStringLiteral("kp: 0 -> 5\nsid: 0 -> 42\nack_policy: 0 -> 1\n"));
  EXPECT_EQ(bench.console.told, QStringList{QStringLiteral("3 of 4 settings were changed.")});
  // Four reads, then three writes that are read back.
  EXPECT_EQ(bench.bridge.sent, 10);
  EXPECT_EQ(bench.bridge.registers[1], 42);
}

TEST(Restoring, WritesNothingWhereNothingDiffersOrInADryRun) {
  CommandBench bench;
  restore(bench.session, {{9, 0}}, {});
  restore(bench.session, {{9, 1}}, {.dryRun = true});
  EXPECT_EQ(bench.bridge.sent, 2);
  EXPECT_EQ(bench.bridge.registers[9], 0);
  EXPECT_EQ(bench.console.printed, QStringLiteral("kp: 0 -> 1\n"));
}

TEST(Restoring, SaysHowFarItCameWhenTheLineFails) {
  CommandBench bench;
  bench.bridge.silentAfter = 5;  // two reads, then one write that is read back, and another write
  const Failure failure = failureOf([&] { restore(bench.session, {{9, 5}, {11, 7}}, {}); });
  EXPECT_EQ(failure.code, ExitCode::Failed);
  EXPECT_TRUE(
      failure.text.endsWith(QStringLiteral("\nkp: changed, 0 -> 5\nkd: unknown, it was 0 and 7 was sent")))
      << failure.text.toStdString();
}

TEST(Releasing, SucceedsWithoutAReplyAndWaitsForNoneForLong) {
  CommandBench bench;
  bench.bridge.faults.lostReplies = 100;
  bench.session.expect(bench.servo.release());
  EXPECT_EQ(bench.bridge.sent, 1);
  EXPECT_EQ(bench.bridge.now(), milliseconds(100));
}

TEST(Releasing, FailsWhereTheBridgeReportsAnError) {
  CommandBench bench;
  bench.bridge.refusedCode = 0x93;
  EXPECT_EQ(failureOf([&] { bench.session.expect(bench.servo.release()); }).text.toStdString(),
            "the bridge on usbserial-test answered \"release the servo\" with: unknown command (error 0).");
}

TEST(Releasing, FailsWhereTheBridgeReportsAnErrorThoughItHasRestartedBefore) {
  CommandBench bench;
  bench.bridge.deafUntil = milliseconds(100);
  waitForBridge(bench.session, milliseconds(5000));
  bench.bridge.refusedCode = 0x93;
  EXPECT_TRUE(failureOf([&] {
                bench.session.expect(bench.servo.release());
              }).text.contains(QStringLiteral("\"release the servo\" with: unknown command (error 0).")));
}

/// Lines that a user types; the servo is unplugged before the first of them.
class TypedLines final : public CommandSource {
 public:
  TypedLines(BridgeInTime &bridge, const QStringList &lines) : bridge_(bridge), lines_(lines) {}
  std::optional<QString> next() override {
    bridge_.servos = 0;
    if (lines_.isEmpty()) return std::nullopt;
    return lines_.takeFirst();
  }
  QString place() const override { return {}; }

 private:
  BridgeInTime &bridge_;
  QStringList lines_;
};

TEST(TypedCommands, ArePlainAboutAServoThatIsGoneSinceThePortWasOpened) {
  for (const bool inShell : {true, false}) {
    CommandBench bench;
    waitForBridge(bench.session, milliseconds(5000));
    TypedLines lines(bench.bridge, {QStringLiteral("detect")});
    if (inShell) {
      runShell(bench.session, lines);
    } else {
      EXPECT_EQ(failureOf([&] { runCommands(bench.session, lines, false); }).code, ExitCode::NoServo);
    }
    EXPECT_EQ(bench.console.printed, QStringLiteral("none\n"));
  }
}

TEST(TypedCommands, HaveAHelpWithWhatCanBeTyped) {
  CommandBench bench;
  TypedLines lines(bench.bridge, {QStringLiteral("help"), QStringLiteral("read --help")});
  runShell(bench.session, lines);
  const QString printed = bench.console.printed;
  EXPECT_TRUE(printed.contains(QStringLiteral("\n  exit "))) << printed.toStdString();
  EXPECT_TRUE(printed.contains(QStringLiteral("\n  read "))) << printed.toStdString();
  for (const char *refused : {"ports", "doctor", "run", "shell"}) {
    EXPECT_FALSE(printed.contains(QStringLiteral("  %1 ").arg(QString::fromLatin1(refused)))) << refused;
  }
  EXPECT_TRUE(printed.contains(QStringLiteral("tavrilctl read"))) << printed.toStdString();
  EXPECT_EQ(bench.console.told, QStringList());
}

TEST(WaitingForTheBridge, TakesNoTimeWhereItAnswers) {
  CommandBench bench;
  waitForBridge(bench.session, milliseconds(5000));
  EXPECT_LT(bench.bridge.now(), milliseconds(50));
  EXPECT_EQ(bench.bridge.sent, 1);
  // The answer was also that to the question whether there is one servo.
  bench.session.expect(bench.servo.expectOne());
  EXPECT_EQ(bench.bridge.sent, 1);
}

TEST(WaitingForTheBridge, LeavesABootLoaderInPeaceAndThenAsksEveryHalfSecond) {
  CommandBench bench;
  bench.bridge.deafUntil = milliseconds(3200);
  waitForBridge(bench.session, milliseconds(5000));
  EXPECT_EQ(bench.bridge.askedAt,
            (std::vector<servo::Time>{milliseconds(20), milliseconds(2020), milliseconds(2520),
                                      milliseconds(3020), milliseconds(3520)}));
  EXPECT_LT(bench.bridge.now(), milliseconds(3600));
}

TEST(WaitingForTheBridge, IsNoLongerWherePatienceWithRepliesIs) {
  CommandBench bench;
  servo::Servo servo(bench.bridge, {milliseconds(60'000), 0});
  Session session{servo, bench.bridge, {}, bench.console, bench.strings};
  bench.bridge.deafUntil = milliseconds(60'000);
  waitForBridge(session, milliseconds(2700));
  EXPECT_EQ(bench.bridge.askedAt,
            (std::vector<servo::Time>{milliseconds(20), milliseconds(2020), milliseconds(2520)}));
  EXPECT_EQ(bench.bridge.now(), milliseconds(2720));
}

TEST(WaitingForTheBridge, EndsAndLeavesTheCommandToFail) {
  CommandBench bench;
  bench.bridge.deafUntil = milliseconds(60'000);
  waitForBridge(bench.session, milliseconds(5000));
  EXPECT_EQ(bench.bridge.now(), milliseconds(5020));
  EXPECT_TRUE(failureOf([&] {
                bench.session.expect(bench.servo.expectOne());
              }).text.startsWith(QStringLiteral("no answer from usbserial-test to \"detect the servo\"")));
}

TEST(WaitingForTheBridge, ShowsHowLongItHasWaited) {
  CommandBench bench;
  ScreenConsole terminal(true);
  Session session{bench.servo, bench.bridge, {}, terminal, bench.strings};
  bench.bridge.deafUntil = milliseconds(60'000);
  waitForBridge(session, milliseconds(5000));
  EXPECT_TRUE(terminal.shown.contains(QStringLiteral("waiting for the bridge: 1 of at most 5 s")))
      << terminal.shown.join(u'\n').toStdString();
  EXPECT_EQ(terminal.shown.back(), QString());
}

TEST(WaitingForTheBridge, DropsAnswersThatComeLate) {
  CommandBench bench;
  bench.bridge.faults.longestDelay_ms = 1;
  bench.bridge.deafUntil = milliseconds(2100);
  // The answer to the first question comes while nobody listens.
  bench.bridge.deliver({milliseconds(1000), {0xFF, 0x05, 0x90, 0x02, 0xFE}});
  waitForBridge(bench.session, milliseconds(5000));
  EXPECT_EQ(*bench.servo.detect(), servo::Count::One);
}

TEST(WaitingForTheBridge, AsksNothingWhereThereIsNoWait) {
  CommandBench bench;
  waitForBridge(bench.session, milliseconds(0));
  EXPECT_EQ(bench.bridge.sent, 0);
}

TEST(Monitoring, LeavesOutASampleThatGotNoAnswerAndEndsAfterThree) {
  CommandBench bench;
  bench.bridge.silentAfter = 1 + 6 + 1;
  Options options;
  options.count = 5;
  const Failure failure = failureOf([&] { monitor(bench.session, options); });
  EXPECT_EQ(failure.code, ExitCode::Failed);
  EXPECT_EQ(bench.console.printed.count(u'\n'), 1);
  EXPECT_EQ(bench.console.told.size(), 2);
}

TEST(Monitoring, KeepsToItsInterval) {
  CommandBench bench;
  Options options;
  options.count = 3;
  options.interval = milliseconds(250);
  monitor(bench.session, options);
  const QStringList lines = bench.console.printed.split(u'\n', Qt::SkipEmptyParts);
  ASSERT_EQ(lines.size(), 3);
  EXPECT_TRUE(lines[1].contains(QStringLiteral("0.250 s")));
  EXPECT_TRUE(lines[2].contains(QStringLiteral("0.500 s")));
}

TEST(Moving, SaysWhenItIsInterruptedThatTheServoGoesOn) {
  CommandBench bench;
  bench.bridge.blocked = true;
  // The user presses Ctrl-C while the position is read for the third time.
  bench.bridge.beforeEach = [&] {
    if (bench.bridge.sent == 4) bench.bridge.cancel();
  };
  const Failure failure = failureOf([&] { moveTo(bench.session, 900, true, false); });
  EXPECT_EQ(failure.code, ExitCode::Interrupted);
  EXPECT_EQ(failure.text.toStdString(),
            "interrupted; the servo goes on to 900. It was at 512. \"tavrilctl stop\" stops it.");
}

TEST(Moving, SaysThatTheServoMayGoOnWhereTheBridgeFallsSilent) {
  CommandBench bench;
  bench.bridge.blocked = true;
  bench.bridge.silentAfter = 3;
  const Failure failure = failureOf([&] { moveTo(bench.session, 900, true, false); });
  EXPECT_EQ(failure.code, ExitCode::Failed);
  EXPECT_TRUE(failure.text.startsWith(QStringLiteral("no answer from "))) << failure.text.toStdString();
  EXPECT_TRUE(failure.text.endsWith(
      QStringLiteral("\nThe servo may still be moving to 900. It was at 512. \"tavrilctl stop\" stops it.")))
      << failure.text.toStdString();
}

TEST(Stopping, SetsTheGoalToWhereTheServoIs) {
  CommandBench bench;
  bench.bridge.position = 613;
  bench.bridge.blocked = true;
  stopMoving(bench.session, false);
  EXPECT_EQ(bench.console.printed, QStringLiteral("613\n"));
  EXPECT_EQ(bench.bridge.goal, 613);
}

TEST(Moving, FailsWhereTheServoComesToRestElsewhere) {
  CommandBench bench;
  bench.bridge.blocked = true;
  const Failure failure = failureOf([&] { moveTo(bench.session, 900, true, false); });
  EXPECT_EQ(failure.code, ExitCode::Failed);
  EXPECT_EQ(bench.console.printed, QStringLiteral("512\n"));
  EXPECT_TRUE(failure.text.startsWith(QStringLiteral("the servo came to rest at 512 and not at 900. ")))
      << failure.text.toStdString();
}

TEST(Moving, FailsWhereTheServoDoesNotComeToRest) {
  CommandBench bench;
  // The servo is elsewhere each time it is asked.
  bench.bridge.beforeEach = [&] { bench.bridge.position = (bench.bridge.position + 100) % 1000; };
  const Failure failure = failureOf([&] { moveTo(bench.session, 900, true, false); });
  EXPECT_EQ(failure.code, ExitCode::Failed);
  EXPECT_TRUE(failure.text.startsWith(QStringLiteral("the servo was still moving after 30 s; it is at ")))
      << failure.text.toStdString();
  EXPECT_TRUE(failure.text.contains(QStringLiteral("\"tavrilctl stop\" stops it.")));
}

}  // namespace
}  // namespace tavril::cli
