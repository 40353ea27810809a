#include "serial/line/SerialLine.h"
#include "tests/support/SerialBench.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <future>
#include <memory>
#include <vector>

namespace tavril {
namespace {

using namespace std::chrono_literals;
using End = servo::Received::End;

class SerialLineOnPty : public testing::Test {
 protected:
  ~SerialLineOnPty() override {
    port->setDelegate({});
    port->close();
  }

  /// What comes of sending two bytes while the main queue runs and this is done.
  servo::Received request(servo::Time timeout, std::size_t expected, const std::function<void()> &meanwhile) {
    auto working = std::async(std::launch::async, [&] {
      const servo::Received received =
          line->request(std::vector<std::uint8_t>{0x01, 0x02}, timeout,
                        [expected](wire::Bytes bytes) { return bytes.size() == expected; });
      bench.mainQueue.async([this] { isDone = true; });
      return received;
    });
    EXPECT_EQ(pty.read(2), QByteArray("\x01\x02", 2));
    meanwhile();
    EXPECT_TRUE(bench.mainQueue.runUntil([this] { return isDone; }));
    return working.get();
  }

  SerialBench<> bench;
  Pty pty;
  std::shared_ptr<SerialPort> port = bench.port(QStringLiteral("usbport-test"), pty.path());
  std::shared_ptr<SerialLine> line = SerialLine::open(bench.background, bench.log, port);
  bool isDone = false;
};

TEST_F(SerialLineOnPty, StampsWhatIsSentAndWhatComes) {
  const servo::Time before = line->now();
  const servo::Received received = request(60s, 3, [this] { pty.write("abc"); });
  EXPECT_EQ(received.end, End::Accepted);
  EXPECT_EQ(received.bytes, (std::vector<std::uint8_t>{'a', 'b', 'c'}));
  EXPECT_LE(before, received.sentAt);
  EXPECT_LE(received.sentAt, received.arrivedAt);
  EXPECT_LE(received.arrivedAt, line->now());
}

TEST_F(SerialLineOnPty, TellsWhatCameBeforeTheTimeWasOver) {
  const servo::Received received = request(2s, 3, [this] { pty.write("ab"); });
  EXPECT_EQ(received.end, End::TimedOut);
  EXPECT_EQ(received.bytes, (std::vector<std::uint8_t>{'a', 'b'}));
}

TEST_F(SerialLineOnPty, GoesOnAfterItWasCancelledAndResumed) {
  EXPECT_EQ(request(60s, 3, [this] { line->cancel(); }).end, End::Cancelled);
  EXPECT_EQ(line->request({}, 60s, [](wire::Bytes) { return true; }).end, End::Cancelled);
  EXPECT_EQ(line->pause(60s), End::Cancelled);
  line->resume();
  EXPECT_EQ(line->pause(1ms), End::TimedOut);
}

TEST_F(SerialLineOnPty, IsGoneWithItsPort) {
  EXPECT_EQ(request(60s, 3, [this] { line->serialPortWasRemovedFromSystem(port); }).end, End::Gone);
  EXPECT_EQ(line->pause(60s), End::Gone);
}

TEST_F(SerialLineOnPty, TellsWhyItsPortCouldNotBeOpened) {
  port->close();
  bench.terminal.fail(Call::Lock, EWOULDBLOCK);
  const auto other = SerialLine::open(bench.background, bench.log, port);
  EXPECT_FALSE(port->isOpen());
  EXPECT_TRUE(other->lastError() || bench.mainQueue.runUntil([&] { return other->lastError() != nullptr; }));
}

}  // namespace
}  // namespace tavril
