// What the program says, and how fast, when things go wrong.
#include "tests/cli/CtlProgram.h"
#include "tests/support/Ownership.h"
#include "tests/support/ScriptedBridge.h"

#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace tavril {
namespace {

using std::chrono::milliseconds;

/// What the run gave, which must not have taken longer than its time-outs, leaving time to start in, also on
/// a busy machine.
Program::Outcome run(const QString &arguments, milliseconds timeouts = milliseconds(0)) {
  QElapsedTimer timer;
  timer.start();
  CtlProgram program(arguments);
  Program::Outcome outcome = program.outcome();
  constexpr milliseconds start{30'000};
  EXPECT_LT(timer.elapsed(), (timeouts + start).count()) << arguments.toStdString();
  EXPECT_GE(timer.elapsed(), timeouts.count()) << arguments.toStdString();
  return outcome;
}

Program::Outcome runAt(const ServoProgram &servo, const QString &arguments) {
  return run(arguments + CtlProgram::patientlyAt(servo.path()));
}

/// The same with time-outs among the arguments.
Program::Outcome runOutOfTime(const ServoProgram &servo, const QString &arguments, milliseconds timeouts) {
  return run(arguments + CtlProgram::at(servo.path()), timeouts);
}

void expectFailure(const Program::Outcome &outcome, int status, const std::string &text) {
  EXPECT_EQ(outcome.status, status);
  EXPECT_EQ(outcome.out, "");
  EXPECT_EQ(outcome.err.find("tavrilctl: "), 0U) << outcome.err;
  EXPECT_NE(outcome.err.find(text), std::string::npos) << outcome.err;
}

TEST(Trouble, ASilentBridgeIsGivenUpAfterTheTimeOuts) {
  const ServoProgram servo{{QStringLiteral("--mute")}};
  expectFailure(runOutOfTime(servo, QStringLiteral("detect --timeout 200 --retries 3"), milliseconds(800)), 6,
                "to \"detect the servo\" within 200 ms, sent 4 times. Check");
}

TEST(Trouble, ABridgeThatIsTooLateIsGivenUpToo) {
  const ServoProgram servo{{QStringLiteral("--delay"), QStringLiteral("60000")}};
  expectFailure(runOutOfTime(servo, QStringLiteral("read kp --timeout 100 --retries 1"), milliseconds(200)),
                6, "no answer from");
}

TEST(Trouble, WrongLengthsAreNoReplies) {
  const ServoProgram servo{{QStringLiteral("--wrong-length")}};
  expectFailure(runOutOfTime(servo, QStringLiteral("read kp --timeout 50"), milliseconds(150)), 6,
                "15 bytes came, none a valid reply. --verbose shows what came, and \"tavrilctl doctor\"");
}

TEST(Trouble, NoServoOrSeveralIsFour) {
  const ServoProgram none{{QStringLiteral("--no-servo")}};
  expectFailure(runAt(none, QStringLiteral("read kp")), 4,
                "no servo answered behind the bridge on usbport-pts-");
  const ServoProgram several{{QStringLiteral("--two-servos")}};
  expectFailure(runAt(several, QStringLiteral("write kp=5")), 4, "more than one servo answered");
  EXPECT_EQ(runAt(none, QStringLiteral("detect")).out, "none\n");
  EXPECT_EQ(runAt(several, QStringLiteral("detect")).out, "several\n");
  EXPECT_EQ(runAt(several, QStringLiteral("detect")).status, 4);
}

TEST(Trouble, AnErrorReportIsPassedOn) {
  const ServoProgram lost{{QStringLiteral("--error"), QStringLiteral("4")}};
  expectFailure(runAt(lost, QStringLiteral("read kp")), 4, "the bridge has lost the servo (error 4)");
  const ServoProgram slow{{QStringLiteral("--error"), QStringLiteral("1")}};
  expectFailure(runAt(slow, QStringLiteral("read kp")), 6, "the command came too slowly (error 1)");
  const Program::Outcome sent = runAt(lost, QStringLiteral("send FF0591 09FE"));
  EXPECT_EQ(sent.out, "FF 05 F9 04 FE  the bridge has lost the servo (error 4)\n");
  EXPECT_EQ(sent.status, 4);
  EXPECT_NE(sent.err.find("the bridge answered \"read kp\" with: the bridge has lost the servo (error 4)."),
            std::string::npos)
      << sent.err;
}

TEST(Trouble, AClientThatWasKilledLeavesThePortFree) {
  const ServoProgram servo{QStringList()};
  CtlProgram killed(QStringLiteral("monitor --interval 3600s") + CtlProgram::patientlyAt(servo.path()));
  ASSERT_NE(killed.firstLine(), QString());
  killed.kill();
  EXPECT_EQ(killed.outcome().status, -1);
  // The servo hears of it at once, but on its own time.
  Program::Outcome outcome;
  EXPECT_TRUE(waitFor([&] {
    outcome = runAt(servo, QStringLiteral("detect"));
    return outcome.status != 3;
  }));
  expectSuccess(outcome, "one\n");
}

TEST(Trouble, APulledPlugIsNoticedAtOnceInTheMiddle) {
  for (const char *frames : {"1", "5", "14"}) {
    const ServoProgram servo{{QStringLiteral("--unplug-after"), QString::fromLatin1(frames)}};
    expectFailure(runAt(servo, QStringLiteral("read")), 3,
                  "was removed while it was in use. Check the cable");
  }
}

TEST(Trouble, APulledPlugLeavesNoHalfAFile) {
  const QTemporaryDir folder;
  const ServoProgram servo{{QStringLiteral("--unplug-after"), QStringLiteral("9")}};
  const QString file = folder.filePath(QStringLiteral("settings.json"));
  expectFailure(runAt(servo, QStringLiteral("dump ") + file), 3, "was removed");
  EXPECT_FALSE(QFile::exists(file));
}

TEST(Trouble, APulledPlugTellsHowFarARestoreCame) {
  const QTemporaryDir folder;
  const QString file = folder.filePath(QStringLiteral("settings.json"));
  const ServoProgram healthy{QStringList()};
  ASSERT_EQ(runAt(healthy, QStringLiteral("write kp=5 ki=6 kd=7")).status, 0);
  ASSERT_EQ(runAt(healthy, QStringLiteral("dump ") + file).status, 0);
  // Detection, 15 reads, kp written and read back, and the plug is pulled when ki is written.
  const ServoProgram servo{{QStringLiteral("--unplug-after"), QStringLiteral("19")}};
  const Program::Outcome outcome = runAt(servo, QStringLiteral("restore ") + file);
  EXPECT_EQ(outcome.status, 3);
  EXPECT_NE(
      outcome.err.find(
          "kp: changed, 440 -> 5\nki: unknown, it was 10 and 6 was sent\nkd: not changed, it is 8000\n"),
      std::string::npos)
      << outcome.err;
}

TEST(Trouble, ABadFileIsToldWholeAndSendsNothing) {
  const QTemporaryDir folder;
  const QString path = folder.filePath(QStringLiteral("settings.json"));
  QFile file(path);
  ASSERT_TRUE(file.open(QIODevice::WriteOnly));
  file.write(
      "{\"format\": \"tavril-servo-settings\", \"version\": 1,\n\"settings\": {\"kp\": 5,\n\"kq\": 40000, "
      "\"ki\": -1}}");
  file.close();
  const Program::Outcome outcome = run(QStringLiteral("restore %1 --port /dev/nothing").arg(path));
  expectFailure(outcome, 6, path.toStdString() + ":3:1: settings.kq is not a setting");
  EXPECT_NE(outcome.err.find(path.toStdString() + ":3:14: settings.ki: -1 is out of range"),
            std::string::npos)
      << outcome.err;
}

TEST(Trouble, ValuesOutOfRangeAreFiveAndSendNothing) {
  expectFailure(run(QStringLiteral("write kp=32767 --port /dev/nothing")), 5,
                "kp: 32767 is out of range (0 to 32766)");
  expectFailure(run(QStringLiteral("move 1024 --port /dev/nothing")), 5, "position 1024 is out of range");
  expectFailure(run(QStringLiteral("send FF0796 --port /dev/nothing")), 2, "this is not a valid frame");
}

TEST(Trouble, NoPortIsThree) {
  expectFailure(run(QStringLiteral("detect --port /dev/nothing")), 3, "/dev/nothing");
  expectFailure(run(QStringLiteral("detect --port usbserial-nothing")), 3,
                "there is no port \"usbserial-nothing\"");
  expectFailure(run(QStringLiteral("detect --port /dev/null")), 3, "/dev/null");
}

TEST(Trouble, APortInUseIsThreeAndLeftAlone) {
  ScriptedBridge bridge{ScriptedBridge::mute};
  CtlProgram first(QStringLiteral("detect --timeout 30000") + CtlProgram::at(bridge.path()));
  ASSERT_TRUE(waitFor([&] { return !bridge.commands().empty(); }));
  expectFailure(run(QStringLiteral("detect") + CtlProgram::at(bridge.path())), 3,
                "is in use by another program");
  first.interrupt();
  EXPECT_EQ(first.outcome().status, 130);
}

TEST(Trouble, CtrlCEndsItCleanlyWithTheLineAsItWas) {
  for (const bool bySignalOfTheTerminal : {true, false}) {
    ScriptedBridge bridge([](const QByteArray &command, const QByteArray &reply) {
      return command[2] == '\x91' && command[3] == 5 ? QList<QByteArray>() : QList<QByteArray>{reply};
    });
    const termios attributes = oddAttributes(bridge.terminal());
    CtlProgram program(QStringLiteral("read --timeout 60000") + CtlProgram::at(bridge.path()));
    ASSERT_TRUE(waitFor([&] { return !bridge.commands().empty() && bridge.commands().back() == 5; }));
    EXPECT_TRUE(isExclusive(bridge.terminal()));
    bySignalOfTheTerminal ? program.interrupt() : program.terminate();
    const Program::Outcome &outcome = program.outcome();
    EXPECT_EQ(outcome.status, bySignalOfTheTerminal ? 130 : 143);
    EXPECT_EQ(outcome.out, "");
    EXPECT_EQ(outcome.err, "tavrilctl: interrupted.\n");
    EXPECT_TRUE(sameAttributes(bridge.terminal().attributes(), attributes));
    EXPECT_FALSE(isExclusive(bridge.terminal()));
    EXPECT_TRUE(isUnlocked(bridge.terminal()));
  }
}

TEST(Trouble, CtrlCAlsoEndsTheWaitForTheBridge) {
  ScriptedBridge bridge{ScriptedBridge::mute};
  CtlProgram program(QStringLiteral("detect --boot-wait 600 --port ") + bridge.path());
  ASSERT_TRUE(waitFor([&] { return !bridge.commands().empty(); }));
  program.interrupt();
  EXPECT_EQ(program.outcome().status, 130);
}

/// A terminal whose other side takes nothing any more.
class StuckTerminal : public Pty {
 public:
  StuckTerminal() {
    ::fcntl(slave(), F_SETFL, O_NONBLOCK);
    // The kernel moves on what is written, and then takes more for a while; poll() does not tell of little
    // room.
    pollfd hangup{slave(), 0, 0};
    do {
      while (::write(slave(), "x", 1) > 0) {
      }
      EXPECT_EQ(errno, EAGAIN);
      ::poll(&hangup, 1, 200);
    } while (::write(slave(), "x", 1) > 0);
    ::fcntl(slave(), F_SETFL, 0);
  }
};

TEST(Trouble, CtrlCAlsoEndsASendingThatIsHeldUp) {
  const StuckTerminal terminal;
  CtlProgram program(QStringLiteral("detect --verbose --timeout 60000") + CtlProgram::at(terminal.path()));
  // The frame is shown right before it is sent.
  ASSERT_EQ(program.firstErrorLine(), QStringLiteral("-> FF 04 90 FE  detect the servo"));
  program.interrupt();
  EXPECT_EQ(program.outcome().status, 130);
}

TEST(Trouble, AnAdapterThatTakesNothingIsGivenUp) {
  const StuckTerminal terminal;
  expectFailure(
      run(QStringLiteral("detect --timeout 100") + CtlProgram::at(terminal.path()), milliseconds(5100)), 6,
      "does not send: unplug the adapter");
}

TEST(Trouble, TheLineIsAsItWasAfterTheWorkToo) {
  ScriptedBridge bridge;
  const termios attributes = oddAttributes(bridge.terminal());
  CtlProgram program(QStringLiteral("read sid") + CtlProgram::patientlyAt(bridge.path()));
  expectSuccess(program.outcome(), " 1  sid  42\n");
  EXPECT_TRUE(sameAttributes(bridge.terminal().attributes(), attributes));
  EXPECT_FALSE(isExclusive(bridge.terminal()));
}

TEST(Trouble, ABridgeThatStartsSlowlyIsWaitedFor) {
  const ServoProgram servo{{QStringLiteral("--start-up"), QStringLiteral("1500")}};
  const Program::Outcome outcome = run(QStringLiteral("detect --boot-wait 60 --port ") + servo.path());
  expectSuccess(outcome, "one\n");
}

TEST(Trouble, AFullDiskIsAFailure) {
  Program program(
      QStringLiteral("/bin/sh"),
      {QStringLiteral("-c"), QStringLiteral("exec \"$0\" detect --demo --timeout 60000 >/dev/full"),
       QStringLiteral(TAVRILCTL_PROGRAM)});
  expectFailure(program.outcome(), 6, "the output could not be written: No space left on device.");
}

}  // namespace
}  // namespace tavril
