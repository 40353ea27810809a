// What the commands make of what was typed, and what they decide by themselves.
#include "cli/Console.h"
#include "cli/Conversation.h"
#include "cli/Monitor.h"
#include "cli/MotionCommands.h"
#include "cli/Progress.h"
#include "cli/RegisterCommands.h"
#include "cli/SendCommand.h"
#include "cli/Servo.h"
#include "cli/Session.h"
#include "cli/SettingsCommands.h"
#include "cli/Table.h"
#include "protocol/RegisterCatalogue.h"
#include "tests/cli/BridgeInTime.h"
#include "tests/cli/FailureOf.h"
#include "tests/support/KeyTable.h"

#include <gtest/gtest.h>

namespace tavril::cli {
namespace {

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
  for (const char *text : {"kp", "=5", "kp=", "kp=-", "kp=12a", "kp=1.5", "kp= 5", "kp=+5", "kp=0x10", "kq=5",
                           "present_load=5", "kp=5=6"}) {
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

TEST(Positions, GoFrom0To1023) {
  EXPECT_EQ(positionFrom(QStringLiteral("0")), 0);
  EXPECT_EQ(positionFrom(QStringLiteral("1023")), 1023);
  EXPECT_EQ(failureOf([] { positionFrom(QStringLiteral("1024")); }).code, ExitCode::BadValue);
  EXPECT_EQ(failureOf([] { positionFrom(QStringLiteral("-1")); }).code, ExitCode::BadValue);
  EXPECT_EQ(failureOf([] { positionFrom(QStringLiteral("middle")); }).code, ExitCode::Usage);
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

TEST(FrameToSend, IsTakenInAnyUsualWriting) {
  for (const QStringList &texts :
       {QStringList{QStringLiteral("FF"), QStringLiteral("05"), QStringLiteral("91"), QStringLiteral("08"),
                    QStringLiteral("FE")},
        QStringList{QStringLiteral("ff059108fe")},
        QStringList{QStringLiteral("0xFF 0x05 91 08"), QStringLiteral("fe")}}) {
    EXPECT_EQ(commandFromHex(texts).frame(), QByteArray::fromHex("FF059108FE"));
  }
}

TEST(FrameToSend, IsCheckedLikeAnyOther) {
  const auto refused = [](const char *hex) {
    return failureOf([&] { commandFromHex({QString::fromLatin1(hex)}); });
  };
  EXPECT_EQ(refused("FF0591G8FE").text.toStdString(),
            "this is no frame: \"FF0591G8FE\" is no byte: write two hexadecimal digits for each.");
  EXPECT_EQ(refused("FF FE").text.toStdString(), "this is no frame: 2 bytes are too few.");
  EXPECT_EQ(refused("FE 04 90 FE").text.toStdString(), "this is no frame: it must begin with FF.");
  EXPECT_EQ(refused("FF 04 90 FF").text.toStdString(), "this is no frame: it must end with FE.");
  EXPECT_EQ(refused("FF 05 90 FE").text.toStdString(),
            "this is no frame: the second byte says 5 bytes, but there are 4.");
  EXPECT_EQ(refused("FF 04 98 FE").text.toStdString(), "this is no frame: 98 is the code of no command.");
  EXPECT_EQ(refused("FF 04 91 FE").text.toStdString(),
            "this is no frame: a command of code 91 has 5 bytes, not 4.");
  EXPECT_EQ(refused("FF 05 91 15 FE").text.toStdString(),
            "this is no frame: there is no register 21; they go from 1 to 20.");
  EXPECT_EQ(refused("FF 07 92 10 00 01 FE").text.toStdString(),
            "this is no frame: status_error is a live value, which cannot be written.");
  EXPECT_EQ(refused("FF 04 98 FE").code, ExitCode::Usage);
  EXPECT_EQ(refused("FF 07 92 09 7F FF FE").code, ExitCode::BadValue);
  EXPECT_EQ(refused("FF 06 96 04 00 FE").code, ExitCode::BadValue);
  EXPECT_EQ(refused("FF 07 92 0F FF EB FE").code, ExitCode::BadValue);
  EXPECT_EQ(refused("FF 07 92 0F FF EC FE").code, ExitCode::Done);
}

TEST(Table, AlignsItsColumns) {
  Table table;
  table.addRow({QStringLiteral("a"), QStringLiteral("long one"), QString()});
  table.addRow({QStringLiteral("bcd"), QStringLiteral("x"), QStringLiteral("y")});
  EXPECT_EQ(table.text().toStdString(), "a    long one\nbcd  x         y\n");
}

class ScreenConsole final : public Console {
 public:
  explicit ScreenConsole(bool isTerminal) : isTerminal_(isTerminal) {}
  void data(const QString &text) override { printed += text; }
  void status(const QString &line) override { told.append(line); }
  void transient(const QString &line) override { shown.append(line); }
  bool isTerminal() const override { return isTerminal_; }
  QStringList shown;
  QString printed;
  QStringList told;

 private:
  const bool isTerminal_;
};

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
  Conversation conversation{bridge, {milliseconds(300), 2}};
  Servo servo{conversation, bridge.name()};
  Session session{servo, bridge, console, strings};
};

TEST(Writing, TellsOfEachValueThatTheServoDoesNotKeep) {
  CommandBench bench;
  bench.bridge.stuck = 9;
  bench.bridge.refused = 10;
  const auto assignments =
      assignmentsFrom({QStringLiteral("kp=5"), QStringLiteral("ki=6"), QStringLiteral("kd=7")});
  const Failure failure = failureOf([&] { writeRegisters(bench.session, assignments); });
  EXPECT_EQ(failure.code, ExitCode::BadValue);
  EXPECT_EQ(failure.text, QStringLiteral("2 of 3 values could not be set."));
  EXPECT_EQ(bench.console.told,
            (QStringList{QStringLiteral("kp: 5 was written, but the servo holds 0."),
                         QStringLiteral("ki: 6 was written, but the servo refused it.")}));
  EXPECT_EQ(bench.console.printed, QStringLiteral("kd=7\n"));
}

TEST(Restoring, SaysWhatCouldNotBeSetAndSetsTheRest) {
  CommandBench bench;
  bench.bridge.stuck = 9;
  const Failure failure = failureOf([&] { restore(bench.session, {{9, 5}, {10, 0}, {11, 7}}, false); });
  EXPECT_EQ(failure.code, ExitCode::BadValue);
  EXPECT_EQ(failure.text, QStringLiteral("1 of 2 settings could not be set."));
  EXPECT_EQ(bench.console.printed, QStringLiteral("kp: 0 -> 5\nkd: 0 -> 7\n"));
  EXPECT_EQ(bench.bridge.registers[11], 7);
}

TEST(Restoring, WritesOnlyWhatDiffersAndTheServoIdLast) {
  CommandBench bench;
  bench.bridge.registers[10] = 3;
  restore(bench.session, {{1, 42}, {9, 5}, {10, 3}}, false);
  EXPECT_EQ(bench.console.printed, QStringLiteral("kp: 0 -> 5\nsid: 0 -> 42\n"));
  // Three reads, then two writes that are read back.
  EXPECT_EQ(bench.bridge.sent, 7);
  EXPECT_EQ(bench.bridge.registers[1], 42);
}

TEST(Restoring, WritesNothingWhereNothingDiffersOrInADryRun) {
  CommandBench bench;
  restore(bench.session, {{9, 0}}, false);
  restore(bench.session, {{9, 1}}, true);
  EXPECT_EQ(bench.bridge.sent, 2);
  EXPECT_EQ(bench.bridge.registers[9], 0);
}

TEST(Restoring, SaysHowFarItCameWhenTheLineFails) {
  CommandBench bench;
  bench.bridge.silentAfter = 5;  // two reads, then one write that is read back, and another write
  const Failure failure = failureOf([&] { restore(bench.session, {{9, 5}, {11, 7}}, false); });
  EXPECT_EQ(failure.code, ExitCode::Failed);
  EXPECT_TRUE(failure.text.endsWith(
      QStringLiteral("\n1 of 2 changes had been made before; kd may or may not have been.")))
      << failure.text.toStdString();
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

TEST(Moving, FailsWhereTheServoComesToRestElsewhere) {
  CommandBench bench;
  bench.bridge.blocked = true;
  const Failure failure = failureOf([&] { moveTo(bench.session, 900, true); });
  EXPECT_EQ(failure.code, ExitCode::Failed);
  EXPECT_EQ(bench.console.printed, QStringLiteral("512\n"));
  EXPECT_TRUE(
      failure.text.startsWith(QStringLiteral("the servo came to rest at 512 and not at 900: see with")))
      << failure.text.toStdString();
}

/// A line behind which the servo is elsewhere each time it is asked.
class Wandering final : public Line {
 public:
  Heard request(const QByteArray &data, Time timeout, Rule rule) override {
    bridge.position = (bridge.position + 100) % 1000;
    return bridge.request(data, timeout, std::move(rule));
  }
  void pause(Time duration) override { bridge.pause(duration); }
  Time now() const override { return bridge.now(); }
  QString name() const override { return bridge.name(); }

  BridgeInTime bridge;
};

TEST(Moving, FailsWhereTheServoDoesNotComeToRest) {
  Wandering line;
  Conversation conversation(line, {});
  Servo servo(conversation, line.name());
  ScreenConsole console(false);
  const KeyTable strings;
  Session session{servo, line, console, strings};
  const Failure failure = failureOf([&] { moveTo(session, 900, true); });
  EXPECT_EQ(failure.code, ExitCode::Failed);
  EXPECT_TRUE(failure.text.startsWith(QStringLiteral("the servo has not come to rest within ")))
      << failure.text.toStdString();
  EXPECT_TRUE(failure.text.contains(QStringLiteral(": see with \"monitor\" what it does.")));
}

}  // namespace
}  // namespace tavril::cli
