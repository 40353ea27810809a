// The doctor as the program that a user starts.
#include "cli/DoctorReport.h"
#include "tests/cli/CtlProgram.h"
#include "tests/support/KeyTable.h"
#include "tests/support/Ownership.h"
#include "tests/support/PlainUserProgram.h"
#include "tests/support/ScriptedBridge.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <gtest/gtest.h>

#include <sys/stat.h>

namespace tavril {
namespace {

using doctor::CheckId;
using doctor::Result;
using doctor::State;

Program::Outcome examine(const QString &path, const QString &options = {}) {
  CtlProgram program(QStringLiteral("doctor ") + options + CtlProgram::patientlyAt(path));
  return program.outcome();
}

/// For bridges from which no valid reply comes: it is waited for three times as long.
Program::Outcome examineInVain(const QString &path, int timeout_ms) {
  CtlProgram program(QStringLiteral("doctor --timeout %1").arg(timeout_ms) + CtlProgram::at(path));
  return program.outcome();
}

QJsonObject checkIn(const Program::Outcome &outcome, const char *name) {
  const QJsonArray results = QJsonDocument::fromJson(QByteArray::fromStdString(outcome.out)).array();
  EXPECT_EQ(results.size(), 11);
  for (const QJsonValue &result : results) {
    if (result[QStringLiteral("check")] == QString::fromLatin1(name)) return result.toObject();
  }
  ADD_FAILURE() << "no check " << name << " in " << outcome.out;
  return {};
}

void expectIn(const Program::Outcome &outcome, const std::string &text) {
  EXPECT_NE(outcome.out.find(text), std::string::npos) << outcome.out;
}

TEST(Doctor, FindsNothingWrongWithAGoodServo) {
  const ServoProgram servo{QStringList()};
  const Program::Outcome outcome = examine(servo.path());
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.err, "");
  expectIn(outcome, "passed   node           " + servo.path().toStdString() + " exists.\n");
  expectIn(outcome, "passed   servo          Exactly one servo answers.\n");
}

TEST(Doctor, TellsScriptsWhatIsWrong) {
  const ServoProgram several{{QStringLiteral("--two-servos")}};
  const Program::Outcome outcome = examine(several.path(), QStringLiteral("--json"));
  EXPECT_EQ(outcome.status, 4);
  const QJsonObject servo = checkIn(outcome, "servo");
  EXPECT_EQ(servo[QStringLiteral("state")], QStringLiteral("failed"));
  EXPECT_EQ(servo[QStringLiteral("finding")], QStringLiteral("doctor_servo_several"));
  EXPECT_EQ(servo[QStringLiteral("text")], QStringLiteral("More than one servo answers."));
  EXPECT_EQ(servo[QStringLiteral("advice")], QStringLiteral("Connect just one servo to the bridge."));
}

TEST(Doctor, TellsASilentBridgeFromABadLine) {
  const ServoProgram mute{{QStringLiteral("--mute")}};
  const Program::Outcome silent = examineInVain(mute.path(), 100);
  EXPECT_EQ(silent.status, 6);
  expectIn(silent, "FAILED   reply          No reply came within 0.3 s.\n");
  expectIn(silent, "skipped  servo ");
  const ServoProgram garbled{{QStringLiteral("--wrong-length")}};
  const Program::Outcome broken = examineInVain(garbled.path(), 1000);
  EXPECT_EQ(broken.status, 6);
  expectIn(broken, "FAILED   frame          The bytes are not a valid frame: FF 06 90 01 FE");
}

TEST(Doctor, NamesTheProgramThatHoldsThePort) {
  ScriptedBridge bridge{ScriptedBridge::mute};
  CtlProgram holder(QStringLiteral("detect --timeout 30000") + CtlProgram::at(bridge.path()));
  ASSERT_TRUE(waitFor([&] { return !bridge.commands().empty(); }));
  const Program::Outcome outcome = examine(bridge.path());
  EXPECT_EQ(outcome.status, 3);
  expectIn(outcome, "is in use by tavrilctl (");
  expectIn(outcome, "$ kill ");
  holder.interrupt();
  EXPECT_EQ(holder.outcome().status, 130);
}

TEST(Doctor, SaysThatThePortMayNotBeUsedAndOpensNothing) {
  const Pty terminal;
  ASSERT_EQ(::chmod(terminal.path().toLocal8Bit().constData(), 0), 0);
  const PlainUserProgram program{QStringLiteral(TAVRILCTL_PROGRAM)};
  const Program::Outcome outcome =
      program.run({QStringLiteral("doctor"), QStringLiteral("--port"), terminal.path()});
  EXPECT_EQ(outcome.status, 3) << outcome.err;
  expectIn(outcome, "FAILED   permission     You may not use " + terminal.path().toStdString());
  expectIn(outcome, "$ sudo setfacl -m u:");
  expectIn(outcome, "skipped  opening ");
}

TEST(Doctor, SaysThatAPortIsNotThere) {
  const Program::Outcome outcome = examine(QStringLiteral("/dev/ttyUSB97"));
  EXPECT_EQ(outcome.status, 3);
  expectIn(outcome, "/dev/ttyUSB97 does not exist");
}

TEST(Doctor, EndsSoonAtCtrlCWithTheLineAsItWas) {
  ScriptedBridge bridge;
  const termios attributes = oddAttributes(bridge.terminal());
  CtlProgram program(QStringLiteral("doctor --boot-wait 600 --port ") + bridge.path());
  ASSERT_TRUE(waitFor([&] { return isExclusive(bridge.terminal()); }));
  program.interrupt();
  EXPECT_EQ(program.outcome().status, 130);
  EXPECT_TRUE(bridge.commands().empty());
  EXPECT_TRUE(sameAttributes(bridge.terminal().attributes(), attributes));
  EXPECT_FALSE(isExclusive(bridge.terminal()));
}

TEST(Doctor, ExaminesTheVirtualServoToo) {
  CtlProgram program(QStringLiteral("doctor --demo --timeout 60000"));
  EXPECT_EQ(program.outcome().status, 0) << program.outcome().out;
}

TEST(Doctor, SaysWhenItsFindingsCannotBeWritten) {
  Program program(
      QStringLiteral("/bin/sh"),
      {QStringLiteral("-c"), QStringLiteral("exec \"$0\" doctor --demo --timeout 60000 >/dev/full"),
       QStringLiteral(TAVRILCTL_PROGRAM)});
  EXPECT_EQ(program.outcome().status, 6);
  EXPECT_NE(program.outcome().err.find("the output could not be written"), std::string::npos);
}

TEST(DoctorStatus, IsThatOfTheFirstFailure) {
  const auto statusOf = [](std::vector<CheckId> failed) {
    std::vector<Result> results{{CheckId::UsbAdapter, State::Warning, {}, {}, {}, {}}};
    for (const CheckId check : failed) results.push_back({check, State::Failed, {}, {}, {}, {}});
    return cli::doctorStatus(results);
  };
  EXPECT_EQ(statusOf({}), cli::ExitCode::Done);
  EXPECT_EQ(statusOf({CheckId::Permission, CheckId::Servo}), cli::ExitCode::NoPort);
  EXPECT_EQ(statusOf({CheckId::Reply}), cli::ExitCode::Failed);
  EXPECT_EQ(statusOf({CheckId::Frame}), cli::ExitCode::Failed);
  EXPECT_EQ(statusOf({CheckId::Servo}), cli::ExitCode::NoServo);
}

TEST(DoctorLines, AreTheFindingWithItsRemedyBelow) {
  const KeyTable table;
  EXPECT_EQ(cli::doctorLines({CheckId::Driver,
                              State::Failed,
                              QStringLiteral("none"),
                              {},
                              QStringLiteral("load"),
                              QStringLiteral("sudo modprobe x")},
                             table),
            QStringLiteral("FAILED   driver         [none]\n"
                           "                        [load]\n"
                           "                        $ sudo modprobe x\n"));
}

}  // namespace
}  // namespace tavril
