#include "cli/Ports.h"
#include "platform/Processes.h"
#include "tests/cli/FailureOf.h"
#include "tests/support/FakeDevices.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace tavril::cli {
namespace {

PortInfo port(const char *name, const char *path) {
  PortInfo info;
  info.name = QString::fromLatin1(name);
  info.path = QString::fromLatin1(path);
  return info;
}

const PortInfo first = port("usbserial-ttyUSB0", "/dev/ttyUSB0");
const PortInfo second = port("usbmodem-ttyACM0", "/dev/ttyACM0");
const PortInfo builtIn = port("ttyS0", "/dev/ttyS0");

bool nowhere(const QString &) {
  return false;
}

Failure choosing(const std::vector<PortInfo> &ports, const QString &wanted = {}) {
  return failureOf([&] { choosePort(ports, wanted, nowhere); });
}

TEST(ChoosingAPort, TakesTheOnlyUsbPort) {
  EXPECT_EQ(choosePort({builtIn, first}, {}, nowhere), first.path);
}

TEST(ChoosingAPort, ListsThemWhereThereAreSeveral) {
  const Failure failure = choosing({first, second});
  EXPECT_EQ(failure.code, ExitCode::NoPort);
  EXPECT_EQ(
      failure.text.toStdString(),
      "there are several ports. Choose one with --port. The ports are: usbserial-ttyUSB0 (/dev/ttyUSB0), "
      "usbmodem-ttyACM0 (/dev/ttyACM0).");
}

TEST(ChoosingAPort, SaysWhatToDoWhereThereIsNone) {
  EXPECT_EQ(choosing({}).code, ExitCode::NoPort);
  EXPECT_EQ(choosing({builtIn}).code, ExitCode::NoPort);
}

TEST(ChoosingAPort, TakesTheNamesOfNodesAndOfLinksById) {
  EXPECT_EQ(choosePort({first, second}, QStringLiteral("ttyACM0"), nowhere), second.path);
  const auto byId = [](const QString &path) { return path == u"/dev/serial/by-id/usb-FTDI_A600-if00-port0"; };
  EXPECT_EQ(choosePort({}, QStringLiteral("usb-FTDI_A600-if00-port0"), byId),
            QStringLiteral("/dev/serial/by-id/usb-FTDI_A600-if00-port0"));
}

TEST(ChoosingAPort, TakesTheNameThatIsPrintedForATerminalNamedByTheUser) {
  const auto isPts = [](const QString &path) { return path == u"/dev/pts/5"; };
  EXPECT_EQ(choosePort({}, QStringLiteral("usbport-pts-5"), isPts), QStringLiteral("/dev/pts/5"));
  const auto isTty = [](const QString &path) { return path == u"/dev/my-tty"; };
  EXPECT_EQ(choosePort({}, QStringLiteral("usbport-my-tty"), isTty), QStringLiteral("/dev/my-tty"));
}

TEST(ChoosingAPort, GoesByNameOrPath) {
  EXPECT_EQ(choosePort({first, second}, second.name, nowhere), second.path);
  EXPECT_EQ(choosePort({first, second}, first.path, nowhere), first.path);
  EXPECT_EQ(choosePort({first}, builtIn.path, nowhere), builtIn.path);
  EXPECT_EQ(choosePort({first, builtIn}, builtIn.name, nowhere), builtIn.path);
  EXPECT_EQ(choosing({first}, QStringLiteral("usbserial-ttyUSB7")).text.toStdString(),
            "there is no port \"usbserial-ttyUSB7\". The ports are: usbserial-ttyUSB0 (/dev/ttyUSB0).");
  EXPECT_EQ(choosing({}, QStringLiteral("nothing")).code, ExitCode::NoPort);
}

struct Holders final : Processes {
  std::vector<RunningProcess> holding(const QString &path) const override {
    if (path != tty) return {};
    return {{12, QStringLiteral("modem-manager")}, {345, QStringLiteral("minicom")}};
  }
  std::vector<RunningProcess> named(const QStringList &) const override { return {}; }
  bool seesAll() const override { return true; }
  int own() const override { return 1; }

  QTemporaryDir folder;
  QString tty = folder.filePath(QStringLiteral("tty"));
};

TEST(Ports, AreListedWithAllThatIsKnown) {
  const Holders processes;
  QFile node(processes.tty);
  ASSERT_TRUE(node.open(QIODevice::WriteOnly));
  FakeDevices devices;
  devices.add(QStringLiteral("usbserial-ttyUSB0"), processes.tty);
  DeviceProperties &properties = devices.devices.front();
  properties.insert(QString::fromUtf16(DeviceKey::product), QStringLiteral("Bridge \"2\""));
  properties.insert(QString::fromUtf16(DeviceKey::serialNumber), QStringLiteral("A600"));
  properties.insert(QString::fromUtf16(DeviceKey::vendorId), QStringLiteral("0403"));
  properties.insert(QString::fromUtf16(DeviceKey::productId), QStringLiteral("6001"));
  properties.insert(QString::fromUtf16(DeviceKey::driver), QStringLiteral("ftdi_sio"));
  const std::vector<PortInfo> ports = listPorts(devices, processes);
  const QJsonArray listed = QJsonDocument::fromJson(portsJson(ports).toUtf8()).array();
  EXPECT_EQ(listed, (QJsonArray{QJsonObject{{QStringLiteral("name"), QStringLiteral("usbserial-ttyUSB0")},
                                            {QStringLiteral("path"), processes.tty},
                                            {QStringLiteral("product"), QStringLiteral("Bridge \"2\"")},
                                            {QStringLiteral("serial_number"), QStringLiteral("A600")},
                                            {QStringLiteral("vid_pid"), QStringLiteral("0403:6001")},
                                            {QStringLiteral("driver"), QStringLiteral("ftdi_sio")},
                                            {QStringLiteral("access"), QStringLiteral("yes")},
                                            {QStringLiteral("in_use_by"),
                                             QStringLiteral("modem-manager (12), minicom (345)")}}}));
  EXPECT_EQ(portsJson({}), QStringLiteral("[]\n"));
  EXPECT_TRUE(portsTable(ports).startsWith(QStringLiteral("NAME ")));
  EXPECT_EQ(portsTable(ports).count(u'\n'), 2);
}

}  // namespace
}  // namespace tavril::cli
