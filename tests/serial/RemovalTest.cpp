#include "tests/serial/ManagerBench.h"
#include "tests/support/WaitFor.h"

#include <cerrno>
#include <chrono>
#include <future>

namespace tavril {
namespace {

using namespace std::chrono_literals;

/// A removal that both the pin poller and udev see.
class RemovalSeenTwice : public SerialPortManagerOnBench {
 protected:
  void openPort() {
    bench.devices.add("usbserial-ttyUSB0", pty.path());
    start();
    port = manager->availablePorts().at(0);
    port->setDelegate(delegate);
    ASSERT_TRUE(port->open());
    bench.mainQueue.runAll();
    delegate->events.clear();
  }
  void thePollerSeesItFirst() {
    bench.terminal.fail(Call::Pins, ENXIO);
    ASSERT_TRUE(bench.mainQueue.runUntil([&] { return delegate->events.contains("closed"); }));
    bench.terminal.heal(Call::Pins);
  }
  void udevTells() {
    bench.devices.pullOut(pty.path());
    bench.mainQueue.runAll();
  }
  /// The poller has told its error, and what it has to tell next waits behind this many other jobs.
  bool pollerWaitsBehind(std::size_t jobs) {
    return waitFor([&] { return bench.mainQueue.pending() == jobs + 1; });
  }
  qsizetype removals() const { return delegate->events.count("removed"); }

  const QString gone = QStringLiteral("error ") + QString::number(ENXIO);
  Pty pty;
  std::shared_ptr<SerialPort> port;
};

TEST_F(RemovalSeenTwice, IsToldOnceWhenThePollerIsFirst) {
  openPort();
  thePollerSeesItFirst();
  EXPECT_EQ(delegate->events, (QStringList{gone, "removed", "closed"}));
  udevTells();
  EXPECT_EQ(delegate->events, (QStringList{gone, "removed", "closed"}));
  EXPECT_EQ(posted, QStringList{"SerialPortWasDisconnectedNotification"});
}

TEST_F(RemovalSeenTwice, IsToldOnceWhenUdevIsFirstWhileThePollersWordWaits) {
  openPort();
  bench.terminal.fail(Call::Pins, ENXIO);
  ASSERT_TRUE(waitFor([&] { return bench.mainQueue.pending() == 1; }));
  bench.devices.pullOut(pty.path());
  ASSERT_TRUE(bench.mainQueue.runNext());  // the poller's error
  ASSERT_TRUE(pollerWaitsBehind(1));
  bench.mainQueue.runAll();
  EXPECT_EQ(delegate->events, (QStringList{gone, "removed", "closed"}));
}

TEST_F(RemovalSeenTwice, IsToldOnceWhenThePollersErrorIsToldAfterUdevsWord) {
  openPort();
  bench.devices.pullOut(pty.path());
  bench.terminal.fail(Call::Pins, ENXIO);
  ASSERT_TRUE(pollerWaitsBehind(1));
  ASSERT_TRUE(bench.mainQueue.runUntil([&] { return delegate->events.contains(gone); }));
  ASSERT_TRUE(waitFor([&] { return bench.mainQueue.pending() == 1; }));  // the poller's word of the removal
  bench.mainQueue.runAll();
  EXPECT_EQ(delegate->events, (QStringList{"removed", "closed", gone}));
}

TEST_F(RemovalSeenTwice, IsToldOnceAlsoWhenTheDelegateClosesInTheErrorCallback) {
  openPort();
  delegate->atEvent = [&](const QString &event, const SerialPortDelegate::Port &told) {
    if (event == gone) told->close();
  };
  bench.terminal.fail(Call::Pins, ENXIO);
  ASSERT_TRUE(bench.mainQueue.runUntil([&] { return delegate->events.contains("removed"); }));
  delegate->atEvent = nullptr;
  udevTells();
  EXPECT_EQ(delegate->events, (QStringList{gone, "closed", "removed"}));
}

TEST_F(RemovalSeenTwice, IsNoRemovalWhenTheDelegateCouldOpenThePortAnewInTheErrorCallback) {
  openPort();
  delegate->atEvent = [&](const QString &event, const SerialPortDelegate::Port &told) {
    if (event != gone) return;
    bench.terminal.heal(Call::Pins);
    EXPECT_TRUE(told->close() && told->open());
  };
  bench.terminal.fail(Call::Pins, ENXIO);
  ASSERT_TRUE(bench.mainQueue.runUntil([&] { return delegate->events.contains("opened"); }));
  // The poller has left once the session that it worked for is gone, and its word has been dealt with.
  EXPECT_TRUE(waitFor([&] {
    bench.mainQueue.runAll();
    return bench.terminal.wakesClosed() == 1;
  }));
  delegate->atEvent = nullptr;
  EXPECT_EQ(delegate->events, (QStringList{gone, "closed", "opened"}));
  EXPECT_TRUE(port->isOpen());
}

TEST_F(RemovalSeenTwice, IsToldToADelegateThatWasSetInBetween) {
  openPort();
  thePollerSeesItFirst();
  const auto later = std::make_shared<RecordingDelegate>();
  port->setDelegate(later);
  udevTells();
  EXPECT_EQ(later->events, QStringList{"removed"});
  EXPECT_EQ(removals(), 1);
}

TEST_F(RemovalSeenTwice, DoesNotCloseAPortThatWasOpenedAnewBeforeUdevsWordCame) {
  openPort();
  thePollerSeesItFirst();
  ASSERT_TRUE(port->open());
  udevTells();
  EXPECT_TRUE(port->isOpen());
  EXPECT_EQ(removals(), 1);
  bench.mainQueue.runAll();
  delegate->events.clear();
  thePollerSeesItFirst();
  EXPECT_EQ(delegate->events, (QStringList{gone, "removed", "closed"})) << "of the port that was opened anew";
}

TEST_F(RemovalSeenTwice, IsToldOfTheOpeningAfterAHangUpThatUdevDidNotSee) {
  openPort();
  thePollerSeesItFirst();
  ASSERT_TRUE(port->open());
  bench.mainQueue.runAll();
  delegate->events.clear();
  udevTells();
  EXPECT_TRUE(port->isOpen()) << "udev's word may be that of the hang-up";
  thePollerSeesItFirst();
  EXPECT_EQ(delegate->events, (QStringList{gone, "removed", "closed"}));
}

TEST_F(RemovalSeenTwice, EndsWithTheClosingBeforeTheDisconnectIsPosted) {
  std::promise<void> reached;
  std::promise<void> mayGoOn;
  bench.terminal.atCall = [&](Call call) {
    if (call != Call::Unlock || bench.mainQueue.isMainThread()) return;
    reached.set_value();
    mayGoOn.get_future().wait_for(200ms);
  };
  openPort();
  bench.terminal.fail(Call::Pins, ENXIO);
  ASSERT_TRUE(bench.mainQueue.runUntil([&] { return delegate->events.contains("removed"); }));
  ASSERT_EQ(reached.get_future().wait_for(20s), std::future_status::ready);
  udevTells();
  EXPECT_EQ(posted, QStringList{"SerialPortWasDisconnectedNotification"});
  EXPECT_EQ(delegateEventsAtPost, (QStringList{gone, "removed", "closed"}));
}

TEST_F(RemovalSeenTwice, DoesNotCloseWhatTheDelegateOpensAnewWhenItHearsOfIt) {
  openPort();
  delegate->atEvent = [&](const QString &event, const SerialPortDelegate::Port &told) {
    if (event != u"removed") return;
    EXPECT_TRUE(told->close() && told->open());
  };
  udevTells();
  delegate->atEvent = nullptr;
  EXPECT_EQ(delegate->events, (QStringList{"removed", "closed", "opened"}));
  EXPECT_TRUE(port->isOpen());
}

TEST_F(RemovalSeenTwice, CountsAnewForAPortThatIsPluggedInAgain) {
  openPort();
  thePollerSeesItFirst();
  bench.devices.pullOut(pty.path());
  bench.devices.plugIn("usbserial-ttyUSB0", pty.path());
  bench.mainQueue.runAll();
  EXPECT_EQ(removals(), 1);
  udevTells();
  EXPECT_EQ(removals(), 2) << "of a closed port";
  bench.devices.plugIn("usbserial-ttyUSB0", pty.path());
  bench.mainQueue.runAll();
  ASSERT_TRUE(port->open());
  bench.mainQueue.runAll();
  delegate->events.clear();
  thePollerSeesItFirst();
  EXPECT_EQ(removals(), 1) << "of a port that is open again";
  udevTells();
  EXPECT_EQ(removals(), 1);
}

TEST_F(RemovalSeenTwice, OfAPortThatUdevDoesNotKnowCountsAnewAtEachOpening) {
  openPort();
  for (int round = 1; round <= 3; ++round) {
    thePollerSeesItFirst();
    EXPECT_EQ(removals(), 1);
    ASSERT_TRUE(port->open());
    bench.mainQueue.runAll();
    delegate->events.clear();
  }
}

TEST_F(RemovalSeenTwice, IsToldEachTimeBySayingSoByHand) {
  openPort();
  port->cleanupAfterSystemRemoval();
  port->cleanupAfterSystemRemoval();
  port->cleanup();
  EXPECT_EQ(delegate->events, (QStringList{"removed", "closed", "removed", "removed"}));
  udevTells();
  EXPECT_EQ(removals(), 4);
}

}  // namespace
}  // namespace tavril
