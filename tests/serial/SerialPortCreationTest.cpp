#include "tests/support/ManualBackground.h"
#include "tests/support/SerialBench.h"

#include <gtest/gtest.h>

#include <map>

namespace tavril {
namespace {

const QString usbName = QStringLiteral("usbserial-ttyUSB0");
const QString usbPath = QStringLiteral("/dev/ttyUSB0");

class SerialPortCreation : public testing::Test {
 protected:
  SerialBench<ManualBackground> bench;
};

TEST_F(SerialPortCreation, ADeviceAlreadyRepresentedYieldsTheSamePort) {
  const auto first = bench.port(usbName, usbPath);
  const auto second = bench.port(usbName, usbPath);
  EXPECT_EQ(first, second);
  EXPECT_EQ(bench.allSerialPortsInfo.size(), 1u);
}

TEST_F(SerialPortCreation, ADeviceWhoseNameDoesNotBeginWithUsbYieldsANewPortEachTimeAndIsNeverListed) {
  const auto first = bench.port("ttyS0", "/dev/ttyS0");
  const auto second = bench.port("ttyS0", "/dev/ttyS0");
  EXPECT_NE(first, second);
  EXPECT_TRUE(first->isEqual(second.get()));
  EXPECT_TRUE(bench.allSerialPortsInfo.empty());
  bench.port("us", "/dev/us");
  bench.port("USBserial", "/dev/x");
  EXPECT_TRUE(bench.allSerialPortsInfo.empty());
}

TEST_F(SerialPortCreation, TwoDevicesOfTheSameNameAddOneEntryOnly) {
  const auto first = bench.port(usbName, usbPath);
  const auto second = bench.port(usbName, "/dev/ttyUSB7");
  EXPECT_NE(first, second);
  ASSERT_EQ(bench.allSerialPortsInfo.size(), 1u);
  EXPECT_EQ(bench.allSerialPortsInfo[0], first);
}

TEST_F(SerialPortCreation, RegisteringIsLogged) {
  bench.port(usbName, usbPath);
  EXPECT_EQ(bench.log.lines(), QStringList{"Find Serial port usbserial-ttyUSB0"});
  bench.log.clear();
  bench.port("ttyS0", "/dev/ttyS0");
  EXPECT_EQ(bench.log.lines(), QStringList());
}

TEST_F(SerialPortCreation, InitWithoutAPathAsserts) {
  EXPECT_EQ(SerialPort::init(bench.environment), nullptr);
  EXPECT_EQ(bench.log.warnings(),
            QStringList{"*** Assertion failure: SerialPort must be init'd using -initWithPath:"});
}

TEST_F(SerialPortCreation, DeviceZeroAsserts) {
  EXPECT_EQ(SerialPort::initWithDevice(bench.environment, 0), nullptr);
  EXPECT_EQ(
      bench.log.warnings(),
      QStringList{"*** Assertion failure: -[SerialPort initWithDevice:] requires non-zero device argument."});
}

TEST_F(SerialPortCreation, APathIsFoundByCalloutOrDialinNode) {
  bench.devices.add("usbserial-ttyUSB1", "/dev/ttyUSB1");
  bench.devices.add(usbName, usbPath);
  EXPECT_EQ(SerialPort::serialPortWithPath(bench.environment, usbPath)->name(), usbName);
  EXPECT_EQ(SerialPort::serialPortWithPath(bench.environment, usbPath + ".dialin")->name(), usbName);
  EXPECT_EQ(SerialPort::serialPortWithPath(bench.environment, "/dev/ttyUSB9"), nullptr);
  EXPECT_EQ(SerialPort::serialPortWithPath(bench.environment, QString()), nullptr);
}

TEST_F(SerialPortCreation, TheDevicesPropertiesCanBeRead) {
  const RegistryHandle device = bench.devices.handleOf(usbName, usbPath);
  EXPECT_EQ(SerialPort::bsdCalloutPathFromDevice(bench.environment, device), usbPath);
  EXPECT_EQ(SerialPort::bsdDialinPathFromDevice(bench.environment, device), usbPath + ".dialin");
  EXPECT_EQ(SerialPort::modemNameFromDevice(bench.environment, device), usbName);
  EXPECT_EQ(SerialPort::baseNameFromDevice(bench.environment, device), "usbserial-");
  EXPECT_EQ(SerialPort::suffixFromDevice(bench.environment, device), "ttyUSB0");
  EXPECT_EQ(SerialPort::serviceTypeFromDevice(bench.environment, device), "IOSerialStream");
  for (const auto &[key, value] : std::map<QString, QString>{{"IOCalloutDevice", usbPath},
                                                             {"IOTTYDevice", usbName},
                                                             {"IOTTYBaseName", "usbserial-"},
                                                             {"IOTTYSuffix", "ttyUSB0"},
                                                             {"IOSerialBSDClientType", "IOSerialStream"}}) {
    EXPECT_EQ(SerialPort::stringPropertyOf(bench.environment, device, key), value) << key.toStdString();
  }
  EXPECT_TRUE(SerialPort::stringPropertyOf(bench.environment, device, "no such").isNull());
  bench.devices.release(device);
}

TEST_F(SerialPortCreation, HandlesAreOwnedByThePortAndReleasedWithIt) {
  bench.devices.add(usbName, usbPath);
  {
    auto port = SerialPort::initWithPath(bench.environment, usbPath);
    EXPECT_EQ(bench.devices.table.size(), 1u);
    EXPECT_TRUE(bench.devices.table.contains(port->IOKitDevice()));
    port->setIOKitDevice(port->IOKitDevice());
    EXPECT_TRUE(bench.devices.table.contains(port->IOKitDevice()));
    bench.allSerialPortsInfo.clear();
  }
  EXPECT_EQ(bench.devices.table.size(), 0u);
}

TEST_F(SerialPortCreation, ThePathIsForgottenWhenItsPortIsGone) {
  bench.port(usbName, usbPath);
  EXPECT_NE(bench.ports.existingPortWithPath(usbPath), nullptr);  // the application's list owns it
  bench.allSerialPortsInfo.clear();
  EXPECT_EQ(bench.ports.existingPortWithPath(usbPath), nullptr);
}

TEST_F(SerialPortCreation, ANewPortIsClosedWithTheDefaults) {
  const auto port = bench.port(usbName, usbPath);
  EXPECT_FALSE(port->isOpen());
  EXPECT_EQ(port->path(), usbPath);
  EXPECT_EQ(port->description(), usbName);
  EXPECT_EQ(port->baudRate(), 19200u);
  EXPECT_EQ(port->numberOfStopBits(), 1u);
  EXPECT_EQ(port->parity(), SerialPortParityNone);
  EXPECT_FALSE(port->shouldEchoReceivedData());
  EXPECT_FALSE(port->allowsNonStandardBaudRates());
  EXPECT_FALSE(port->usesRTSCTSFlowControl());
  EXPECT_FALSE(port->usesDTRDSRFlowControl());
  EXPECT_FALSE(port->usesDCDOutputFlowControl());
  EXPECT_FALSE(port->RTS());
  EXPECT_FALSE(port->DTR());
  EXPECT_FALSE(port->CTS());
  EXPECT_FALSE(port->DSR());
  EXPECT_FALSE(port->DCD());
  EXPECT_TRUE(port->queuedRequests().empty());
}

TEST_F(SerialPortCreation, PortsOfTheSamePathAreEqualAndHashAlike) {
  const auto first = bench.port("ttyS0", "/dev/ttyS0");
  const auto second = bench.port("ttyS0", "/dev/ttyS0");
  const auto other = bench.port("ttyS1", "/dev/ttyS1");
  EXPECT_TRUE(first->isEqual(second.get()));
  EXPECT_EQ(first->hash(), second->hash());
  EXPECT_FALSE(first->isEqual(other.get()));
  EXPECT_FALSE(first->isEqual(nullptr));
}

TEST_F(SerialPortCreation, ParityOtherThanTheThreeIsNoneAndStopBitsAreKeptAsGiven) {
  const auto port = bench.port(usbName, usbPath);
  port->setParity(SerialPortParityEven);
  EXPECT_EQ(port->parity(), SerialPortParityEven);
  port->setParity(3);
  EXPECT_EQ(port->parity(), SerialPortParityNone);
  port->setNumberOfStopBits(42);
  EXPECT_EQ(port->numberOfStopBits(), 42u);
  EXPECT_TRUE(bench.terminal.order().empty()) << "a closed port makes no call";
}

TEST_F(SerialPortCreation, IsOpenDependsOnTheDescriptorAndQueuedRequestsOnTheQueue) {
  EXPECT_EQ(SerialPort::keyPathsForValuesAffectingValueForKey("isOpen"), QSet<QString>{"fileDescriptor"});
  EXPECT_EQ(SerialPort::keyPathsForValuesAffectingValueForKey("queuedRequests"),
            QSet<QString>{"requestsQueue"});
  EXPECT_EQ(SerialPort::keyPathsForValuesAffectingValueForKey("name"), QSet<QString>());
}

}  // namespace
}  // namespace tavril
