#include "tests/serial/ManagerBench.h"

namespace tavril {
namespace {

TEST_F(SerialPortManagerOnBench, AskingTwiceOrAllocatingOneYieldsTheSameObject) {
  start();
  EXPECT_EQ(SerialPortManager::sharedSerialPortManager(bench.environment), manager);
  EXPECT_EQ(SerialPortManager::alloc(bench.environment), manager);
  EXPECT_EQ(manager->copy(), manager);
}

TEST_F(SerialPortManagerOnBench, ListsEveryDeviceAtItsCreation) {
  bench.devices.add("usbserial-ttyUSB0", "/dev/ttyUSB0");
  bench.devices.add("ttyS0", "/dev/ttyS0");
  start();
  EXPECT_EQ(available(), (QStringList{"usbserial-ttyUSB0", "ttyS0"}));
  EXPECT_EQ(manager->countOfAvailablePorts(), 2u);
  EXPECT_EQ(manager->objectInAvailablePortsAtIndex(1)->name(), "ttyS0");
  EXPECT_EQ(manager->objectInAvailablePortsAtIndex(2), nullptr);
  ASSERT_EQ(bench.allSerialPortsInfo.size(), 1u);
  EXPECT_EQ(bench.allSerialPortsInfo[0]->name(), "usbserial-ttyUSB0");
}

TEST_F(SerialPortManagerOnBench, TheNotificationsHaveTheirOddNames) {
  EXPECT_EQ(QString::fromUtf16(SerialPortsWereConnectedNotification), "SerialPortWasConnectedNotification");
  EXPECT_EQ(QString::fromUtf16(SerialPortsWereDisconnectedNotification),
            "SerialPortWasDisconnectedNotification");
  EXPECT_EQ(QString::fromUtf16(ConnectedSerialPortsKey), "ConnectedSerialPortsKey");
  EXPECT_EQ(QString::fromUtf16(DisconnectedSerialPortsKey), "DisconnectedSerialPortsKey");
}

TEST_F(SerialPortManagerOnBench, ADeviceThatIsPluggedInIsListedAndAnnounced) {
  bench.devices.add("usbserial-ttyUSB0", "/dev/ttyUSB0");
  start();
  bench.devices.plugIn("usbserial-ttyUSB1", "/dev/ttyUSB1");
  EXPECT_TRUE(posted.isEmpty()) << "an alert could be up: word of devices waits in the main queue";
  bench.mainQueue.runAll();
  EXPECT_EQ(posted, QStringList{"SerialPortWasConnectedNotification"});
  EXPECT_EQ(lastPosted.sender, manager.get());
  ASSERT_EQ(postedPorts("ConnectedSerialPortsKey").size(), 1u);
  EXPECT_EQ(postedPorts("ConnectedSerialPortsKey")[0]->name(), "usbserial-ttyUSB1");
  EXPECT_EQ(available(), (QStringList{"usbserial-ttyUSB0", "usbserial-ttyUSB1"}));
  ASSERT_EQ(changes.size(), 1u);
  EXPECT_EQ(changes[0].kind, Change::Kind::Insertion);
  EXPECT_EQ(changes[0].indexes, std::vector<std::size_t>{1});
}

TEST_F(SerialPortManagerOnBench, ADeviceAlreadyListedIsAnnouncedWithAnEmptyListAndChangesNothing) {
  bench.devices.add("usbserial-ttyUSB0", "/dev/ttyUSB0");
  start();
  bench.devices.plugIn("usbserial-ttyUSB0", "/dev/ttyUSB0");
  bench.mainQueue.runAll();
  EXPECT_EQ(posted, QStringList{"SerialPortWasConnectedNotification"});
  EXPECT_TRUE(postedPorts("ConnectedSerialPortsKey").empty());
  EXPECT_EQ(available(), QStringList{"usbserial-ttyUSB0"});
  EXPECT_TRUE(changes.empty());
}

TEST_F(SerialPortManagerOnBench, SeveralDevicesThatCameMeanwhileAreAnnouncedTogether) {
  start();
  bench.devices.plugIn("usbserial-ttyUSB0", "/dev/ttyUSB0");
  bench.devices.plugIn("usbserial-ttyUSB1", "/dev/ttyUSB1");
  bench.mainQueue.runAll();
  EXPECT_EQ(available(), (QStringList{"usbserial-ttyUSB0", "usbserial-ttyUSB1"}));
  EXPECT_EQ(changes[0].indexes, (std::vector<std::size_t>{0, 1}));
  bench.devices.plugIn("usbserial-ttyUSB2", "/dev/ttyUSB2");
  bench.mainQueue.runAll();
  EXPECT_EQ(available().size(), 3);
}

TEST_F(SerialPortManagerOnBench, PullingOutAnOpenDeviceTellsItsDelegateBeforeTheNotification) {
  Pty pty;
  bench.devices.add("usbserial-ttyUSB0", pty.path());
  start();
  const auto port = manager->availablePorts()[0];
  port->setDelegate(delegate);
  ASSERT_TRUE(port->open());
  bench.mainQueue.runAll();
  delegate->events.clear();
  bench.devices.pullOut(pty.path());
  bench.mainQueue.runAll();
  EXPECT_EQ(delegateEventsAtPost, (QStringList{"removed", "closed"}));
  EXPECT_EQ(posted, QStringList{"SerialPortWasDisconnectedNotification"});
  EXPECT_EQ(postedPorts("DisconnectedSerialPortsKey"), SerialPortList{port});
  EXPECT_TRUE(manager->availablePorts().empty());
  ASSERT_EQ(changes.size(), 1u);
  EXPECT_EQ(changes[0].kind, Change::Kind::Removal);
  EXPECT_EQ(changes[0].indexes, std::vector<std::size_t>{0});
}

TEST_F(SerialPortManagerOnBench, APortRemovedByTheTerminatedHandlerStaysInAllSerialPortsInfo) {
  bench.devices.add("usbserial-ttyUSB0", "/dev/ttyUSB0");
  start();
  bench.devices.pullOut("/dev/ttyUSB0");
  bench.mainQueue.runAll();
  EXPECT_TRUE(manager->availablePorts().empty());
  ASSERT_EQ(bench.allSerialPortsInfo.size(), 1u);
  EXPECT_EQ(bench.allSerialPortsInfo[0]->path(), "/dev/ttyUSB0");
}

TEST_F(SerialPortManagerOnBench, ADeviceThatComesBackIsTheSamePort) {
  bench.devices.add("usbserial-ttyUSB0", "/dev/ttyUSB0");
  start();
  const auto port = manager->availablePorts()[0];
  bench.devices.pullOut("/dev/ttyUSB0");
  bench.devices.plugIn("usbserial-ttyUSB0", "/dev/ttyUSB0");
  bench.mainQueue.runAll();
  EXPECT_EQ(posted,
            (QStringList{"SerialPortWasDisconnectedNotification", "SerialPortWasConnectedNotification"}));
  EXPECT_EQ(manager->availablePorts(), SerialPortList{port});
}

TEST_F(SerialPortManagerOnBench, ANonUsbDeviceThatGoesLeavesTheListByItsPath) {
  bench.devices.add("ttyS4", "/dev/ttyS4");
  start();
  bench.devices.pullOut("/dev/ttyS4");
  bench.mainQueue.runAll();
  EXPECT_TRUE(manager->availablePorts().empty());
  EXPECT_EQ(postedPorts("DisconnectedSerialPortsKey").size(), 1u);
}

TEST_F(SerialPortManagerOnBench, TheExitHandlerClosesEveryPortAndEmptiesTheList) {
  Pty pty;
  bench.devices.add("usbserial-ttyUSB0", pty.path());
  start();
  const auto port = manager->availablePorts()[0];
  port->setDelegate(delegate);
  ASSERT_TRUE(port->open());
  bench.mainQueue.runAll();
  delegate->events.clear();
  ASSERT_EQ(bench.processExit.handlers.size(), 1u);
  bench.processExit.runAll();
  EXPECT_FALSE(port->isOpen());
  EXPECT_EQ(delegate->events, (QStringList{"removed", "closed"}));
  EXPECT_TRUE(manager->availablePorts().empty());
}

TEST_F(SerialPortManagerOnBench, AnExitHandlerThatCannotBeRegisteredIsLogged) {
  bench.processExit.error = 12;
  start();
  EXPECT_EQ(
      bench.log.warnings(),
      QStringList{"SerialPort was unable to register its termination handler for serial port cleanup: 12"});
}

TEST_F(SerialPortManagerOnBench, WithoutAWatchForNewDevicesTheListStaysEmpty) {
  bench.devices.canWatchPublished = false;
  bench.devices.add("usbserial-ttyUSB0", "/dev/ttyUSB0");
  start();
  EXPECT_TRUE(manager->availablePorts().empty());
  EXPECT_EQ(bench.devices.table.size(), 0u) << "a handle of the failed watch was kept";
}

TEST_F(SerialPortManagerOnBench, WithoutAWatchForGoneDevicesTheListIsThereButDoesNotShrink) {
  bench.devices.canWatchTerminated = false;
  bench.devices.add("usbserial-ttyUSB0", "/dev/ttyUSB0");
  start();
  bench.devices.pullOut("/dev/ttyUSB0");
  bench.mainQueue.runAll();
  EXPECT_EQ(manager->availablePorts().size(), 1u);
  EXPECT_TRUE(posted.isEmpty());
}

TEST_F(SerialPortManagerOnBench, ACallbackForSomebodyElseIsLoggedAndIgnored) {
  class Stranger final : public DeviceRegistry::Context {
   public:
    QString description() const override { return QStringLiteral("<Stranger>"); }
  } stranger;
  start();
  bench.log.clear();
  SerialPortManagerPortsPublishedNotificationCallback(bench.environment, &stranger, 0);
  SerialPortManagerPortsTerminatedNotificationCallback(bench.environment, &stranger, 0);
  EXPECT_EQ(bench.log.warnings(),
            (QStringList{
                "Unexpected context object <Stranger> in void "
                "SerialPortManagerPortsPublishedNotificationCallback(void *, io_iterator_t). Context object "
                "should be an instance of SerialPortManager",
                "Unexpected context object <Stranger> in void "
                "SerialPortManagerPortsTerminatedNotificationCallback(void *, io_iterator_t). Context "
                "object should be an instance of SerialPortManager"}));
  EXPECT_TRUE(posted.isEmpty());
}

TEST_F(SerialPortManagerOnBench, SleepClosesOpenPortsAndWakeOpensThoseAgain) {
  Pty pty;
  bench.devices.add("usbserial-ttyUSB0", pty.path());
  bench.devices.add("usbserial-ttyUSB1", "/dev/none");
  start();
  const auto port = manager->availablePorts()[0];
  ASSERT_TRUE(port->open());
  manager->systemWillSleep({});
  EXPECT_FALSE(port->isOpen());
  manager->systemDidWake({});
  EXPECT_TRUE(port->isOpen());
  port->close();
  manager->systemDidWake({});
  EXPECT_FALSE(port->isOpen()) << "a port is opened once for each sleep";
  EXPECT_FALSE(manager->availablePorts()[1]->isOpen());
}

TEST_F(SerialPortManagerOnBench, TheListMayChangeInACallbackWhileSleepClosesThePorts) {
  Pty pty;
  Pty other;
  bench.devices.add("usbserial-ttyUSB0", pty.path());
  bench.devices.add("usbserial-ttyUSB1", other.path());
  start();
  const SerialPortList ports = manager->availablePorts();
  delegate->atEvent = [&](const QString &event, const SerialPortDelegate::Port &) {
    if (event == u"closed") manager->removeObjectFromAvailablePortsAtIndex(0);
  };
  for (const auto &port : ports) {
    port->setDelegate(delegate);
    ASSERT_TRUE(port->open());
  }
  manager->systemWillSleep({});
  delegate->atEvent = nullptr;
  for (const auto &port : ports) EXPECT_FALSE(port->isOpen());
  manager->systemDidWake({});
  for (const auto &port : ports) EXPECT_TRUE(port->isOpen());
}

TEST_F(SerialPortManagerOnBench, TheListCanBeChangedThroughItsAccessors) {
  bench.devices.add("usbserial-ttyUSB0", "/dev/ttyUSB0");
  start();
  const auto first = manager->availablePorts()[0];
  const auto extra = bench.port("usbserial-ttyUSB9", "/dev/ttyUSB9");
  manager->insertObjectInAvailablePortsAtIndex(extra, 0);
  EXPECT_EQ(manager->availablePorts(), (SerialPortList{extra, first}));
  manager->removeObjectFromAvailablePortsAtIndex(1);
  EXPECT_EQ(manager->availablePorts(), SerialPortList{extra});
  manager->setAvailablePorts({first});
  EXPECT_EQ(manager->availablePorts(), SerialPortList{first});
  const std::size_t told = changes.size();
  EXPECT_EQ(told, 3u);
  manager->setAvailablePorts({first});
  EXPECT_EQ(changes.size(), told) << "an equal list is no change";
}

TEST_F(SerialPortManagerOnBench, NoHandleIsLeftWhenTheManagerAndItsPortsAreGone) {
  bench.devices.add("usbserial-ttyUSB0", "/dev/ttyUSB0");
  bench.devices.add("ttyS0", "/dev/ttyS0");
  start();
  bench.devices.plugIn("usbserial-ttyUSB1", "/dev/ttyUSB1");
  bench.devices.pullOut("/dev/ttyS0");
  bench.mainQueue.runAll();
  lastPosted = {};
  manager.reset();
  bench.allSerialPortsInfo.clear();
  EXPECT_EQ(bench.devices.table.size(), 0u);
}

TEST_F(SerialPortManagerOnBench, APortHasThePropertiesOfTheAdapterThatCameLast) {
  start();
  const auto productOf = [&](const SerialPort &port) {
    return SerialPort::stringPropertyOf(bench.environment, port.IOKitDevice(),
                                        QString::fromUtf16(DeviceKey::product));
  };
  bench.devices.plugIn("usbserial-ttyUSB0", "/dev/ttyUSB0", "First Adapter");
  bench.mainQueue.runAll();
  const auto port = bench.allSerialPortsInfo.at(0);
  EXPECT_EQ(productOf(*port), "First Adapter");
  bench.devices.pullOut("/dev/ttyUSB0");
  bench.mainQueue.runAll();
  EXPECT_EQ(productOf(*port), "First Adapter") << "a port that is gone is still what it was";
  bench.devices.plugIn("usbserial-ttyUSB0", "/dev/ttyUSB0", "Second Adapter");
  bench.mainQueue.runAll();
  EXPECT_EQ(bench.allSerialPortsInfo, PortRegistry::PortList{port});
  EXPECT_EQ(productOf(*port), "Second Adapter");
}

}  // namespace
}  // namespace tavril
