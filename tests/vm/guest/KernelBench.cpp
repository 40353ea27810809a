#include "tests/vm/guest/KernelBench.h"

#include "look/Style.h"
#include "serial/SerialPort.h"
#include "serial/SerialPortManager.h"

#include <QApplication>
#include <QDir>
#include <QTest>

namespace tavril::vm {

HostControl *KernelBench::host = nullptr;

// Written down anew, not taken from the virtual servo.
const std::vector<int> KernelBench::factorySettings{1,   2,  0,    1,  80, 60, 84, 400,
                                                    440, 10, 8000, 12, 20, 30, 0};

const std::vector<const char *> &settingFields() {
  static const std::vector<const char *> fields{
      "sID_value",     "ACK_value",      "AlarmLED_value", "Torque_value",   "MaxTemp_value",
      "MinVolt_value", "MaxVolt_value",  "MaxLoad_value",  "Kp_value",       "Ki_value",
      "Kd_value",      "OverTemp_value", "OverVolt_value", "OverLoad_value", "CalibrationAngle_value"};
  return fields;
}

QStringList usbNodes() {
  return QDir(QStringLiteral("/dev"))
      .entryList({QStringLiteral("ttyUSB*"), QStringLiteral("ttyACM*")}, QDir::System, QDir::Name);
}

KernelBench::KernelBench() {
  for (const int adapter : {0, 1}) {
    host->pullOut(adapter);
    host->renewServo(adapter);
  }
}

void KernelBench::SetUp() {
  ASSERT_TRUE(waitFor([] { return usbNodes().isEmpty(); })) << usbNodes().join(u' ').toStdString();
  // What Qt makes once in a process and keeps (fonts, the style) is there before the counting begins.
  static const bool warm = [this] {
    start();
    QTest::qWait(1000);
    editor.reset();
    return true;
  }();
  ASSERT_TRUE(warm);
  before_ = Residue::now();
}

GuestEditor &KernelBench::start(std::chrono::milliseconds startUpWait) {
  editor = std::make_unique<GuestEditor>(startUpWait);
  return *editor;
}

void KernelBench::finish() {
  editor.reset();
  ASSERT_TRUE(before_);
  Residue after;
  EXPECT_TRUE(waitFor([&] {
    after = Residue::now();
    return after.threads() <= before_->threads() && after.openedSince(*before_).isEmpty();
  })) << "threads: "
      << after.threadNames().toStdString() << "; before: " << before_->threadNames().toStdString()
      << "; descriptors left open: " << after.openedSince(*before_).toStdString();
}

void KernelBench::TearDown() {
  if (editor) {
    expectQuiet();
    for (const int adapter : {0, 1}) host->pullOut(adapter);
    EXPECT_TRUE(listed({}));
    expectQuiet();
  }
  finish();
}

testing::AssertionResult KernelBench::listed(const QStringList &names) {
  QStringList found;
  const bool come = waitFor([&] {
    found = editor->portNames().filter(QStringLiteral("usb"));
    return found == names;
  });
  if (come) return testing::AssertionSuccess();
  return testing::AssertionFailure() << "listed: " << found.join(QStringLiteral(", ")).toStdString()
                                     << "; expected: " << names.join(QStringLiteral(", ")).toStdString()
                                     << "; the kernel has: " << usbNodes().join(u' ').toStdString();
}

void KernelBench::plugInAndRead(int adapter, const QString &name) {
  host->plugIn(adapter);
  ASSERT_TRUE(waitFor([&] { return editor->portNames().contains(name); })) << name.toStdString();
  // The application's own list follows once the user has answered the notice.
  ASSERT_TRUE(waitFor([&] { return !editor->state.allSerialPortsInfo.empty(); }));
  editor->clearScreen();
  editor->connectToServo();
  ASSERT_TRUE(readOut());
}

testing::AssertionResult KernelBench::readOut() {
  if (waitFor([this] { return editor->everythingRead() && editor->find("sID_value")->isEnabled(); })) {
    return testing::AssertionSuccess();
  }
  return testing::AssertionFailure() << "not everything was read; the last frames: "
                                     << editor->textOf("TXcmd").toStdString() << " / "
                                     << editor->textOf("RXcmd").toStdString()
                                     << "; frames at the servo: " << host->framesSeen(0)
                                     << "; the user was told: "
                                     << editor->user.seen.join(QStringLiteral(" / ")).toStdString();
}

int KernelBench::removalsTold() const {
  return static_cast<int>(editor->user.seen.count(QStringLiteral("Serial Port Was Removed From PC.")));
}

void KernelBench::expectQuiet() {
  // Redrawing and what came before may still be going on: it has to end some time.
  double share = 1.0;
  const bool quiet = waitFor(
      [&] {
        const auto used = Residue::processorTime();
        QTest::qWait(500);
        share = static_cast<double>((Residue::processorTime() - used).count()) / 500.0;
        return share < 0.6;
      },
      5s);
  EXPECT_TRUE(quiet) << "the process uses " << share << " of a processor and has nothing to do";
}

void KernelBench::expectRemovalHandled() {
  EXPECT_TRUE(waitFor([this] { return removalsTold() > 0; })) << "the user was not told";
  EXPECT_TRUE(listed({}));
  EXPECT_EQ(removalsTold(), 1);
  EXPECT_EQ(editor->application->serialPort(), nullptr);
  EXPECT_EQ(editor->textOf("ConnectStatus"), editor->strings.text(u"Not_connect"));
  EXPECT_TRUE(editor->state.allSerialPortsInfo.empty());
}

void KernelBench::expectSettings(int adapter, const std::vector<int> &settings) {
  EXPECT_EQ(host->settings(adapter), settings);
}

}  // namespace tavril::vm
