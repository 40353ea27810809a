#include "platform/linux/UdevUsbBus.h"
#include "tests/platform/linux/MockMachine.h"

#include <gtest/gtest.h>

namespace tavril {
namespace {

class UdevUsbBusTest : public testing::Test {
 protected:
  UsbAdapter only() const {
    const auto adapters = UdevUsbBus().serialAdapters();
    EXPECT_EQ(adapters.size(), 1U);
    return adapters.empty() ? UsbAdapter() : adapters.front();
  }
  MockMachine machine_;
};

TEST_F(UdevUsbBusTest, TellsAllOfAnAdapterWithItsTerminal) {
  machine_.plugFtdi(QStringLiteral("ttyUSB3"));
  const UsbAdapter adapter = only();
  EXPECT_EQ(adapter.product, QStringLiteral("FT232R_USB_UART"));
  EXPECT_EQ(adapter.serialNumber, QStringLiteral("A50285BI"));
  EXPECT_EQ(adapter.driver, QStringLiteral("ftdi_sio"));
  EXPECT_EQ(adapter.node, QStringLiteral("/dev/ttyUSB3"));
  EXPECT_EQ(adapter.lastingName, QStringLiteral("/dev/serial/by-id/usb-FTDI_ttyUSB3"));
  EXPECT_EQ(adapter.label(), QStringLiteral("FT232R_USB_UART (0403:6001)"));
}

TEST_F(UdevUsbBusTest, KnowsAnAdapterThatNoDriverHasTakenByItsMaker) {
  machine_.plugWithoutPort(QStringLiteral("1-2"), QStringLiteral("1a86"), QString());
  const UsbAdapter adapter = only();
  EXPECT_EQ(adapter.label(), QStringLiteral("USB Serial (1a86:7523)"));
  EXPECT_EQ(adapter.driver, QString());
  EXPECT_EQ(adapter.usualDriver, QStringLiteral("ch341"));
  EXPECT_EQ(adapter.node, QString());
}

TEST_F(UdevUsbBusTest, KnowsAnAdapterByItsInterfaceWhoeverMadeIt) {
  machine_.plugWithoutPort(QStringLiteral("1-2"), QStringLiteral("abcd"), QString(), QStringLiteral("02"));
  EXPECT_EQ(only().usualDriver, QStringLiteral("cdc_acm"));
}

TEST_F(UdevUsbBusTest, SeesThatAProgramHasTakenAnAdapter) {
  machine_.plugWithoutPort(QStringLiteral("1-2"), QStringLiteral("10c4"), QStringLiteral("usbfs"));
  EXPECT_EQ(only().driver, QStringLiteral("usbfs"));
}

TEST_F(UdevUsbBusTest, DoesNotLetADevicesNameSteerTheTerminal) {
  machine_.plugWithoutPort(QStringLiteral("1-2"), QStringLiteral("1a86"), QString(), QStringLiteral("ff"),
                           QStringLiteral("\x1b]0;x"));
  EXPECT_EQ(only().product, QStringLiteral("?]0;x"));
}

TEST_F(UdevUsbBusTest, LeavesOutWhatIsNoSerialAdapter) {
  machine_.plugWithoutPort(QStringLiteral("1-2"), QStringLiteral("abcd"), QString());
  machine_.addBuiltIn(QStringLiteral("ttyS0"));
  EXPECT_TRUE(UdevUsbBus().serialAdapters().empty());
}

}  // namespace
}  // namespace tavril
