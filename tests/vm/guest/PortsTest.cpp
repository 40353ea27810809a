// Which ports are listed, under which names, and what is told of those that come and go.
#include "serial/SerialPort.h"
#include "serial/SerialPortManager.h"
#include "tests/vm/guest/GadgetServo.h"
#include "tests/vm/guest/KernelBench.h"

#include <QProcess>
#include <QTest>

#include <sys/stat.h>

namespace tavril::vm {
namespace {

class Ports : public KernelBench {};

/// What udev has noted about a device node, by one of its words, such as ":systemd:uaccess:".
QString noted(const QString &node, const QString &word) {
  QProcess udevadm;
  udevadm.start(
      QStringLiteral("/bin/udevadm"),
      {QStringLiteral("info"), QStringLiteral("--query=property"), QStringLiteral("--property=") + word,
       QStringLiteral("--value"), QStringLiteral("--name=") + node});
  EXPECT_TRUE(udevadm.waitForFinished());
  EXPECT_EQ(udevadm.exitCode(), 0);
  return QString::fromUtf8(udevadm.readAllStandardOutput()).trimmed();
}

TEST_F(Ports, ListsTheBuiltInPortAndNoPhantoms) {
  EXPECT_EQ(start().portNames(), QStringList{QStringLiteral("ttyS0")});
}

TEST_F(Ports, NamesAnAdapterThatWasThereBefore) {
  host->plugIn(0);
  ASSERT_TRUE(waitFor([] { return usbNodes() == QStringList{QStringLiteral("ttyUSB0")}; }));
  start();
  ASSERT_TRUE(listed({QString::fromUtf16(first)}));
  const auto port = editor->state.allSerialPortsInfo.at(0);
  EXPECT_EQ(port->path(), QStringLiteral("/dev/ttyUSB0"));
  const auto property = [&](const char16_t *key) {
    return editor->devices.stringProperty(port->IOKitDevice(), QString::fromUtf16(key));
  };
  EXPECT_EQ(property(DeviceKey::driver), QStringLiteral("ftdi_sio"));
  EXPECT_EQ(property(DeviceKey::vendorId), QStringLiteral("0403"));
  EXPECT_EQ(property(DeviceKey::productId), QStringLiteral("6001"));
  EXPECT_EQ(property(DeviceKey::product), QStringLiteral("QEMU_USB_SERIAL"));
  EXPECT_FALSE(property(DeviceKey::serialNumber).isEmpty());
}

TEST_F(Ports, TellsTheUserOfAnAdapterThatComesAndGoes) {
  start();
  host->plugIn(0);
  ASSERT_TRUE(listed({QString::fromUtf16(first)}));
  ASSERT_TRUE(waitFor([this] { return editor->userNotifications.delivered.size() == 1; }));
  EXPECT_EQ(editor->userNotifications.delivered[0].informativeText,
            editor->strings.text(u"Serial Port %@ was connected to your Mac.")
                .replace(QStringLiteral("%@"), QString::fromUtf16(first)));
  ASSERT_TRUE(waitFor([this] { return editor->state.allSerialPortsInfo.size() == 1; }));
  EXPECT_EQ(editor->user.seen, QStringList{QStringLiteral("Serial Port Was Connected From PC.")});

  host->pullOut(0);
  ASSERT_TRUE(listed({}));
  ASSERT_TRUE(waitFor([this] { return editor->userNotifications.delivered.size() == 2; }));
  EXPECT_EQ(editor->userNotifications.delivered[1].informativeText,
            editor->strings.text(u"Serial Port %@ was disconnected from your Mac.")
                .replace(QStringLiteral("%@"), QString::fromUtf16(first)));
  EXPECT_TRUE(editor->state.allSerialPortsInfo.empty());
  EXPECT_EQ(removalsTold(), 0) << "a port that was not in use is no loss";
}

TEST_F(Ports, KeepsTwoAdaptersApart) {
  start();
  host->plugIn(0);
  ASSERT_TRUE(listed({QString::fromUtf16(first)}));
  host->plugIn(1);
  ASSERT_TRUE(listed({QString::fromUtf16(first), QString::fromUtf16(second)}));
  ASSERT_TRUE(waitFor([this] { return editor->state.allSerialPortsInfo.size() == 2; }));
  editor->connectToServo();
  ASSERT_TRUE(readOut());
  EXPECT_GT(host->framesSeen(0), 20);
  EXPECT_EQ(host->framesSeen(1), 0);

  host->pullOut(1);
  ASSERT_TRUE(listed({QString::fromUtf16(first)}));
  EXPECT_EQ(removalsTold(), 0) << "the port in use is still there";
  editor->clearScreen();
  editor->window->controller().FunctionCMD()->ReadMotorParameter(1);
  EXPECT_TRUE(readOut());

  host->plugIn(1);
  ASSERT_TRUE(listed({QString::fromUtf16(first), QString::fromUtf16(second)}));
  host->pullOut(0);
  ASSERT_TRUE(listed({QString::fromUtf16(second)}));
  ASSERT_TRUE(waitFor([this] { return removalsTold() == 1; }));
}

TEST_F(Ports, GivesTheNodeToItsGroupBeforeThePortIsTold) {
  start();
  struct stat status {};
  bool looked = false;
  const auto watch = editor->application->serialPortManager()->observe(
      QStringLiteral("availablePorts"), [&](const auto &) { looked = ::stat("/dev/ttyUSB0", &status) == 0; });
  host->plugIn(0);
  ASSERT_TRUE(listed({QString::fromUtf16(first)}));
  EXPECT_TRUE(looked);
  EXPECT_EQ(status.st_mode & 0777u, 0660u);
  EXPECT_EQ(status.st_gid, 20u) << "the group dialout";
}

TEST_F(Ports, NamesAndUsesAnAdapterOfTheModemClass) {
  start();
  GadgetServo gadget;
  ASSERT_TRUE(gadget.plugIn());
  const QString name = QStringLiteral("usbmodem-ttyACM0");
  ASSERT_TRUE(listed({name}));
  ASSERT_TRUE(waitFor([this] { return editor->state.allSerialPortsInfo.size() == 1; }));
  const auto port = editor->state.allSerialPortsInfo.at(0);
  EXPECT_EQ(port->path(), QStringLiteral("/dev/ttyACM0"));
  EXPECT_EQ(editor->devices.stringProperty(port->IOKitDevice(), QString::fromUtf16(DeviceKey::driver)),
            QStringLiteral("cdc_acm"));
  editor->connectToServo();
  ASSERT_TRUE(readOut());
  ASSERT_TRUE(gadget.pullOut());
  expectRemovalHandled();
}

/// udev may tell of a device again: "change", or "add" when somebody triggers it.
TEST_F(Ports, AreListedOnceHoweverOftenUdevTellsOfThem) {
  start();
  host->plugIn(0);
  ASSERT_TRUE(listed({QString::fromUtf16(first)}));
  ASSERT_TRUE(waitFor([this] { return editor->state.allSerialPortsInfo.size() == 1; }));
  editor->user.seen.clear();
  for (const char *action : {"change", "add"}) {
    ASSERT_EQ(QProcess::execute(QStringLiteral("/bin/udevadm"),
                                {QStringLiteral("trigger"), QStringLiteral("--settle"),
                                 QStringLiteral("--subsystem-match=tty"),
                                 QStringLiteral("--action=") + QString::fromLatin1(action)}),
              0);
    QTest::qWait(200);
  }
  EXPECT_TRUE(listed({QString::fromUtf16(first)}));
  EXPECT_EQ(editor->user.seen, QStringList());
  EXPECT_EQ(editor->userNotifications.delivered.size(), 1u);
}

TEST_F(Ports, OnTheUsbAreForTheUserAtTheMachineByTheRuleOfThePackage) {
  host->plugIn(0);
  ASSERT_TRUE(waitFor([] { return usbNodes() == QStringList{QStringLiteral("ttyUSB0")}; }));
  start();
  ASSERT_TRUE(listed({QString::fromUtf16(first)}));
  EXPECT_TRUE(noted(QStringLiteral("/dev/ttyUSB0"), QStringLiteral("TAGS")).contains(u":uaccess:"));
  EXPECT_FALSE(noted(QStringLiteral("/dev/ttyS0"), QStringLiteral("TAGS")).contains(u":uaccess:"));
}

}  // namespace
}  // namespace tavril::vm
