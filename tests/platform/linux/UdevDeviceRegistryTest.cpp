#include "platform/linux/UdevDeviceRegistry.h"
#include "tests/platform/linux/MockMachine.h"
#include "tests/platform/linux/UdevFaults.h"
#include "tests/support/WaitFor.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <cstdlib>

#include <fcntl.h>
#include <unistd.h>

namespace tavril {
namespace {

using namespace Qt::StringLiterals;

using Names = QStringList;

/// A real pseudo-terminal; its node goes when it is closed.
class Pty {
 public:
  Pty() : master_(posix_openpt(O_RDWR | O_NOCTTY)) {
    EXPECT_GE(master_, 0);
    EXPECT_EQ(grantpt(master_), 0);
    EXPECT_EQ(unlockpt(master_), 0);
    node_ = QFile::decodeName(ptsname(master_));
  }
  ~Pty() { close(); }
  Pty(const Pty &) = delete;
  Pty &operator=(const Pty &) = delete;

  void close() {
    if (master_ >= 0) ::close(master_);
    master_ = -1;
  }
  QString node() const { return node_; }
  /// The name that the registry gives it.
  QString name() const { return QStringLiteral("usbport-pts-") + node_.section(u'/', -1); }

 private:
  int master_;
  QString node_;
};

class UdevDeviceRegistryTest : public testing::Test {
 protected:
  ~UdevDeviceRegistryTest() override { udevFaults() = {}; }

  static QString read(const UdevDeviceRegistry &registry, RegistryHandle device, const char16_t *key) {
    return registry.stringProperty(device, QString::fromUtf16(key));
  }

  static Names walkToEnd(UdevDeviceRegistry &registry, RegistryHandle walk) {
    Names names;
    while (const RegistryHandle device = registry.next(walk)) {
      names += read(registry, device, DeviceKey::ttyDevice);
      registry.release(device);
    }
    return names;
  }

  static Names listed(UdevDeviceRegistry &registry, const DeviceMatch &match = {}) {
    const RegistryHandle walk = registry.matchingServices(match);
    const Names names = walkToEnd(registry, walk);
    registry.release(walk);
    return names;
  }

  /// The only device, owned by the caller.
  static RegistryHandle onlyDevice(UdevDeviceRegistry &registry) {
    const RegistryHandle walk = registry.matchingServices({});
    const RegistryHandle device = registry.next(walk);
    EXPECT_NE(device, 0U);
    EXPECT_EQ(registry.next(walk), 0U);
    registry.release(walk);
    return device;
  }

  MockMachine machine_;
};

/// Notes what comes and goes, in order: "+name" and "-name".
class Watcher : public DeviceRegistry::Context {
 public:
  enum class Waits { ForAll, ForDevicesToGo };

  explicit Watcher(UdevDeviceRegistry &registry, Waits waits = Waits::ForAll) : registry_(registry) {
    if (waits == Waits::ForAll) watch(DeviceEvent::Published, published_);
    seen_.clear();
    watch(DeviceEvent::Terminated, terminated_);
  }
  ~Watcher() override {
    registry_.release(published_);
    registry_.release(terminated_);
  }

  QString description() const override { return QStringLiteral("watcher"); }
  const Names &seen() const { return seen_; }
  bool sees(const Names &expected) {
    const bool asExpected = waitFor([&] { return seen_.size() >= expected.size(); }) && seen_ == expected;
    if (!asExpected) ADD_FAILURE() << "saw " << seen_.join(u' ').toStdString();
    seen_.clear();
    return asExpected;
  }

 private:
  void watch(DeviceEvent event, RegistryHandle &walk) {
    const QChar sign = event == DeviceEvent::Published ? u'+' : u'-';
    const auto note = [this, sign](DeviceRegistry::Context *context, RegistryHandle iterator) {
      EXPECT_EQ(context, this);
      while (const RegistryHandle device = registry_.next(iterator)) {
        seen_ += sign + registry_.stringProperty(device, QString::fromUtf16(DeviceKey::ttyDevice));
        registry_.release(device);
      }
    };
    ASSERT_TRUE(registry_.addMatchingNotification(event, {}, note, this, walk));
    note(this, walk);
  }

  UdevDeviceRegistry &registry_;
  RegistryHandle published_ = 0;
  RegistryHandle terminated_ = 0;
  Names seen_;
};

const QString socketA = QStringLiteral("1-1");
const QString socketB = QStringLiteral("1-2");

TEST_F(UdevDeviceRegistryTest, AnFtdiAdapterIsAUsbSerialDeviceWithAllItsProperties) {
  machine_.plugFtdi(u"ttyUSB0"_s);
  UdevDeviceRegistry registry;
  const RegistryHandle device = onlyDevice(registry);
  EXPECT_EQ(read(registry, device, DeviceKey::ttyDevice), u"usbserial-ttyUSB0");
  EXPECT_EQ(read(registry, device, DeviceKey::ttyBaseName), u"usbserial-");
  EXPECT_EQ(read(registry, device, DeviceKey::ttySuffix), u"ttyUSB0");
  EXPECT_EQ(read(registry, device, DeviceKey::calloutDevice), u"/dev/ttyUSB0");
  EXPECT_EQ(read(registry, device, DeviceKey::dialinDevice), u"/dev/ttyUSB0");
  EXPECT_EQ(read(registry, device, DeviceKey::clientType), u"IOSerialStream");
  EXPECT_EQ(read(registry, device, DeviceKey::product), u"FT232R_USB_UART");
  EXPECT_EQ(read(registry, device, DeviceKey::serialNumber), u"A50285BI");
  EXPECT_EQ(read(registry, device, DeviceKey::vendorId), u"0403");
  EXPECT_EQ(read(registry, device, DeviceKey::productId), u"6001");
  EXPECT_EQ(read(registry, device, DeviceKey::driver), u"ftdi_sio");
  EXPECT_TRUE(registry.stringProperty(device, u"unheard of"_s).isNull());
}

TEST_F(UdevDeviceRegistryTest, ACdcAcmAdapterIsAUsbModem) {
  machine_.plugAcm(u"ttyACM0"_s, socketA);
  UdevDeviceRegistry registry;
  const RegistryHandle device = onlyDevice(registry);
  EXPECT_EQ(read(registry, device, DeviceKey::ttyDevice), u"usbmodem-ttyACM0");
  EXPECT_EQ(read(registry, device, DeviceKey::ttyBaseName), u"usbmodem-");
  EXPECT_EQ(read(registry, device, DeviceKey::ttySuffix), u"ttyACM0");
  EXPECT_EQ(read(registry, device, DeviceKey::driver), u"cdc_acm");
  EXPECT_EQ(read(registry, device, DeviceKey::product), u"Linux-USB Serial Gadget");
  EXPECT_TRUE(read(registry, device, DeviceKey::serialNumber).isNull());
}

TEST_F(UdevDeviceRegistryTest, ABuiltInPortKeepsItsKernelName) {
  machine_.addBuiltIn(u"ttyS0"_s);
  UdevDeviceRegistry registry;
  const RegistryHandle device = onlyDevice(registry);
  EXPECT_EQ(read(registry, device, DeviceKey::ttyDevice), u"ttyS0");
  EXPECT_EQ(read(registry, device, DeviceKey::ttyBaseName), u"ttyS");
  EXPECT_EQ(read(registry, device, DeviceKey::ttySuffix), u"0");
  EXPECT_EQ(read(registry, device, DeviceKey::calloutDevice), u"/dev/ttyS0");
  EXPECT_EQ(read(registry, device, DeviceKey::driver), u"serial");
  EXPECT_TRUE(read(registry, device, DeviceKey::vendorId).isNull());
}

TEST_F(UdevDeviceRegistryTest, TheDriverOfABuiltInPortIsThatOfItsHardware) {
  machine_.addBuiltInBelowSerialCore(u"ttyS0"_s);
  UdevDeviceRegistry registry;
  EXPECT_EQ(read(registry, onlyDevice(registry), DeviceKey::driver), u"serial");
}

TEST_F(UdevDeviceRegistryTest, APortWithoutHardwareBehindItIsNotListed) {
  machine_.addLegacy(u"ttyS1"_s, 0);
  machine_.addLegacy(u"ttyS2"_s, 4);
  UdevDeviceRegistry registry;
  EXPECT_EQ(listed(registry), Names({u"ttyS2"_s}));
}

TEST_F(UdevDeviceRegistryTest, PseudoTerminalsAndConsolesAreNotListed) {
  for (const QString &name : {u"tty1"_s, u"console"_s, u"ptyp0"_s, u"ttyp0"_s}) machine_.addVirtual(name);
  machine_.plugFtdi(u"ttyUSB0"_s);
  const Pty pty;
  UdevDeviceRegistry registry;
  EXPECT_EQ(listed(registry), Names({u"usbserial-ttyUSB0"_s}));
}

TEST_F(UdevDeviceRegistryTest, ATerminalBelowADeviceIsListedAlsoWhenThatIsAVirtualOne) {
  machine_.addBelowVirtual(u"rfcomm0"_s);
  UdevDeviceRegistry registry;
  EXPECT_EQ(listed(registry), Names({u"rfcomm0"_s}));
}

TEST_F(UdevDeviceRegistryTest, LooksAtNoConsoleAndAtEachAdapterOnceWhenAWatchBegins) {
  for (int number = 0; number < 64; ++number) machine_.addVirtual(QStringLiteral("tty%1").arg(number));
  machine_.plugFtdi(u"ttyUSB0"_s);
  machine_.plugFtdi(u"ttyUSB1"_s, socketB);
  udevFaults().devicesLookedAt = 0;  // building the machine looks at them as well
  UdevDeviceRegistry registry;
  const Watcher watcher(registry);
  EXPECT_EQ(udevFaults().devicesLookedAt, 2);
}

TEST_F(UdevDeviceRegistryTest, ATerminalInSoftwareOnlyIsKnownWhenTheUserHasNamedIt) {
  machine_.addVirtual(u"ttyGS0"_s);
  machine_.addVirtual(u"ttyGS1"_s);
  UdevDeviceRegistry registry;
  EXPECT_EQ(listed(registry), Names());
  EXPECT_EQ(registry.addTerminal(u"/dev/ttyGS1"_s), std::nullopt);
  EXPECT_EQ(listed(registry), Names({u"usbport-ttyGS1"_s}));
  Watcher watcher(registry);
  machine_.removeVirtual(u"ttyGS1"_s);
  EXPECT_TRUE(watcher.sees({u"-usbport-ttyGS1"_s}));
}

TEST_F(UdevDeviceRegistryTest, WhoOnlyWaitsForDevicesToGoIsToldOfThoseThatWereThere) {
  machine_.plugFtdi(u"ttyUSB0"_s);
  UdevDeviceRegistry registry;
  EXPECT_EQ(listed(registry), Names({u"usbserial-ttyUSB0"_s}));
  Watcher watcher(registry, Watcher::Waits::ForDevicesToGo);
  machine_.unplug(u"ttyUSB0"_s, socketA);
  EXPECT_TRUE(watcher.sees({u"-usbserial-ttyUSB0"_s}));
}

TEST_F(UdevDeviceRegistryTest, ATerminalThatIsNamedBetweenTwoWatchesIsToldWhenItGoes) {
  machine_.addVirtual(u"ttyGS0"_s);
  UdevDeviceRegistry registry;
  const Watcher first(registry);
  EXPECT_EQ(registry.addTerminal(u"/dev/ttyGS0"_s), std::nullopt);
  Watcher second(registry, Watcher::Waits::ForDevicesToGo);
  machine_.removeVirtual(u"ttyGS0"_s);
  EXPECT_TRUE(second.sees({u"-usbport-ttyGS0"_s}));
}

TEST_F(UdevDeviceRegistryTest, ADeviceThatUdevIsNotDoneWithIsListedWithItsEvent) {
  machine_.plugFtdi(u"ttyUSB0"_s, socketA, false);
  UdevDeviceRegistry registry;
  EXPECT_EQ(listed(registry), Names());
  Watcher watcher(registry);
  machine_.sendEvent(u"ttyUSB0"_s, socketA, "add");
  EXPECT_TRUE(watcher.sees({u"+usbserial-ttyUSB0"_s}));
}

TEST_F(UdevDeviceRegistryTest, AnotherKindOfServiceMatchesNothing) {
  machine_.plugFtdi(u"ttyUSB0"_s);
  UdevDeviceRegistry registry;
  EXPECT_EQ(listed(registry, {.clientType = u"IOModemStream"_s}), Names());
  EXPECT_EQ(listed(registry, {.serviceClass = u"IONetworkInterface"_s}), Names());

  int calls = 0;
  RegistryHandle walk = 0;
  ASSERT_TRUE(registry.addMatchingNotification(
      DeviceEvent::Published, {.clientType = u"IOModemStream"_s},
      [&](DeviceRegistry::Context *, RegistryHandle) { ++calls; }, nullptr, walk));
  EXPECT_EQ(walkToEnd(registry, walk), Names());
  Watcher watcher(registry);
  machine_.plugFtdi(u"ttyUSB1"_s, socketB);
  EXPECT_TRUE(watcher.sees({u"+usbserial-ttyUSB1"_s}));
  EXPECT_EQ(calls, 0);
}

TEST_F(UdevDeviceRegistryTest, AWalkHoldsWhatWasThereWhenItWasMade) {
  machine_.plugFtdi(u"ttyUSB0"_s);
  UdevDeviceRegistry registry;
  const RegistryHandle walk = registry.matchingServices({});
  machine_.plugFtdi(u"ttyUSB1"_s, socketB);
  EXPECT_EQ(walkToEnd(registry, walk), Names({u"usbserial-ttyUSB0"_s}));
  EXPECT_EQ(listed(registry), Names({u"usbserial-ttyUSB0"_s, u"usbserial-ttyUSB1"_s}));
}

TEST_F(UdevDeviceRegistryTest, ADeviceIsKnownUntilItsLastOwnerReleasesIt) {
  machine_.plugFtdi(u"ttyUSB0"_s);
  UdevDeviceRegistry registry;
  const RegistryHandle device = onlyDevice(registry);
  registry.retain(device);
  registry.release(device);
  EXPECT_EQ(read(registry, device, DeviceKey::ttySuffix), u"ttyUSB0");
  registry.release(device);
  EXPECT_TRUE(read(registry, device, DeviceKey::ttySuffix).isNull());
}

TEST_F(UdevDeviceRegistryTest, TheFirstWalkOfAWatchHoldsThosePresentOrNone) {
  machine_.plugFtdi(u"ttyUSB0"_s);
  UdevDeviceRegistry registry;
  RegistryHandle published = 0;
  RegistryHandle terminated = 0;
  ASSERT_TRUE(registry.addMatchingNotification(DeviceEvent::Published, {}, {}, nullptr, published));
  ASSERT_TRUE(registry.addMatchingNotification(DeviceEvent::Terminated, {}, {}, nullptr, terminated));
  EXPECT_EQ(walkToEnd(registry, published), Names({u"usbserial-ttyUSB0"_s}));
  EXPECT_EQ(walkToEnd(registry, terminated), Names());
}

TEST_F(UdevDeviceRegistryTest, AnAdapterThatIsPluggedInAndPulledOutIsTold) {
  UdevDeviceRegistry registry;
  Watcher watcher(registry);
  machine_.plugFtdi(u"ttyUSB0"_s);
  EXPECT_TRUE(watcher.sees({u"+usbserial-ttyUSB0"_s}));
  machine_.unplug(u"ttyUSB0"_s, socketA);
  EXPECT_TRUE(watcher.sees({u"-usbserial-ttyUSB0"_s}));
  machine_.plugFtdi(u"ttyUSB0"_s);
  EXPECT_TRUE(watcher.sees({u"+usbserial-ttyUSB0"_s}));
}

TEST_F(UdevDeviceRegistryTest, ADeviceThatWentIsWhatItWasThoughItsAncestorsAreGone) {
  machine_.plugAcm(u"ttyACM0"_s, socketA);
  UdevDeviceRegistry registry;
  QStringList properties;
  RegistryHandle walk = 0;
  const auto note = [&](DeviceRegistry::Context *, RegistryHandle iterator) {
    const RegistryHandle device = registry.next(iterator);
    for (const auto key : {DeviceKey::ttyDevice, DeviceKey::calloutDevice, DeviceKey::driver}) {
      properties += read(registry, device, key);
    }
  };
  ASSERT_TRUE(registry.addMatchingNotification(DeviceEvent::Terminated, {}, note, nullptr, walk));
  EXPECT_EQ(registry.next(walk), 0U);
  machine_.unplug(u"ttyACM0"_s, socketA);
  ASSERT_TRUE(waitFor([&] { return !properties.isEmpty(); }));
  EXPECT_EQ(properties, Names({u"usbmodem-ttyACM0"_s, u"/dev/ttyACM0"_s, u"cdc_acm"_s}));
}

TEST_F(UdevDeviceRegistryTest, AListingBeforeTheEventIsReadDoesNotForgetTheDeviceThatWent) {
  machine_.plugFtdi(u"ttyUSB0"_s);
  UdevDeviceRegistry registry;
  Watcher watcher(registry);
  machine_.unplug(u"ttyUSB0"_s, socketA);
  EXPECT_EQ(listed(registry), Names());
  EXPECT_TRUE(watcher.sees({u"-usbserial-ttyUSB0"_s}));
}

TEST_F(UdevDeviceRegistryTest, SeveralEventsAtOnceAreToldInOrder) {
  UdevDeviceRegistry registry;
  Watcher watcher(registry);
  machine_.plugFtdi(u"ttyUSB0"_s, socketA);
  machine_.plugAcm(u"ttyACM0"_s, u"1-3"_s);
  machine_.unplug(u"ttyACM0"_s, u"1-3"_s);
  machine_.plugFtdi(u"ttyUSB1"_s, socketB);
  // The modem was gone before its coming was read, so that nothing was left to know it by.
  EXPECT_TRUE(watcher.sees({u"+usbserial-ttyUSB0"_s, u"+usbserial-ttyUSB1"_s}));
  machine_.unplug(u"ttyUSB1"_s, socketB);
  machine_.unplug(u"ttyUSB0"_s, socketA);
  EXPECT_TRUE(watcher.sees({u"-usbserial-ttyUSB1"_s, u"-usbserial-ttyUSB0"_s}));
}

TEST_F(UdevDeviceRegistryTest, ADeviceThatIsAddedTwiceIsToldTwiceAndGoesOnce) {
  UdevDeviceRegistry registry;
  Watcher watcher(registry);
  machine_.plugFtdi(u"ttyUSB0"_s);
  machine_.sendEvent(u"ttyUSB0"_s, socketA, "add");
  EXPECT_TRUE(watcher.sees({u"+usbserial-ttyUSB0"_s, u"+usbserial-ttyUSB0"_s}));
  machine_.sendEvent(u"ttyUSB0"_s, socketA, "remove");
  machine_.sendEvent(u"ttyUSB0"_s, socketA, "remove");
  machine_.plugFtdi(u"ttyUSB1"_s, socketB);
  EXPECT_TRUE(watcher.sees({u"-usbserial-ttyUSB0"_s, u"+usbserial-ttyUSB1"_s}));
}

TEST_F(UdevDeviceRegistryTest, WhatIsNotListedIsNotTold) {
  UdevDeviceRegistry registry;
  Watcher watcher(registry);
  machine_.addVirtual(u"tty7"_s);
  machine_.addLegacy(u"ttyS3"_s, 0);
  machine_.plugFtdi(u"ttyUSB0"_s);
  EXPECT_TRUE(watcher.sees({u"+usbserial-ttyUSB0"_s}));
}

TEST_F(UdevDeviceRegistryTest, ReleasingTheWalkEndsTheWatch) {
  UdevDeviceRegistry registry;
  Watcher other(registry);
  int calls = 0;
  RegistryHandle walk = 0;
  ASSERT_TRUE(registry.addMatchingNotification(
      DeviceEvent::Published, {}, [&](DeviceRegistry::Context *, RegistryHandle) { ++calls; }, nullptr,
      walk));
  EXPECT_EQ(registry.next(walk), 0U);
  registry.release(walk);
  machine_.plugFtdi(u"ttyUSB0"_s);
  EXPECT_TRUE(other.sees({u"+usbserial-ttyUSB0"_s}));
  EXPECT_EQ(calls, 0);
}

TEST_F(UdevDeviceRegistryTest, AfterAnOverflowTheDifferencesAreToldThoseGoneFirst) {
  machine_.plugFtdi(u"ttyUSB0"_s, socketA);
  machine_.plugAcm(u"ttyACM0"_s, u"1-3"_s);
  UdevDeviceRegistry registry;
  Watcher watcher(registry);
  machine_.plugFtdi(u"ttyUSB1"_s, socketB);
  machine_.unplug(u"ttyUSB0"_s, socketA);
  udevFaults().overflowAfter = 0;
  EXPECT_TRUE(watcher.sees({u"-usbserial-ttyUSB0"_s, u"+usbserial-ttyUSB1"_s}));
  EXPECT_FALSE(udevFaults().overflowAfter.has_value());
  machine_.unplug(u"ttyUSB1"_s, socketB);
  EXPECT_TRUE(watcher.sees({u"-usbserial-ttyUSB1"_s}));
}

TEST_F(UdevDeviceRegistryTest, WhatWasQueuedBeforeAnOverflowIsReadBeforeTheMachineIsLookedAt) {
  machine_.plugFtdi(u"ttyUSB0"_s, socketA);
  UdevDeviceRegistry registry;
  Watcher watcher(registry);
  machine_.unplug(u"ttyUSB0"_s, socketA);
  machine_.plugFtdi(u"ttyUSB0"_s, socketA);  // of which the word is lost
  udevFaults().overflowAfter = 1;
  EXPECT_TRUE(watcher.sees({u"-usbserial-ttyUSB0"_s, u"+usbserial-ttyUSB0"_s}));
  EXPECT_TRUE(udevFaults().inTime.empty());
}

TEST_F(UdevDeviceRegistryTest, AnotherAdapterInTheSameSocketIsToldAfterAnOverflow) {
  machine_.plugFtdi(u"ttyUSB0"_s, socketA);
  UdevDeviceRegistry registry;
  Watcher watcher(registry);
  machine_.unplug(u"ttyUSB0"_s, socketA);
  machine_.plugFtdi(u"ttyUSB0"_s, socketA, true, u"B60396CJ"_s);
  udevFaults().overflowAfter = 0;
  EXPECT_TRUE(watcher.sees({u"-usbserial-ttyUSB0"_s, u"+usbserial-ttyUSB0"_s}));
  EXPECT_EQ(read(registry, onlyDevice(registry), DeviceKey::serialNumber), u"B60396CJ");
}

TEST_F(UdevDeviceRegistryTest, AnAdapterAtTheNodeOfOneWhoseGoingWasLostIsToldLast) {
  machine_.plugFtdi(u"ttyUSB0"_s, socketA);
  UdevDeviceRegistry registry;
  Watcher watcher(registry);
  machine_.unplug(u"ttyUSB0"_s, socketA);
  machine_.plugFtdi(u"ttyUSB0"_s, socketB);
  udevFaults().overflowAfter = 1;
  udevFaults().removalsAreLost = true;
  EXPECT_TRUE(watcher.sees({u"+usbserial-ttyUSB0"_s, u"-usbserial-ttyUSB0"_s, u"+usbserial-ttyUSB0"_s}));
}

TEST_F(UdevDeviceRegistryTest, AnAdapterThatIsStillThereAfterAnOverflowIsNotTold) {
  machine_.plugFtdi(u"ttyUSB0"_s, socketA);
  UdevDeviceRegistry registry;
  Watcher watcher(registry);
  machine_.plugFtdi(u"ttyUSB1"_s, socketB);
  udevFaults().overflowAfter = 0;
  EXPECT_TRUE(watcher.sees({u"+usbserial-ttyUSB1"_s}));
}

TEST_F(UdevDeviceRegistryTest, WithoutAMonitorThereIsNoWatch) {
  machine_.plugFtdi(u"ttyUSB0"_s);
  udevFaults().noMonitor = true;
  UdevDeviceRegistry registry;
  RegistryHandle walk = 1;
  EXPECT_FALSE(registry.addMatchingNotification(DeviceEvent::Published, {}, {}, nullptr, walk));
  EXPECT_EQ(walk, 0U);
  EXPECT_EQ(listed(registry), Names({u"usbserial-ttyUSB0"_s}));
}

TEST_F(UdevDeviceRegistryTest, WithoutUdevOnlyTheTerminalsOfTheUserAreThere) {
  machine_.plugFtdi(u"ttyUSB0"_s);
  udevFaults().noContext = true;
  UdevDeviceRegistry registry;
  RegistryHandle walk = 1;
  EXPECT_FALSE(registry.addMatchingNotification(DeviceEvent::Terminated, {}, {}, nullptr, walk));
  EXPECT_EQ(walk, 0U);
  const Pty pty;
  EXPECT_EQ(registry.addTerminal(pty.node()), std::nullopt);
  EXPECT_EQ(listed(registry), Names({pty.name()}));
}

TEST_F(UdevDeviceRegistryTest, TerminalsOfTheUserComeFirstInTheOrderAdded) {
  machine_.plugFtdi(u"ttyUSB0"_s);
  const Pty first;
  const Pty second;
  UdevDeviceRegistry registry;
  EXPECT_EQ(registry.addTerminal(second.node()), std::nullopt);
  EXPECT_EQ(registry.addTerminal(first.node()), std::nullopt);
  EXPECT_EQ(listed(registry), Names({second.name(), first.name(), u"usbserial-ttyUSB0"_s}));
}

TEST_F(UdevDeviceRegistryTest, ATerminalOfTheUserIsNamedAfterItsPathBelowDev) {
  const Pty pty;
  UdevDeviceRegistry registry;
  EXPECT_EQ(registry.addTerminal(pty.node()), std::nullopt);
  const RegistryHandle device = onlyDevice(registry);
  EXPECT_EQ(read(registry, device, DeviceKey::ttyDevice), pty.name());
  EXPECT_EQ(read(registry, device, DeviceKey::ttyBaseName), u"usbport-");
  EXPECT_EQ(read(registry, device, DeviceKey::ttySuffix), pty.name().mid(8));
  EXPECT_EQ(read(registry, device, DeviceKey::calloutDevice), pty.node());
  EXPECT_EQ(read(registry, device, DeviceKey::dialinDevice), pty.node());
  EXPECT_EQ(read(registry, device, DeviceKey::clientType), u"IOSerialStream");
}

TEST_F(UdevDeviceRegistryTest, ALinkToATerminalIsTheTerminal) {
  const Pty pty;
  const QTemporaryDir folder;
  const QString link = folder.filePath(u"servo"_s);
  ASSERT_TRUE(QFile::link(pty.node(), link));
  UdevDeviceRegistry registry;
  EXPECT_EQ(registry.addTerminal(link), std::nullopt);
  EXPECT_EQ(registry.addTerminal(pty.node()), std::nullopt);
  const RegistryHandle device = onlyDevice(registry);
  EXPECT_EQ(read(registry, device, DeviceKey::ttyDevice), pty.name());
  EXPECT_EQ(read(registry, device, DeviceKey::calloutDevice), pty.node());
}

TEST_F(UdevDeviceRegistryTest, ADeviceThatUdevListsAsWellIsListedOnceInFront) {
  machine_.plugFtdi(u"ttyUSB0"_s, socketA);
  machine_.plugFtdi(u"ttyUSB1"_s, socketB);
  machine_.link(u"serial/by-id/usb-FTDI-if00"_s, u"../../ttyUSB1"_s);
  UdevDeviceRegistry registry;
  EXPECT_EQ(registry.addTerminal(u"/dev/serial/by-id/usb-FTDI-if00"_s), std::nullopt);
  EXPECT_EQ(listed(registry), Names({u"usbport-ttyUSB1"_s, u"usbserial-ttyUSB0"_s}));

  const RegistryHandle walk = registry.matchingServices({});
  const RegistryHandle device = registry.next(walk);
  EXPECT_EQ(read(registry, device, DeviceKey::calloutDevice), u"/dev/ttyUSB1");
  EXPECT_EQ(read(registry, device, DeviceKey::serialNumber), u"A50285BI");
}

TEST_F(UdevDeviceRegistryTest, AnAdapterThatTheUserNamedComesAndGoesUnderThatName) {
  machine_.plugFtdi(u"ttyUSB0"_s);
  UdevDeviceRegistry registry;
  EXPECT_EQ(registry.addTerminal(u"/dev/ttyUSB0"_s), std::nullopt);
  Watcher watcher(registry);
  machine_.unplug(u"ttyUSB0"_s, socketA);
  EXPECT_TRUE(watcher.sees({u"-usbport-ttyUSB0"_s}));
  EXPECT_EQ(listed(registry), Names());
  machine_.plugFtdi(u"ttyUSB0"_s);
  EXPECT_TRUE(watcher.sees({u"+usbport-ttyUSB0"_s}));
}

TEST_F(UdevDeviceRegistryTest, ATerminalOfTheUserThatIsGoneIsNotListed) {
  Pty pty;
  UdevDeviceRegistry registry;
  EXPECT_EQ(registry.addTerminal(pty.node()), std::nullopt);
  pty.close();
  EXPECT_EQ(listed(registry), Names());
}

TEST_F(UdevDeviceRegistryTest, APathThatIsNotThereIsRefusedWithTheReason) {
  UdevDeviceRegistry registry;
  EXPECT_EQ(registry.addTerminal(u"/dev/ttyUSB77"_s), u"/dev/ttyUSB77: No such file or directory"_s);
  EXPECT_EQ(registry.addTerminal(QString()), u": No such file or directory"_s);
  EXPECT_EQ(listed(registry), Names());
}

TEST_F(UdevDeviceRegistryTest, AFileThatIsNoTerminalIsRefusedWithTheReason) {
  const QTemporaryDir folder;
  QFile file(folder.filePath(u"notes"_s));
  ASSERT_TRUE(file.open(QIODevice::WriteOnly));
  UdevDeviceRegistry registry;
  const QString reason = u": is not a terminal: not a character device"_s;
  EXPECT_EQ(registry.addTerminal(file.fileName()), file.fileName() + reason);
  EXPECT_EQ(registry.addTerminal(folder.path()), folder.path() + reason);
  EXPECT_EQ(listed(registry), Names());
}

TEST_F(UdevDeviceRegistryTest, ACharacterDeviceThatIsNoTerminalIsRefusedWithTheReason) {
  machine_.addNull();
  UdevDeviceRegistry registry;
  EXPECT_EQ(registry.addTerminal(u"/dev/null"_s),
            u"/dev/null: is not a terminal but a device of kind \"mem\""_s);
  EXPECT_EQ(listed(registry), Names());
}

}  // namespace
}  // namespace tavril
