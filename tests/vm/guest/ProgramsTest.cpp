// The programs as users start them, with a user's rights.
#include "serial/SerialPort.h"
#include "serial/SerialPortManager.h"
#include "tests/support/SyslogSocket.h"
#include "tests/vm/guest/KernelBench.h"

#include <QFile>
#include <QImage>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTest>

#include <grp.h>
#include <sys/types.h>
#include <unistd.h>

namespace tavril::vm {
namespace {

constexpr auto tavril = u"/tavril/bin/tavril";
constexpr auto tavrilctl = u"/tavril/bin/tavrilctl";

/// A user of the machine.
struct User {
  uid_t id;
  bool mayUsePorts;
};
constexpr User builder{1000, true};
constexpr User guest{1001, false};
constexpr gid_t dialout = 20;

class Programs : public KernelBench {
 protected:
  /// Plugs in and waits until udev is through with the adapter.
  void plugIn() {
    GuestEditor &watching = start();
    host->plugIn(0);
    ASSERT_TRUE(listed({QString::fromUtf16(first)}));
    ASSERT_TRUE(waitFor([&] { return watching.state.allSerialPortsInfo.size() == 1; }));
    editor.reset();
  }

  void run(const QStringList &arguments, const User &user = builder, const char16_t *program = tavril) {
    process.setChildProcessModifier([user] {
      const gid_t group = user.id;
      if (::setgroups(user.mayUsePorts ? 1 : 0, &dialout) != 0 || ::setgid(group) != 0 ||
          ::setuid(user.id) != 0) {
        ::_exit(127);
      }
    });
    process.start(QString::fromUtf16(program), arguments);
    ASSERT_TRUE(process.waitForStarted());
  }

  /// The status it ended with; -1 when it crashed or did not end.
  int status() {
    if (!waitFor([this] { return process.state() == QProcess::NotRunning; }, 60s)) return -1;
    out = process.readAllStandardOutput();
    err = process.readAllStandardError();
    return process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
  }

  void runTavrilctl(const QStringList &arguments) { run(arguments, builder, tavrilctl); }

  static QStringList report() { return {QStringLiteral("--report"), QStringLiteral("--json")}; }

  QProcess process;
  QByteArray out;
  QByteArray err;
};

TEST_F(Programs, PrintTheRegistersForAUserOfTheGroup) {
  plugIn();
  run(report());
  ASSERT_EQ(status(), 0) << err.toStdString();
  const QJsonObject read = QJsonDocument::fromJson(out).object();
  EXPECT_EQ(read.value(QStringLiteral("port")).toString(), QString::fromUtf16(first));
  const QJsonObject registers = read.value(QStringLiteral("registers")).toObject();
  EXPECT_EQ(registers.size(), 20);
  EXPECT_EQ(registers.value(QStringLiteral("max_load")).toInt(), 400);
  expectSettings(0, factorySettings);
}

TEST_F(Programs, CallAPortThatTheUserNamesByItsPath) {
  plugIn();
  run(report() + QStringList{QStringLiteral("--port"), QStringLiteral("/dev/ttyUSB0")});
  ASSERT_EQ(status(), 0) << err.toStdString();
  EXPECT_EQ(QJsonDocument::fromJson(out).object().value(QStringLiteral("port")).toString(),
            QStringLiteral("usbport-ttyUSB0"));
}

TEST_F(Programs, TellAUserWhoMayNotOpenThePortWhatToDo) {
  plugIn();
  run(report(), guest);
  EXPECT_EQ(status(), 1);
  EXPECT_EQ(
      err.toStdString(),
      "tavril: permission denied on /dev/ttyUSB0: it belongs to the group \"dialout\". Add yourself to the "
      "group with \"sudo usermod -aG dialout $USER\", then log out and in again.\n");
  EXPECT_EQ(out, "");
}

TEST_F(Programs, TellThatThePortIsInUse) {
  start();
  plugInAndRead(0, QString::fromUtf16(first));
  run(report());
  EXPECT_EQ(status(), 1);
  EXPECT_TRUE(err.startsWith("tavril: /dev/ttyUSB0 is in use by another program")) << err.toStdString();
  editor->clearScreen();
  editor->window->controller().FunctionCMD()->ReadMotorParameter(1);
  EXPECT_TRUE(readOut()) << "the program that has it is not disturbed";
}

TEST_F(Programs, TellThatNoPortIsThere) {
  run(report());
  EXPECT_EQ(status(), 1);
  EXPECT_TRUE(err.startsWith("tavril: there is no serial port")) << err.toStdString();
}

TEST_F(Programs, WriteToTheLogOfTheMachineUnderTheirNames) {
  // So many messages wait for us to read them.
  QFile queue(QStringLiteral("/proc/sys/net/unix/max_dgram_qlen"));
  ASSERT_TRUE(queue.open(QIODevice::WriteOnly) && queue.write("512") == 3 && queue.flush());
  const SyslogSocket log("/dev/log");
  plugIn();
  const QByteArray error =
      ": Serial port usbserial-ttyUSB0 encountered an error: Permission denied (13): /dev/ttyUSB0";
  run(report(), guest);
  EXPECT_EQ(status(), 1);
  const QByteArrayList ofTavril = log.pendingTexts();
  EXPECT_TRUE(ofTavril.contains("<15>tavril: Key count=15")) << ofTavril.join('\n').toStdString();
  EXPECT_TRUE(ofTavril.contains("<12>tavril" + error)) << ofTavril.join('\n').toStdString();
  run({QStringLiteral("read")}, guest, tavrilctl);
  EXPECT_EQ(status(), 3);
  const QByteArrayList ofTavrilctl = log.pendingTexts();
  EXPECT_TRUE(ofTavrilctl.contains("<12>tavrilctl" + error)) << ofTavrilctl.join('\n').toStdString();
}

TEST_F(Programs, TellThatThePlugWasPulledDuringTheStartUpWait) {
  plugIn();
  run(report());
  ASSERT_TRUE(
      waitFor([this] { return Residue::now(process.processId()).holds(QStringLiteral("/dev/ttyUSB0")); }));
  host->pullOutIn(0, 1s);
  EXPECT_EQ(status(), 1);
  EXPECT_TRUE(err.startsWith("tavril: the port usbserial-ttyUSB0 was removed while it was being read"))
      << err.toStdString();
  EXPECT_EQ(out, "");
}

TEST_F(Programs, TellThatThePlugWasPulledDuringTheReadOut) {
  plugIn();
  host->pullOutAfter(0, 8);
  run(report());
  EXPECT_EQ(status(), 1);
  EXPECT_TRUE(err.startsWith("tavril: the port usbserial-ttyUSB0 was removed while it was being read"))
      << err.toStdString();
  EXPECT_EQ(host->framesSeen(0), 8);
}

TEST_F(Programs, TakeAPictureOfTheEditorOnAServo) {
  plugIn();
  const QString file = QStringLiteral("/tmp/editor.png");
  run({QStringLiteral("--snapshot"), file});
  ASSERT_EQ(status(), 0) << err.toStdString();
  EXPECT_GE(QImage(file).width(), 1024);
  QFile::remove(file);
}

TEST_F(Programs, ListAndReadAndWriteFromTheCommandLine) {
  plugIn();
  runTavrilctl({QStringLiteral("ports"), QStringLiteral("--json")});
  ASSERT_EQ(status(), 0) << err.toStdString();
  EXPECT_TRUE(out.contains(QString::fromUtf16(first).toUtf8())) << out.toStdString();
  EXPECT_TRUE(out.contains("ftdi_sio")) << out.toStdString();
  runTavrilctl({QStringLiteral("read"), QStringLiteral("--json")});
  ASSERT_EQ(status(), 0) << err.toStdString();
  const QJsonObject registers =
      QJsonDocument::fromJson(out).object().value(QStringLiteral("registers")).toObject();
  EXPECT_EQ(registers.size(), 20);
  EXPECT_EQ(registers.value(QStringLiteral("kp")).toObject().value(QStringLiteral("value")).toInt(), 440);
  expectSettings(0, factorySettings);
  runTavrilctl({QStringLiteral("write"), QStringLiteral("kp=500")});
  ASSERT_EQ(status(), 0) << err.toStdString();
  std::vector<int> changed = factorySettings;
  changed[8] = 500;
  expectSettings(0, changed);
}

TEST_F(Programs, TellOnTheCommandLineThatThePlugWasPulled) {
  plugIn();
  host->pullOutAfter(0, 8);
  // The kernel takes its time to find that a plug was pulled, and without an answer the program would give
  // up.
  runTavrilctl({QStringLiteral("read"), QStringLiteral("--json"), QStringLiteral("--timeout"),
                QStringLiteral("5000")});
  EXPECT_EQ(status(), 3);
  EXPECT_TRUE(err.contains("the port usbserial-ttyUSB0 was removed while it was in use"))
      << err.toStdString();
  EXPECT_EQ(out, "");
}

/// The editor itself, with nobody who answers its notices: they stay up while the adapter comes and goes.
TEST_F(Programs, KeepTheEditorCalmWhileAdaptersComeAndGoBehindItsNotices) {
  run({});
  const auto settled = [this] { return Residue::now(process.processId()); };
  // Its start is over once it lies still.
  ASSERT_TRUE(waitFor([this] {
    const auto used = Residue::processorTime(process.processId());
    QTest::qWait(500);
    return used > 100ms && Residue::processorTime(process.processId()) - used < 200ms;
  }));
  Residue before;
  for (int round = 0; round < 4; ++round) {
    host->plugIn(0);
    ASSERT_TRUE(waitFor([] { return usbNodes().size() == 1; }));
    QTest::qWait(300);
    host->pullOut(0);
    ASSERT_TRUE(waitFor([] { return usbNodes().isEmpty(); }));
    QTest::qWait(300);
    if (round == 0) before = settled();
  }
  const Residue after = settled();
  EXPECT_EQ(after.openedSince(before).toStdString(), "");
  EXPECT_EQ(after.threadNames().toStdString(), before.threadNames().toStdString());
  const auto used = Residue::processorTime(process.processId());
  QTest::qWait(1000);
  EXPECT_LT(Residue::processorTime(process.processId()) - used, 500ms);
  ASSERT_EQ(process.state(), QProcess::Running) << "it has crashed";
  process.kill();
  EXPECT_TRUE(process.waitForFinished());
}

}  // namespace
}  // namespace tavril::vm
