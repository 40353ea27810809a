#include "cli/Ports.h"
#include "tests/cli/FailureOf.h"
#include "tests/support/FakeDevices.h"

#include <QDir>
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

Failure choosing(const std::vector<PortInfo> &ports, const QString &wanted = {}) {
  return failureOf([&] { choosePort(ports, wanted); });
}

TEST(ChoosingAPort, TakesTheOnlyUsbPort) {
  EXPECT_EQ(choosePort({builtIn, first}, {}), first.path);
}

TEST(ChoosingAPort, ListsThemWhereThereAreSeveral) {
  const Failure failure = choosing({first, second});
  EXPECT_EQ(failure.code, ExitCode::NoPort);
  EXPECT_EQ(failure.text.toStdString(),
            "there are several ports: choose one with --port. There are: usbserial-ttyUSB0 (/dev/ttyUSB0), "
            "usbmodem-ttyACM0 (/dev/ttyACM0).");
}

TEST(ChoosingAPort, SaysWhatToDoWhereThereIsNone) {
  EXPECT_EQ(choosing({}).code, ExitCode::NoPort);
  EXPECT_EQ(choosing({builtIn}).code, ExitCode::NoPort);
}

TEST(ChoosingAPort, GoesByNameOrPath) {
  EXPECT_EQ(choosePort({first, second}, second.name), second.path);
  EXPECT_EQ(choosePort({first, second}, first.path), first.path);
  EXPECT_EQ(choosePort({first}, builtIn.path), builtIn.path);
  EXPECT_EQ(choosePort({first, builtIn}, builtIn.name), builtIn.path);
  EXPECT_EQ(choosing({first}, QStringLiteral("usbserial-ttyUSB7")).text.toStdString(),
            "there is no port \"usbserial-ttyUSB7\". There are: usbserial-ttyUSB0 (/dev/ttyUSB0).");
  EXPECT_EQ(choosing({}, QStringLiteral("nothing")).code, ExitCode::NoPort);
}

struct Machine {
  Machine() {
    for (const char *process : {"12", "345", "self"}) {
      QDir(folder.path()).mkpath(QStringLiteral("proc/%1/fd").arg(QString::fromLatin1(process)));
    }
    write(QStringLiteral("tty"), {});
    write(QStringLiteral("proc/12/comm"), "modem-manager\n");
    write(QStringLiteral("proc/345/comm"), "bash\n");
    write(QStringLiteral("other"), {});
    QFile::link(tty, path(QStringLiteral("proc/12/fd/7")));
    QFile::link(path(QStringLiteral("other")), path(QStringLiteral("proc/345/fd/0")));
    QFile::link(QStringLiteral("socket:[17]"), path(QStringLiteral("proc/345/fd/1")));
  }
  QString path(const QString &name) const { return folder.filePath(name); }
  void write(const QString &name, const QByteArray &content) const {
    QFile file(path(name));
    EXPECT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(content);
  }

  QTemporaryDir folder;
  QString tty = path(QStringLiteral("tty"));
  QString proc = path(QStringLiteral("proc"));
};

TEST(PortUse, NamesWhoHasTheTerminalOpen) {
  const Machine machine;
  EXPECT_EQ(holdersOf(machine.tty, machine.proc), QStringLiteral("modem-manager (12)"));
  EXPECT_EQ(holdersOf(machine.path(QStringLiteral("nothing")), machine.proc), QString());
}

TEST(PortUse, SeesThroughALinkToTheTerminal) {
  const Machine machine;
  const QString link = machine.path(QStringLiteral("by-id"));
  QFile::link(machine.tty, link);
  EXPECT_EQ(holdersOf(link, machine.proc), QStringLiteral("modem-manager (12)"));
}

TEST(Ports, AreListedWithAllThatIsKnown) {
  const Machine machine;
  FakeDevices devices;
  devices.add(QStringLiteral("usbserial-ttyUSB0"), machine.tty);
  DeviceProperties &properties = devices.devices.front();
  properties.insert(QString::fromUtf16(DeviceKey::product), QStringLiteral("Bridge \"2\""));
  properties.insert(QString::fromUtf16(DeviceKey::serialNumber), QStringLiteral("A600"));
  properties.insert(QString::fromUtf16(DeviceKey::vendorId), QStringLiteral("0403"));
  properties.insert(QString::fromUtf16(DeviceKey::productId), QStringLiteral("6001"));
  properties.insert(QString::fromUtf16(DeviceKey::driver), QStringLiteral("ftdi_sio"));
  const std::vector<PortInfo> ports = listPorts(devices, machine.proc);
  const QJsonArray listed = QJsonDocument::fromJson(portsJson(ports).toUtf8()).array();
  EXPECT_EQ(listed,
            (QJsonArray{QJsonObject{{QStringLiteral("name"), QStringLiteral("usbserial-ttyUSB0")},
                                    {QStringLiteral("path"), machine.tty},
                                    {QStringLiteral("product"), QStringLiteral("Bridge \"2\"")},
                                    {QStringLiteral("serial_number"), QStringLiteral("A600")},
                                    {QStringLiteral("vid_pid"), QStringLiteral("0403:6001")},
                                    {QStringLiteral("driver"), QStringLiteral("ftdi_sio")},
                                    {QStringLiteral("access"), QStringLiteral("yes")},
                                    {QStringLiteral("in_use_by"), QStringLiteral("modem-manager (12)")}}}));
  EXPECT_EQ(portsJson({}), QStringLiteral("[]\n"));
  EXPECT_TRUE(portsTable(ports).startsWith(QStringLiteral("NAME ")));
  EXPECT_EQ(portsTable(ports).count(u'\n'), 2);
}

}  // namespace
}  // namespace tavril::cli
