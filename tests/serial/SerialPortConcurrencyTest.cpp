#include "serial/SerialRequest.h"
#include "tests/support/Rescue.h"
#include "tests/support/SerialBench.h"
#include "tests/support/WaitFor.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <filesystem>
#include <future>
#include <random>
#include <semaphore>
#include <thread>
#include <vector>

#include <unistd.h>

namespace tavril {
namespace {

using namespace std::chrono_literals;

QString errorEvent(int error) {
  return QStringLiteral("error ") + QString::number(error);
}

std::size_t openDescriptors() {
  const std::filesystem::directory_iterator all("/proc/self/fd");
  return static_cast<std::size_t>(std::distance(begin(all), end(all)));
}

class SerialPortConcurrency : public testing::Test {
 protected:
  SerialPortConcurrency() { port->setDelegate(delegate); }
  ~SerialPortConcurrency() override {
    delegate->atEvent = nullptr;
    if (!port) return;
    port->setDelegate({});
    port->close();
  }
  bool runUntil(const std::function<bool()> &condition) { return bench.mainQueue.runUntil(condition); }
  bool opened() {
    return port->open() && runUntil([&] { return delegate->events.contains("opened"); });
  }
  void onEvent(const QString &awaited, const std::function<void()> &action) {
    delegate->atEvent = [awaited, action](const QString &event, const SerialPortDelegate::Port &) {
      if (event == awaited) action();
    };
  }
  /// The port can do everything, whatever has happened to it.
  void expectThePortWorks() {
    delegate->atEvent = nullptr;
    bench.mainQueue.runAll();
    ASSERT_TRUE(port->open());
    delegate->received.clear();
    EXPECT_TRUE(port->sendData("ping"));
    EXPECT_TRUE(pty.read(4).endsWith("ping"));
    pty.write("pong");
    EXPECT_TRUE(runUntil([&] { return delegate->received == "pong"; }));
    EXPECT_TRUE(port->close());
  }

  Pty pty;
  SerialBench<> bench;
  std::shared_ptr<SerialPort> port = bench.port("usbport-test", pty.path());
  std::shared_ptr<RecordingDelegate> delegate = std::make_shared<RecordingDelegate>();
};

// --------------------------------------------------------------- closing and opening again inside callbacks

TEST_F(SerialPortConcurrency, ClosingInAnErrorCallbackOfOpeningEndsTheOpening) {
  bench.terminal.fail(Call::SetAttributes, EINVAL, 1);
  onEvent(errorEvent(EINVAL), [&] { EXPECT_TRUE(port->close()); });
  EXPECT_FALSE(port->open());
  bench.mainQueue.runAll();
  EXPECT_EQ(delegate->events, (QStringList{errorEvent(EINVAL), "closed"}));
  EXPECT_EQ(bench.terminal.count(Call::Open), bench.terminal.count(Call::Close));
  expectThePortWorks();
}

TEST_F(SerialPortConcurrency, ClosingWhenThePinsCannotBeReadAtOpeningEndsTheOpening) {
  bench.terminal.fail(Call::Pins, EINVAL, 1);
  onEvent(errorEvent(EINVAL), [&] { EXPECT_TRUE(port->close()); });
  EXPECT_FALSE(port->open());
  bench.mainQueue.runAll();
  EXPECT_EQ(delegate->events, (QStringList{errorEvent(EINVAL), "closed"}));
  expectThePortWorks();
}

TEST_F(SerialPortConcurrency, OpeningAgainInAnErrorCallbackOfOpeningGivesOneRunningPort) {
  bench.terminal.fail(Call::SetAttributes, EINVAL, 1);
  onEvent(errorEvent(EINVAL), [&] {
    EXPECT_TRUE(port->close());
    EXPECT_TRUE(port->open());
  });
  EXPECT_TRUE(port->open());
  bench.mainQueue.runAll();
  EXPECT_EQ(delegate->events.count("opened"), 1);
  EXPECT_EQ(bench.terminal.count(Call::OpenWake), 2);
  pty.write("once");
  EXPECT_TRUE(runUntil([&] { return delegate->received.size() >= 4; }));
  EXPECT_EQ(delegate->received, "once");
  EXPECT_TRUE(port->close());
  EXPECT_EQ(bench.terminal.count(Call::Open), bench.terminal.count(Call::Close));
  expectThePortWorks();
}

TEST_F(SerialPortConcurrency, AnObserverThatClosesThePortAsItOpensLeavesTheLineAsItWas) {
  ASSERT_TRUE(opened());
  ASSERT_TRUE(port->close());  // whose settings must not be put back by the next closing
  termios changed = pty.attributes();
  changed.c_iflag |= IXON;
  ::tcsetattr(pty.slave(), TCSANOW, &changed);

  auto token = port->observe(QStringLiteral("isOpen"), [&](const Change &) {
    if (port->isOpen()) port->close();
  });
  EXPECT_FALSE(port->open());
  EXPECT_EQ(pty.attributes().c_iflag & IXON, static_cast<tcflag_t>(IXON));
  token.reset();
  EXPECT_EQ(bench.terminal.count(Call::Open), bench.terminal.count(Call::Close));
  expectThePortWorks();
}

TEST_F(SerialPortConcurrency, OpeningAgainInTheClosedCallbackGivesARunningPort) {
  ASSERT_TRUE(opened());
  onEvent("closed", [&] { EXPECT_TRUE(port->open()); });
  EXPECT_TRUE(port->close());
  EXPECT_TRUE(port->isOpen());
  pty.write("again");
  EXPECT_TRUE(runUntil([&] { return delegate->received == "again"; }));
}

TEST_F(SerialPortConcurrency, OpeningAgainInTheRemovedCallbackKeepsTheNewOpening) {
  ASSERT_TRUE(opened());
  onEvent("removed", [&] {
    bench.terminal.heal(Call::Pins);
    EXPECT_TRUE(port->close());
    EXPECT_TRUE(port->open());
  });
  bench.terminal.fail(Call::Pins, ENXIO);
  EXPECT_TRUE(runUntil([&] { return delegate->events.count("opened") == 2; }));
  pty.write("again");
  EXPECT_TRUE(runUntil([&] { return delegate->received == "again"; }));
  EXPECT_TRUE(port->isOpen());
  EXPECT_EQ(delegate->events.count("closed"), 1);
}

TEST_F(SerialPortConcurrency, ClosingWhenToldThatTheDeviceDoesNotAnswerLeavesItARemoval) {
  ASSERT_TRUE(opened());
  onEvent(errorEvent(ENXIO), [&] { EXPECT_TRUE(port->close()); });
  bench.terminal.fail(Call::Pins, ENXIO);
  ASSERT_TRUE(runUntil([&] { return delegate->events.contains("closed"); }));
  // Only this test and the application's list hold the port once its threads have left it.
  EXPECT_TRUE(waitFor([&] { return bench.mainQueue.runAll() == 0 && port.use_count() == 2; }));
  EXPECT_EQ(delegate->events, (QStringList{"opened", errorEvent(ENXIO), "closed", "removed"}));
}

TEST_F(SerialPortConcurrency, DroppingTheLastReferenceInACallbackClosesTheTerminal) {
  ASSERT_TRUE(opened());
  const std::weak_ptr<SerialPort> weak = port;
  onEvent("data", [&] {
    bench.allSerialPortsInfo.clear();
    port.reset();
  });
  pty.write("x");
  EXPECT_TRUE(runUntil([&] { return port == nullptr; }));
  EXPECT_TRUE(waitFor([&] { return weak.expired(); }));
  // The reference is gone before the port has finished going, on whichever thread that is.
  EXPECT_TRUE(waitFor([&] { return bench.terminal.count(Call::Close) == 1; }));
}

// ------------------------------------------------------- opening again while the pin poller closes the port

enum class HeldAt { Unlocking, Closing, Telling };

/// Holds the pin poller's closing for a while in which the main thread opens the port again.
class OpeningWhileThePollerCloses : public SerialPortConcurrency, public testing::WithParamInterface<HeldAt> {
 protected:
  void hold() {
    if (isHeld.exchange(true)) return;
    reached.set_value();
    std::promise<void>().get_future().wait_for(200ms);
  }
  void closeOnThePollerUpTo(HeldAt place) {
    bench.terminal.atCall = [this, place](Call call) {
      const bool isThere = (place == HeldAt::Unlocking && call == Call::Unlock) ||
                           (place == HeldAt::Closing && call == Call::Close);
      if (isThere && !bench.mainQueue.isMainThread()) hold();
    };
    bench.mainQueue.atSync = [this, place] {
      if (place == HeldAt::Telling && bench.terminal.count(Call::Close) == 1) hold();
    };
    ASSERT_TRUE(opened());
    onEvent("removed", [&] { bench.terminal.heal(Call::Pins); });
    bench.terminal.fail(Call::Pins, ENXIO);
    ASSERT_TRUE(runUntil([&] { return delegate->events.contains("removed"); }));
    ASSERT_EQ(reached.get_future().wait_for(20s), std::future_status::ready);
    EXPECT_FALSE(port->isOpen());
  }

  std::atomic<bool> isHeld = false;
  std::promise<void> reached;
};

INSTANTIATE_TEST_SUITE_P(Place, OpeningWhileThePollerCloses,
                         testing::Values(HeldAt::Unlocking, HeldAt::Closing, HeldAt::Telling));

TEST_P(OpeningWhileThePollerCloses, WaitsForTheDescriptorAndTellsTheClosingFirst) {
  closeOnThePollerUpTo(GetParam());
  EXPECT_TRUE(port->open());
  ASSERT_TRUE(runUntil([&] { return delegate->events.count("opened") == 2; }));
  EXPECT_TRUE(waitFor([&] {
    bench.mainQueue.runAll();
    return bench.terminal.wakesClosed() == 1;  // the poller has left
  }));
  EXPECT_EQ(delegate->events, (QStringList{"opened", errorEvent(ENXIO), "removed", "closed", "opened"}));
  EXPECT_TRUE(port->isOpen());
  EXPECT_TRUE(port->close());
  expectThePortWorks();
}

TEST_P(OpeningWhileThePollerCloses, KeepsTheRequestsThatAreSentThen) {
  ASSERT_TRUE(port->open());
  const auto never = [](const QByteArray &) { return false; };
  const auto older = SerialRequest::requestWithDataToSend("older", {}, 0, never);
  const auto first = SerialRequest::requestWithDataToSend("first", {}, 0, never);
  const auto second = SerialRequest::requestWithDataToSend("second", {}, 0, never);
  EXPECT_TRUE(port->sendRequest(older));
  closeOnThePollerUpTo(GetParam());
  EXPECT_TRUE(port->open());
  port->sendRequest(first);
  port->sendRequest(second);
  EXPECT_TRUE(waitFor([&] {
    bench.mainQueue.runAll();
    return bench.terminal.wakesClosed() == 1;
  }));
  EXPECT_TRUE(waitFor([&] { return port->pendingRequest() != older; })) << "closing forgets it";
  EXPECT_EQ(port->pendingRequest(), first);
  EXPECT_EQ(port->queuedRequests(), std::vector{second});
  EXPECT_EQ(pty.read(10), "olderfirst");
}

TEST_P(OpeningWhileThePollerCloses, TheDelegateThatOpensItWhenItHearsOfTheClosingHasOpenedIt) {
  closeOnThePollerUpTo(GetParam());
  onEvent("closed", [&] { EXPECT_TRUE(port->open()); });
  EXPECT_TRUE(port->open());
  EXPECT_EQ(delegate->events.count("closed"), 1);
  EXPECT_EQ(bench.terminal.count(Call::Open), 2);
}

TEST_F(SerialPortConcurrency, AnObserverThatOpensThePortAsItClosesIsRefusedAndDoesNotWaitForItself) {
  ASSERT_TRUE(opened());
  const auto token = port->observe(QStringLiteral("isOpen"), [&](const Change &) {
    if (port->isOpen()) return;
    EXPECT_FALSE(port->open());
  });
  EXPECT_TRUE(port->close());
  // Root passes the exclusive flag and is stopped by the lock.
  const int refusal = ::geteuid() == 0 ? EWOULDBLOCK : EBUSY;
  EXPECT_EQ(delegate->events, (QStringList{"opened", errorEvent(refusal), "closed"}));
}

TEST_F(SerialPortConcurrency, AClosingThatItsDelegateDidNotWantToHearIsNotToldToALaterOne) {
  port->setDelegate({});
  ASSERT_TRUE(port->open());
  ASSERT_TRUE(port->close());
  port->setDelegate(delegate);
  ASSERT_TRUE(opened());
  EXPECT_EQ(delegate->events, QStringList{"opened"});
}

// ------------------------------------------------------------------------------------ closing while sending

TEST_F(SerialPortConcurrency, SendingThatTheClosingOvertakesFailsWithoutAnError) {
  bench.terminal.writeAtMost = 1;
  std::binary_semaphore isWriting(0);
  std::binary_semaphore isClosed(0);
  std::atomic<bool> isFirst = true;
  bench.terminal.atCall = [&](Call call) {
    if (call != Call::Write || !isFirst.exchange(false)) return;
    isWriting.release();
    isClosed.acquire();
  };
  ASSERT_TRUE(opened());
  auto sending = std::async(std::launch::async, [&] { return port->sendData("ab"); });
  ASSERT_TRUE(isWriting.try_acquire_for(20s));
  const auto token = port->observe(QStringLiteral("isOpen"), [&](const Change &) { isClosed.release(); });
  EXPECT_TRUE(port->close());
  EXPECT_FALSE(sending.get());
  bench.mainQueue.runAll();
  EXPECT_EQ(delegate->events, (QStringList{"opened", "closed"}));
  EXPECT_EQ(bench.terminal.count(Call::Write), 1);
  bench.terminal.atCall = nullptr;
}

TEST_F(SerialPortConcurrency, SendingThatIsHeldUpAndLetGoByTheClosingFailsWithoutAnError) {
  ASSERT_TRUE(opened());
  ASSERT_EQ(::tcflow(pty.slave(), TCOOFF), 0);
  auto sending = std::async(std::launch::async, [&] { return port->sendData("held up"); });
  EXPECT_TRUE(waitFor([&] { return bench.terminal.count(Call::Write) == 1; }));
  Rescue rescue([&] { ::tcflow(pty.slave(), TCOON); });
  EXPECT_TRUE(port->close());
  EXPECT_FALSE(sending.get());
  EXPECT_FALSE(rescue.wasNeeded());
  bench.mainQueue.runAll();
  EXPECT_EQ(delegate->events, (QStringList{"opened", "closed"}));
}

// ------------------------------------------------------------------------------- others on the same terminal

TEST_F(SerialPortConcurrency, ClosingDoesNotWaitForAReadWhoseBytesAnotherProgramTookFirst) {
  std::atomic<bool> taken = false;
  bench.terminal.atCall = [&](Call call) {
    std::array<char, 16> buffer{};
    if (call == Call::Read && !taken.exchange(true)) {
      EXPECT_EQ(::read(pty.slave(), buffer.data(), buffer.size()), 4);
    }
  };
  ASSERT_TRUE(opened());
  pty.write("mine");
  EXPECT_TRUE(waitFor([&] { return taken.load(); }));
  Rescue rescue([&] { pty.write("x"); });
  EXPECT_TRUE(port->close());
  EXPECT_FALSE(rescue.wasNeeded()) << "closing waited for input";
  expectThePortWorks();
}

TEST_F(SerialPortConcurrency, ADeviceThatIsGoneIsClosedAlsoWhileTheMainThreadIsStuckInSending) {
  bench.terminal.setPinsOfLine(0);
  ASSERT_TRUE(opened());
  ASSERT_EQ(::tcflow(pty.slave(), TCOOFF), 0);
  // Nobody is to be told, so that the poller closes without waiting for the main thread.
  bench.mainQueue.shutDown();
  Rescue rescue([&] { ::tcflow(pty.slave(), TCOON); });
  bench.terminal.fail(Call::Pins, ENXIO);
  EXPECT_FALSE(port->sendData("stuck"));
  EXPECT_FALSE(rescue.wasNeeded());
  EXPECT_TRUE(waitFor([&] { return !port->isOpen(); }));
}

// ----------------------------------------------------------------------------------------- the program's end

TEST_F(SerialPortConcurrency, ThePollerThatWaitsForTheMainThreadIsLetGoAtTheEndAndCloses) {
  ASSERT_TRUE(opened());
  pty.unplug();
  EXPECT_TRUE(waitFor([&] { return bench.mainQueue.pending() > 0; }));
  bench.mainQueue.shutDown();
  EXPECT_TRUE(waitFor([&] { return !port->isOpen(); }));
  EXPECT_TRUE(waitFor([&] { return bench.terminal.count(Call::Close) == 1; }));
}

TEST_F(SerialPortConcurrency, ClosingOnTheMainThreadWhileThePollerClosesTellsItOnce) {
  for (int round = 0; round < 30; ++round) {
    delegate->events.clear();
    ASSERT_TRUE(port->open());
    onEvent("removed", [&] { bench.terminal.heal(Call::Pins); });
    bench.terminal.fail(Call::Pins, ENXIO);
    ASSERT_TRUE(runUntil([&] { return delegate->events.contains("removed"); }));
    if (round % 2 == 0) std::this_thread::yield();
    EXPECT_TRUE(port->close());
    EXPECT_FALSE(port->isOpen());
    ASSERT_TRUE(runUntil([&] { return delegate->events.contains("closed"); }));
    bench.mainQueue.runAll();
    EXPECT_EQ(delegate->events.count("closed"), 1);
    EXPECT_EQ(delegate->events.count("removed"), 1);
  }
  EXPECT_EQ(bench.terminal.count(Call::Open), bench.terminal.count(Call::Close));
}

// ----------------------------------------------------------------------------------------------- hammering

/// The servo's side: sends all the time and takes what comes.
class Traffic {
 public:
  explicit Traffic(const Pty &pty)
      : master_(::dup(pty.master())), thread_([this] {
          ::fcntl(master_, F_SETFL, O_NONBLOCK);
          while (!stop_) {
            pollfd master{master_, POLLIN | POLLOUT, 0};
            if (::poll(&master, 1, 5) <= 0) continue;
            std::array<char, 256> buffer{};
            if ((master.revents & POLLIN) != 0) {
              [[maybe_unused]] const auto got = ::read(master_, buffer.data(), buffer.size());
            }
            if ((master.revents & POLLOUT) != 0) {
              [[maybe_unused]] const auto put = ::write(master_, "\xFF\x05\x90\x01\xFE", 5);
            }
            std::this_thread::yield();
          }
        }) {}
  ~Traffic() {
    stop_ = true;
    thread_.join();
    ::close(master_);
  }

 private:
  const int master_;
  std::atomic<bool> stop_ = false;
  std::thread thread_;
};

TEST_F(SerialPortConcurrency, TheDescriptorIsNotClosedWhileThePollerUsesIt) {
  std::atomic<bool> armed = false;
  std::atomic<bool> inUse = false;
  std::atomic<bool> closedInUse = false;
  std::promise<void> closing;
  std::promise<void> closed;
  bench.terminal.atCall = [&](Call call) {
    if (call == Call::Unlock) closing.set_value();
    if (call == Call::Close) closed.set_value();
    if (call != Call::Pins || !armed.exchange(false)) return;
    inUse = true;
    closedInUse = closing.get_future().wait_for(200ms) == std::future_status::ready ||
                  closed.get_future().wait_for(0ms) == std::future_status::ready;
  };
  ASSERT_TRUE(opened());
  armed = true;
  EXPECT_TRUE(waitFor([&] { return inUse.load(); }));
  EXPECT_TRUE(port->close());
  EXPECT_FALSE(closedInUse);
}

TEST_F(SerialPortConcurrency, APortDroppedUnderSteadyTrafficGoes) {
  const Traffic traffic(pty);
  ASSERT_TRUE(opened());
  EXPECT_TRUE(runUntil([&] { return !delegate->received.isEmpty(); }));
  const std::weak_ptr<SerialPort> weak = port;
  bench.allSerialPortsInfo.clear();
  port.reset();
  EXPECT_TRUE(waitFor([&] { return bench.mainQueue.runAll() == 0 && weak.expired(); }));
  EXPECT_TRUE(waitFor([&] { return bench.terminal.count(Call::Close) == 1; }));
}

class SerialPortHammering : public testing::TestWithParam<unsigned> {
 protected:
  unsigned chance(unsigned of) { return static_cast<unsigned>(random() % of); }

  /// One port from its making to its end, under everything that can happen to it.
  void live() {
    auto pty = std::make_unique<Pty>();
    auto traffic = std::make_unique<Traffic>(*pty);
    auto port = bench.port("usbport-test", pty->path());
    const auto delegate = std::make_shared<RecordingDelegate>();
    port->setDelegate(delegate);
    const int closedBefore = bench.terminal.count(Call::Unlock);
    delegate->atEvent = [&](const QString &event, const SerialPortDelegate::Port &told) {
      if (chance(6) != 0) return;
      if (event == u"closed" || event == u"removed") {
        told->open();
      } else {
        told->close();
      }
    };
    bool plugged = true;
    for (int step = 0; step < 12; ++step) {
      switch (chance(plugged ? 9 : 7)) {
        case 0:
        case 1:
        case 2:
          port->open();
          break;
        case 3:
          port->close();
          break;
        case 4:
          if (port->isOpen()) port->sendData("0123456789");
          break;
        case 5:
          bench.mainQueue.runAll();
          break;
        case 6:
          bench.terminal.setPinsOfLine(chance(2) != 0 ? std::optional<int>(Pin::cts) : std::nullopt);
          break;
        case 7:
          port->setUsesRTSCTSFlowControl(!port->usesRTSCTSFlowControl());
          break;
        case 8:
          if (chance(3) != 0) break;
          traffic.reset();
          pty->unplug();
          plugged = false;
          break;
      }
    }
    const bool isDropped = chance(4) == 0;
    if (!isDropped) {
      delegate->atEvent = nullptr;
      port->close();
      EXPECT_TRUE(waitFor([&] {
        bench.mainQueue.runAll();
        return delegate->events.count("closed") == bench.terminal.count(Call::Unlock) - closedBefore;
      })) << delegate->events.join(u' ').toStdString();
      EXPECT_LE(delegate->events.count("opened"), delegate->events.count("closed"));
      EXPECT_FALSE(port->isOpen());
    }
    delegate->atEvent = nullptr;
    const std::weak_ptr<SerialPort> weak = port;
    bench.allSerialPortsInfo.clear();
    port.reset();
    EXPECT_TRUE(waitFor([&] {
      bench.mainQueue.runAll();
      return weak.expired();
    }));
    // The last reference may have been a loop's, whose thread then still closes the terminal. That must not
    // be counted in the next life. Whatever could be opened was tried to be locked.
    EXPECT_TRUE(
        waitFor([&] { return bench.terminal.count(Call::Lock) == bench.terminal.count(Call::Close); }));
    bench.terminal.setPinsOfLine(std::nullopt);
  }

  std::minstd_rand random{GetParam()};
  const std::size_t descriptorsBefore = openDescriptors();
  SerialBench<> bench;
};

INSTANTIATE_TEST_SUITE_P(Seeds, SerialPortHammering, testing::Values(1u, 22u, 333u, 4444u));

TEST_P(SerialPortHammering, ManyLivesOfAPortLoseNothingAndLeaveNothing) {
  for (int life = 0; life < 100 && !HasFailure(); ++life) live();
  EXPECT_TRUE(waitFor([&] { return openDescriptors() == descriptorsBefore; }))
      << openDescriptors() << " descriptors, before " << descriptorsBefore;
}

}  // namespace
}  // namespace tavril
