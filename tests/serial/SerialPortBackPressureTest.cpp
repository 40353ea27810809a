#include "serial/LineSession.h"
#include "tests/support/ManualBackground.h"
#include "tests/support/MemoryTerminal.h"
#include "tests/support/SerialBench.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <thread>

#include <fcntl.h>
#include <poll.h>

namespace tavril {
namespace {

constexpr std::size_t backpressureSlots = LineSession::backpressureSlots;

/// 8 MiB in which every place can be told from its neighbours.
QByteArray flood() {
  QByteArray bytes(8 << 20, '\0');
  for (qsizetype i = 0; i < bytes.size(); ++i) bytes[i] = static_cast<char>(i * 7 + (i >> 8) * 13);
  return bytes;
}

TEST(SerialPortBackPressure, BytesThatComeWhileTheMainThreadIsHeldWaitInTheKernelAndNoneIsLost) {
  const Pty pty;
  SerialBench<> bench;
  const auto port = bench.port("usbport-test", pty.path());
  const auto delegate = std::make_shared<RecordingDelegate>();
  port->setDelegate(delegate);
  ASSERT_TRUE(port->open());

  const QByteArray bytes = flood();
  qsizetype sent = 0;
  const auto send = [&] {
    const auto count = static_cast<std::size_t>(std::min<qsizetype>(4096, bytes.size() - sent));
    const ssize_t taken = ::write(pty.master(), bytes.constData() + sent, count);
    if (taken > 0) sent += taken;
    return taken > 0;
  };
  ::fcntl(pty.master(), F_SETFL, O_NONBLOCK);
  // Nobody runs the main queue. The device goes on until its bytes have been refused for a while.
  pollfd writable{pty.master(), POLLOUT, 0};
  bool heldBack = false;
  while (!heldBack && sent < bytes.size()) {
    if (send()) continue;
    heldBack = ::poll(&writable, 1, 300) == 0 && bench.mainQueue.pending() > backpressureSlots;
  }
  EXPECT_TRUE(heldBack) << "nothing has held the device back";
  EXPECT_EQ(bench.mainQueue.pending(), backpressureSlots + 1) << "the reads, and the opening";

  ::fcntl(pty.master(), F_SETFL, 0);
  std::thread device([&] {
    while (sent < bytes.size() && send()) {
    }
  });
  ASSERT_TRUE(bench.mainQueue.runUntil([&] { return delegate->received.size() == bytes.size(); }));
  device.join();
  EXPECT_TRUE(delegate->received == bytes) << "every byte, in order";
  for (const QByteArray &delivery : delegate->deliveries) ASSERT_LE(delivery.size(), 1024);
  EXPECT_TRUE(port->close());
}

class BackPressureOnBench : public testing::Test {
 protected:
  BackPressureOnBench() {
    port->setDelegate(delegate);
    EXPECT_TRUE(port->open());
    bench.mainQueue.runAll();
    delegate->events.clear();
    bench.terminal.setPinsOfLine(0);
    bench.terminal.fail(Call::Pins, EINVAL);
  }
  ~BackPressureOnBench() override {
    bench.terminal.heal(Call::Pins);
    port->close();
  }
  /// On a thread of its own, where the poller lives.
  void tick(int times) {
    std::thread poller([&] {
      for (int i = 0; i < times; ++i) bench.background.tick();
    });
    poller.join();
  }
  Pty pty;
  SerialBench<ManualBackground> bench;
  std::shared_ptr<SerialPort> port = bench.port("usbport-test", pty.path());
  std::shared_ptr<RecordingDelegate> delegate = std::make_shared<RecordingDelegate>();
};

TEST_F(BackPressureOnBench, AFailingPollIsToldEachTimeButDoesNotFillAMainQueueThatIsHeld) {
  tick(2);
  bench.mainQueue.runAll();
  EXPECT_EQ(delegate->events.count("error 22"), 2);

  const int polls = bench.terminal.count(Call::Pins);
  tick(5000);
  EXPECT_EQ(bench.mainQueue.pending(), backpressureSlots);
  EXPECT_EQ(bench.terminal.count(Call::Pins) - polls, static_cast<int>(backpressureSlots))
      << "what could not be told is not even asked";
  bench.mainQueue.runAll();
  EXPECT_EQ(delegate->events.count("error 22"), static_cast<int>(backpressureSlots) + 2);
  tick(1);
  bench.mainQueue.runAll();
  EXPECT_EQ(delegate->events.count("error 22"), static_cast<int>(backpressureSlots) + 3);
}

TEST_F(BackPressureOnBench, EachOpeningHasPlacesOfItsOwn) {
  tick(2000);
  bench.terminal.heal(Call::Pins);
  ASSERT_TRUE(port->close());
  ASSERT_TRUE(port->open());
  bench.terminal.fail(Call::Pins, EINVAL);
  tick(1);
  EXPECT_EQ(bench.mainQueue.pending(), backpressureSlots + 2) << "the opening, and another error";
}

}  // namespace
}  // namespace tavril
