#include "tests/support/Ownership.h"
#include "tests/support/PlainUserProgram.h"
#include "tests/support/Program.h"
#include "tests/support/ScriptedBridge.h"

#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <memory>

#include <grp.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tavril {
namespace {

struct ServoReport {
  explicit ServoReport(const QStringList &faults) : servo(faults) {}
  std::string port() const { return portName(servo.path()); }
  ServoProgram servo;
  TavrilProgram program{TavrilProgram::reportOf(servo.path())};
};

struct Runs {
  ServoReport mute{{QStringLiteral("--mute")}};
  ServoReport noServo{{QStringLiteral("--no-servo")}};
  ServoReport twoServos{{QStringLiteral("--two-servos")}};
  ServoReport unplugged{{QStringLiteral("--unplug-after"), QStringLiteral("10")}};

  /// Pulled as soon as it is open, while the bridge is given its time to start up.
  ScriptedBridge pulledEarly;
  TavrilProgram ofPulledEarly{TavrilProgram::reportOf(pulledEarly.path())};
  bool wasOpened = waitFor([this] { return isExclusive(pulledEarly.terminal()); });

  /// Never answers, and has somebody else try the port when the first command comes.
  ScriptedBridge silent{[this](const QByteArray &, const QByteArray &) {
    wasExclusive = isExclusive(silent.terminal());
    wasUnlocked = isUnlocked(silent.terminal());
    intruder = std::make_unique<TavrilProgram>(TavrilProgram::reportOf(silent.path()));
    return QList<QByteArray>();
  }};
  bool wasExclusive = false;
  bool wasUnlocked = true;
  std::unique_ptr<TavrilProgram> intruder;
  termios attributes = oddAttributes(silent.terminal());
  TavrilProgram ofSilent{TavrilProgram::reportOf(silent.path())};

  Runs() { pulledEarly.unplug(); }
};

StartedFirst<Runs> runs;

std::string inUse(const QString &path) {
  const std::string name = path.toStdString();
  return name + " is in use by another program: close that program and try again (\"fuser -v " + name +
         "\" shows which it is).";
}

std::string removed(const std::string &port) {
  return "the port " + port +
         " was removed while it was being read: check the cable, plug the adapter in again and retry.";
}

TEST(ReportFailures, ASignalEndsTheProgramWithTheLineAsItWas) {
  ScriptedBridge bridge{ScriptedBridge::mute};
  const termios attributes = oddAttributes(bridge.terminal());
  TavrilProgram program(TavrilProgram::reportOf(bridge.path()));
  ASSERT_TRUE(waitFor([&] { return isExclusive(bridge.terminal()); }));
  program.terminate();
  EXPECT_EQ(program.outcome().status, 143);
  EXPECT_EQ(program.outcome().out, "");
  EXPECT_TRUE(sameAttributes(bridge.terminal().attributes(), attributes));
  EXPECT_FALSE(isExclusive(bridge.terminal()));
  EXPECT_TRUE(isUnlocked(bridge.terminal()));
}

TEST(ReportFailures, AMachineWithoutSerialPortsIsToldWhatCanBeDone) {
  // Whatever hangs on this machine, a mocked one without any device has no port.
  Program program(QStringLiteral("umockdev-run"),
                  {QStringLiteral("--"), QStringLiteral(TAVRIL_PROGRAM), QStringLiteral("--report")});
  expectComplaint(program.outcome(),
                  "there is no serial port: plug in the servo's USB adapter, name a terminal with --port "
                  "PATH, or try --demo.");
}

TEST(ReportFailures, APathThatIsNotThereIsNamed) {
  const QTemporaryDir folder;
  const QString path = folder.filePath(QStringLiteral("ttyUSB0"));
  TavrilProgram program(TavrilProgram::reportOf(path));
  expectComplaint(
      program.outcome(),
      path.toStdString() + ": No such file or directory. Name a serial terminal, such as /dev/ttyUSB0.");
}

TEST(ReportFailures, ALinkThatLeadsNowhereIsNamed) {
  const QTemporaryDir folder;
  const QString path = folder.filePath(QStringLiteral("servo"));
  ASSERT_TRUE(QFile::link(folder.filePath(QStringLiteral("gone")), path));
  TavrilProgram program(TavrilProgram::reportOf(path));
  expectComplaint(
      program.outcome(),
      path.toStdString() + ": No such file or directory. Name a serial terminal, such as /dev/ttyUSB0.");
}

TEST(ReportFailures, AFileOrAFolderIsNoTerminal) {
  const QTemporaryDir folder;
  QFile file(folder.filePath(QStringLiteral("notes")));
  ASSERT_TRUE(file.open(QIODevice::WriteOnly));
  for (const QString &path : {file.fileName(), folder.path()}) {
    TavrilProgram program(TavrilProgram::reportOf(path));
    expectComplaint(program.outcome(),
                    path.toStdString() +
                        ": is not a terminal: not a character device. Name a serial terminal, such as "
                        "/dev/ttyUSB0.");
  }
}

TEST(ReportFailures, ACharacterDeviceOfAnotherKindIsNoTerminal) {
  TavrilProgram program(TavrilProgram::reportOf(QStringLiteral("/dev/null")));
  expectComplaint(
      program.outcome(),
      "/dev/null: is not a terminal but a device of kind \"mem\". Name a serial terminal, such as "
      "/dev/ttyUSB0.");
}

TEST(ReportFailures, ADeniedPortTellsTheGroupAndTheCommandThatHelps) {
  const Pty port;
  const std::string path = port.path().toStdString();
  mode_t mode = 0;
  if (::geteuid() == 0) {
    // As the nodes of adapters are.
    const group *const dialout = ::getgrnam("dialout");
    ASSERT_NE(dialout, nullptr);
    ASSERT_EQ(::chown(path.c_str(), 0, dialout->gr_gid), 0);
    mode = 0600;
  }
  ASSERT_EQ(::chmod(path.c_str(), mode), 0);
  const std::string owners = QFileInfo(port.path()).group().toStdString();
  ASSERT_NE(owners, "root");
  const PlainUserProgram program{QStringLiteral(TAVRIL_PROGRAM)};
  expectComplaint(program.run(TavrilProgram::reportOf(port.path())),
                  "permission denied on " + path + ": it belongs to the group \"" + owners +
                      "\". Add yourself to the group with \"sudo usermod -aG " + owners +
                      " $USER\", then log out and in again.");
  EXPECT_FALSE(isExclusive(port));
}

TEST(ReportFailures, APortThatIsLockedIsInUseAndStaysAsItIs) {
  const Pty port;
  const termios before = oddAttributes(port);
  ASSERT_EQ(::flock(port.slave(), LOCK_EX | LOCK_NB), 0);
  TavrilProgram program(TavrilProgram::reportOf(port.path()));
  expectComplaint(program.outcome(), inUse(port.path()));
  EXPECT_FALSE(isExclusive(port));
  EXPECT_TRUE(sameAttributes(port.attributes(), before));
}

TEST(ReportFailures, APortThatIsExclusiveIsInUseAndStaysAsItIs) {
  const Pty port;
  const termios before = oddAttributes(port);
  ASSERT_EQ(::ioctl(port.slave(), TIOCEXCL), 0);
  TavrilProgram program(TavrilProgram::reportOf(port.path()));
  expectComplaint(program.outcome(), inUse(port.path()));
  EXPECT_TRUE(isExclusive(port));
  EXPECT_TRUE(isUnlocked(port));
  EXPECT_TRUE(sameAttributes(port.attributes(), before));
}

TEST(ReportFailures, APortThatIsPulledBeforeTheFirstCommandIsReportedAsRemoved) {
  ASSERT_TRUE(runs->wasOpened);
  expectComplaint(runs->ofPulledEarly.outcome(), removed(portName(runs->pulledEarly.path())));
}

TEST(ReportFailures, APortThatIsPulledWhileItIsReadIsReportedAsRemoved) {
  expectComplaint(runs->unplugged.program.outcome(), removed(runs->unplugged.port()));
}

TEST(ReportFailures, ABridgeWithoutAServoIsReported) {
  expectComplaint(runs->noServo.program.outcome(), "no servo answered behind the bridge on " +
                                                       runs->noServo.port() +
                                                       ": check the servo's cable and power, then retry.");
}

TEST(ReportFailures, SeveralServosAreReported) {
  expectComplaint(runs->twoServos.program.outcome(), "more than one servo answered on " +
                                                         runs->twoServos.port() +
                                                         ": connect just one servo to the bridge and retry.");
}

TEST(ReportFailures, APortThatAnotherTavrilReadsIsInUse) {
  ASSERT_TRUE(waitFor([] { return runs->intruder != nullptr; }, std::chrono::seconds(60)));
  EXPECT_TRUE(runs->wasExclusive);
  EXPECT_FALSE(runs->wasUnlocked);
  expectComplaint(runs->intruder->outcome(), inUse(runs->silent.path()));
}

TEST(ReportFailures, ASilentBridgeIsReportedAndItsLineGivenBack) {
  const std::string advice =
      " within 30 s: check that it is the servo's adapter, that the bridge has power and that its cable is "
      "plugged in.";
  expectComplaint(runs->mute.program.outcome(), "no answer from " + runs->mute.port() + advice);
  expectComplaint(runs->ofSilent.outcome(), "no answer from " + portName(runs->silent.path()) + advice);
  EXPECT_EQ(runs->silent.commands(), (std::vector<int>{0}));
  EXPECT_TRUE(sameAttributes(runs->silent.terminal().attributes(), runs->attributes));
  EXPECT_FALSE(isExclusive(runs->silent.terminal()));
  EXPECT_TRUE(isUnlocked(runs->silent.terminal()));
}

}  // namespace
}  // namespace tavril
