// The link to the servo, and the plug pulled at every moment that matters.
#include "serial/SerialPort.h"
#include "serial/SerialPortManager.h"
#include "tests/vm/guest/KernelBench.h"

#include <QFile>
#include <QTest>

#include <cerrno>

#include <fcntl.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

namespace tavril::vm {
namespace {

class Link : public KernelBench {
 protected:
  /// Puts the adapter back and reads all registers again: whatever happened before has broken nothing.
  void expectToWorkAgain() {
    editor->user.seen.clear();
    plugInAndRead(0, QString::fromUtf16(first));
    EXPECT_EQ(editor->portNames().filter(QStringLiteral("usb")), QStringList{QString::fromUtf16(first)})
        << "the number is free again";
  }

  /// The settings after a sweep that was cut off: each as it was or as it was to be, and the new ones first.
  void expectCleanCut(const std::vector<int> &wanted) {
    const std::vector<int> found = host->settings(0);
    ASSERT_EQ(found.size(), wanted.size());
    std::size_t written = 0;
    while (written < wanted.size() && found[written] == wanted[written]) ++written;
    for (std::size_t i = written; i < wanted.size(); ++i) {
      EXPECT_EQ(found[i], factorySettings[i]) << "register " << i + 1 << " after the cut";
    }
  }
};

TEST_F(Link, ReadsAllRegistersThroughTheRealDriver) {
  start();
  plugInAndRead(0, QString::fromUtf16(first));
  EXPECT_EQ(editor->textOf("sID_value"), QStringLiteral("1"));
  EXPECT_EQ(editor->textOf("MaxLoad_value"), QStringLiteral("400"));
  EXPECT_EQ(editor->textOf("Kd_value"), QStringLiteral("8000"));
  EXPECT_EQ(editor->textOf("ConnectStatus"),
            editor->strings.text(u"COM_Connect_P1") + QString::fromUtf16(first));
  // The adapter shows these pins as set; a pseudo-terminal has none.
  const auto port = editor->application->serialPort();
  EXPECT_TRUE(waitFor([&] { return port->CTS() && port->DSR() && port->DCD(); }));
  expectSettings(0, factorySettings);
}

TEST_F(Link, RunsTheLineAtTheSpeedThatTheServoWants) {
  start();
  plugInAndRead(0, QString::fromUtf16(first));
  // A second descriptor of the same terminal, by the superuser's right to pass its claim.
  const int terminal = ::open("/dev/ttyUSB0", O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
  ASSERT_GE(terminal, 0) << errno;
  termios line{};
  EXPECT_EQ(::tcgetattr(terminal, &line), 0);
  EXPECT_EQ(::cfgetospeed(&line), static_cast<speed_t>(B115200));
  EXPECT_EQ(line.c_cflag & static_cast<tcflag_t>(CSIZE | CSTOPB | PARENB), static_cast<tcflag_t>(CS8));
  ::close(terminal);
}

TEST_F(Link, ShortensTheAdaptersTimerWhileThePortIsOpen) {
  const QString path = QStringLiteral("/sys/bus/usb-serial/devices/ttyUSB0/latency_timer");
  const auto timer = [&] {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll().trimmed() : QByteArray();
  };
  start();
  host->plugIn(0);
  ASSERT_TRUE(waitFor([&] { return !editor->state.allSerialPortsInfo.empty(); }));
  // A real adapter begins with that; the emulated one remembers what it had when its plug was pulled.
  QFile file(path);
  ASSERT_TRUE(file.open(QIODevice::WriteOnly) && file.write("16") == 2);
  file.close();
  ASSERT_EQ(timer(), "16");
  editor->clearScreen();
  editor->connectToServo();
  ASSERT_TRUE(readOut());
  EXPECT_EQ(timer(), "1");
  editor->application->serialPort()->close();
  EXPECT_EQ(timer(), "16");
  expectSettings(0, factorySettings);
}

TEST_F(Link, WritesAllSettings) {
  start();
  plugInAndRead(0, QString::fromUtf16(first));
  editor->enter("sID_value", "42");
  editor->enter("MaxLoad_value", "300");
  editor->enter("CalibrationAngle_value", "-10");
  editor->user.seen.clear();
  editor->window->controller().LabelTouchEvent(QStringLiteral("detailset"));
  EXPECT_TRUE(waitFor([this] { return !editor->user.seen.isEmpty(); }));
  EXPECT_EQ(editor->user.seen, QStringList{editor->strings.text(u"SetOK")});
  std::vector<int> written = factorySettings;
  written[0] = 42;
  written[7] = 300;
  written[14] = 0x10000 - 10;
  expectSettings(0, written);
}

TEST_F(Link, SurvivesAPlugPulledWhileIdle) {
  start();
  plugInAndRead(0, QString::fromUtf16(first));
  host->pullOut(0);
  expectRemovalHandled();
  expectQuiet();
  expectToWorkAgain();
  expectSettings(0, factorySettings);
}

TEST_F(Link, SurvivesAPlugPulledWhileOpening) {
  start();
  for (const auto delay : {0ms, 1ms, 2ms, 4ms, 8ms, 12ms, 16ms, 24ms, 32ms, 48ms, 64ms, 96ms}) {
    SCOPED_TRACE(delay.count());
    host->plugIn(0);
    ASSERT_TRUE(listed({QString::fromUtf16(first)}));
    ASSERT_TRUE(waitFor([this] { return editor->state.allSerialPortsInfo.size() == 1; }));
    host->pullOutIn(0, delay);
    editor->application->serialFormat();
    ASSERT_TRUE(listed({}));
    ASSERT_TRUE(waitFor([this] { return editor->state.allSerialPortsInfo.empty(); }));
    ASSERT_TRUE(waitFor([this] {
      return !editor->application->serialPort() || !editor->application->serialPort()->isOpen();
    }));
  }
  expectToWorkAgain();
  expectSettings(0, factorySettings);
}

TEST_F(Link, SurvivesAPlugPulledWhileTheBridgeStartsUp) {
  start(AppDelegate::bridgeStartUp);
  host->plugIn(0);
  ASSERT_TRUE(waitFor([this] { return editor->state.allSerialPortsInfo.size() == 1; }));
  editor->connectToServo();
  host->pullOutIn(0, 500ms);
  expectRemovalHandled();
  EXPECT_FALSE(editor->everythingRead());
  EXPECT_EQ(host->framesSeen(0), 0);
  expectSettings(0, factorySettings);
}

TEST_F(Link, SurvivesAPlugPulledAtAnyPlaceOfTheReadingSequence) {
  start();
  // The detection, the first register, one in the middle, the last.
  for (const int frames : {1, 2, 9, 21}) {
    SCOPED_TRACE(frames);
    host->renewServo(0);
    host->plugIn(0);
    ASSERT_TRUE(waitFor([this] { return editor->state.allSerialPortsInfo.size() == 1; }));
    editor->user.seen.clear();
    editor->clearScreen();
    host->pullOutAfter(0, frames);
    editor->connectToServo();
    expectRemovalHandled();
    EXPECT_FALSE(editor->everythingRead());
    EXPECT_EQ(host->framesSeen(0), frames);
  }
  expectToWorkAgain();
  expectSettings(0, factorySettings);
}

TEST_F(Link, SurvivesAPlugPulledDuringTheSweep) {
  start();
  std::vector<int> wanted = factorySettings;
  for (std::size_t i = 0; i < wanted.size(); ++i) wanted[i] = i < 14 ? wanted[i] == 0 ? 1 : wanted[i] - 1 : 5;
  for (const int frames : {1, 8, 15}) {
    SCOPED_TRACE(frames);
    host->renewServo(0);
    plugInAndRead(0, QString::fromUtf16(first));
    const auto &fields = settingFields();
    for (std::size_t i = 0; i < wanted.size(); ++i) {
      editor->enter(fields[i], QByteArray::number(wanted[i]).constData());
    }
    editor->user.seen.clear();
    host->pullOutAfter(0, frames);
    editor->window->controller().LabelTouchEvent(QStringLiteral("detailset"));
    expectRemovalHandled();
    expectCleanCut(wanted);
  }
  expectToWorkAgain();
}

TEST_F(Link, SurvivesAPlugPulledWhileAnAlertIsUp) {
  start();
  plugInAndRead(0, QString::fromUtf16(first));
  editor->user.seen.clear();
  editor->user.leaveUp = true;
  // The alert runs in a nested loop of its own: the plug is pulled, and the alert answered, from within.
  QTimer pulling;
  pulling.setSingleShot(true);
  bool toldMeanwhile = true;
  QObject::connect(&pulling, &QTimer::timeout, &pulling, [&] {
    ASSERT_TRUE(editor->user.alertIsUp());
    host->pullOut(0);
    EXPECT_TRUE(waitFor([] { return usbNodes().isEmpty(); }));
    QTest::qWait(300);
    toldMeanwhile = removalsTold() > 0;
    editor->user.leaveUp = false;
  });
  pulling.start(300);
  editor->enter("Kp_value", "40000");
  EXPECT_FALSE(toldMeanwhile) << "an alert stops the world";
  expectRemovalHandled();
  expectToWorkAgain();
  expectSettings(0, factorySettings);
}

TEST_F(Link, SurvivesAPlugPulledWhileTheDialIsDragged) {
  start();
  plugInAndRead(0, QString::fromUtf16(first));
  editor->user.seen.clear();
  QWidget *dial = editor->find("imageView");
  const QPoint centre = dial->rect().center();
  QTest::mousePress(dial, Qt::LeftButton, {}, centre + QPoint(0, -60));
  editor->state.TextMouseFlag = QStringLiteral("MouseDown");
  for (int step = 0; step < 40; ++step) {
    if (step == 20) host->pullOut(0);
    QTest::mouseMove(dial, centre + QPoint(step, -60));
    editor->window->controller().FunctionCMD()->SetServoPosition(500 + step);
    QTest::qWait(10);
  }
  QTest::mouseRelease(dial, Qt::LeftButton, {}, centre + QPoint(40, -60));
  editor->state.TextMouseFlag.clear();
  expectRemovalHandled();
  EXPECT_GT(host->framesSeen(0), 21);
  expectToWorkAgain();
  expectSettings(0, factorySettings);
}

TEST_F(Link, ComesBackEveryTimeItIsPluggedInAgain) {
  start();
  for (int round = 0; round < 5; ++round) {
    SCOPED_TRACE(round);
    expectToWorkAgain();
    host->pullOut(0);
    expectRemovalHandled();
  }
  expectSettings(0, factorySettings);
}

TEST_F(Link, IsRefusedToASecondOpener) {
  start();
  plugInAndRead(0, QString::fromUtf16(first));
  // Another program with the same manners, and as the superuser, who passes TIOCEXCL.
  const CallResult opened = editor->terminal.open("/dev/ttyUSB0");
  ASSERT_FALSE(opened.failed());
  const CallResult locked = editor->terminal.lock(static_cast<int>(opened.value));
  EXPECT_TRUE(locked.failed());
  EXPECT_TRUE(locked.error == EWOULDBLOCK || locked.error == EBUSY) << locked.error;
  editor->terminal.close(static_cast<int>(opened.value));
  editor->clearScreen();
  editor->window->controller().FunctionCMD()->ReadMotorParameter(1);
  EXPECT_TRUE(readOut()) << "the first opener has not been disturbed";
}

TEST_F(Link, ToldByAnotherProgramThatItIsInUse) {
  start();
  host->plugIn(0);
  ASSERT_TRUE(waitFor([this] { return editor->state.allSerialPortsInfo.size() == 1; }));
  const CallResult opened = editor->terminal.open("/dev/ttyUSB0");
  ASSERT_FALSE(opened.failed());
  ASSERT_FALSE(editor->terminal.lock(static_cast<int>(opened.value)).failed());
  editor->application->serialFormat();
  EXPECT_FALSE(editor->application->serialPort()->isOpen());
  ASSERT_TRUE(editor->application->lastSerialError());
  EXPECT_EQ(editor->application->lastSerialError()->code, EWOULDBLOCK);
  editor->terminal.unlock(static_cast<int>(opened.value));
  editor->terminal.close(static_cast<int>(opened.value));
  editor->clearScreen();
  editor->connectToServo();
  EXPECT_TRUE(readOut());
}

/// What the kernel itself says of a line that is gone, on which the translation of errors rests.
TEST_F(Link, ShowsAPulledPlugAsTheTableInTheDocumentsSays) {
  start();
  host->plugIn(0);
  ASSERT_TRUE(listed({QString::fromUtf16(first)}));
  const int terminal = ::open("/dev/ttyUSB0", O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
  ASSERT_GE(terminal, 0);
  int pins = 0;
  EXPECT_EQ(::ioctl(terminal, TIOCMGET, &pins), 0);
  EXPECT_EQ(pins & (TIOCM_CTS | TIOCM_DSR | TIOCM_CD), TIOCM_CTS | TIOCM_DSR | TIOCM_CD);
  host->pullOut(0);
  ASSERT_TRUE(listed({}));

  pollfd watched{terminal, POLLIN, 0};
  EXPECT_EQ(::poll(&watched, 1, 0), 1);
  EXPECT_EQ(watched.revents, POLLIN | POLLERR | POLLHUP);
  char byte = 0;
  EXPECT_EQ(::read(terminal, &byte, 1), 0);
  const auto fails = [](int result) { return result < 0 ? errno : 0; };
  termios line{};
  EXPECT_EQ(fails(static_cast<int>(::write(terminal, &byte, 1))), EIO);
  EXPECT_EQ(fails(::ioctl(terminal, TIOCMGET, &pins)), EIO);
  EXPECT_EQ(fails(::ioctl(terminal, TIOCMSET, &pins)), EIO);
  EXPECT_EQ(fails(::tcgetattr(terminal, &line)), EIO);
  EXPECT_EQ(fails(::tcsetattr(terminal, TCSANOW, &line)), EIO);

  // Held open, the number stays taken.
  host->plugIn(0);
  EXPECT_TRUE(listed({QString::fromUtf16(second)}));
  EXPECT_EQ(::close(terminal), 0);
}

}  // namespace
}  // namespace tavril::vm
