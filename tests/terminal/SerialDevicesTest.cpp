#include "terminal/SerialDevices.h"
#include "tests/platform/linux/MockMachine.h"
#include "tests/support/Pty.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

namespace tavril {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

std::vector<std::string> names(const SerialDevices &devices) {
  std::vector<std::string> names;
  for (const SerialDevice &device : devices.list()) names.push_back(device.name());
  return names;
}

TEST(SerialDevices, TellWhatIsKnownOfAnAdapter) {
  MockMachine machine;
  machine.plugFtdi(QStringLiteral("ttyUSB0"));
  const auto devices = SerialDevices().list();
  ASSERT_EQ(devices.size(), 1u);
  EXPECT_EQ(devices[0].node, "/dev/ttyUSB0");
  EXPECT_EQ(devices[0].name(), "usbserial-ttyUSB0");
  EXPECT_EQ(devices[0].vendorId, "0403");
  EXPECT_EQ(devices[0].productId, "6001");
  EXPECT_EQ(devices[0].serialNumber, "A50285BI");
  EXPECT_EQ(devices[0].driver, "ftdi_sio");
  EXPECT_EQ(devices[0].product, "FT232R_USB_UART");
}

TEST(SerialDevices, AreThoseWithHardwareAndNoOthers) {
  MockMachine machine;
  machine.addVirtual(QStringLiteral("tty1"));
  machine.addLegacy(QStringLiteral("ttyS1"), 0);
  machine.addBuiltIn(QStringLiteral("ttyS0"));
  machine.plugAcm(QStringLiteral("ttyACM0"), QStringLiteral("1-2"));
  machine.plugFtdi(QStringLiteral("ttyUSB0"));
  EXPECT_THAT(names(SerialDevices()),
              testing::UnorderedElementsAre("usbserial-ttyUSB0", "usbmodem-ttyACM0", "ttyS0"));
}

TEST(SerialDevices, ThatTheUserNamedComeFirstEvenIfUdevDoesNotKnowThem) {
  MockMachine machine;
  machine.plugFtdi(QStringLiteral("ttyUSB0"));
  SerialDevices devices;
  const Pty pty;
  const std::string node = pty.path().toStdString();
  EXPECT_EQ(devices.addTerminal(node), std::nullopt);
  EXPECT_EQ(devices.addTerminal(node), std::nullopt);
  EXPECT_THAT(names(devices), ElementsAre("usbport-pts-" + node.substr(9), "usbserial-ttyUSB0"));
}

TEST(SerialDevices, NothingThatIsNoTerminalCanBeNamed) {
  MockMachine machine;
  SerialDevices devices;
  EXPECT_EQ(devices.addTerminal("/no/such"), "/no/such: No such file or directory");
  EXPECT_EQ(devices.addTerminal("/"), "/: is not a terminal: not a character device");
  EXPECT_THAT(devices.list(), IsEmpty());
}

TEST(SerialDevices, OneWhoseRulesHaveNotRunYetIsNotListed) {
  MockMachine machine;
  machine.plugFtdi(QStringLiteral("ttyUSB0"), QStringLiteral("1-1"), false);
  EXPECT_THAT(SerialDevices().list(), IsEmpty());
}

TEST(SerialDevices, AMachineWithoutAnyHasNone) {
  MockMachine machine;
  EXPECT_THAT(SerialDevices().list(), IsEmpty());
}

}  // namespace
}  // namespace tavril
