#include "serial/LineSession.h"
#include "tests/gui/GuiBench.h"
#include "tests/support/ProcessCounts.h"
#include "tests/support/Pty.h"

#include <QTimer>

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <ctime>
#include <random>
#include <thread>

#include <fcntl.h>
#include <poll.h>

namespace tavril {
namespace {

using namespace std::chrono_literals;

/// A device that sends random bytes at a megabyte a second, or as fast as the kernel takes them, and drops
/// what it is sent.
class Flood {
 public:
  explicit Flood(const Pty &pty) : pty_(pty), thread_([this] { run(); }) {}
  ~Flood() { stop(); }
  void stop() {
    stopping_ = true;
    if (thread_.joinable()) thread_.join();
  }
  long sent() const { return sent_; }

 private:
  static constexpr long bytesPerSecond = 1'000'000;

  void run() {
    ::fcntl(pty_.master(), F_SETFL, O_NONBLOCK);
    std::mt19937 random(1);
    const auto begin = std::chrono::steady_clock::now();
    while (!stopping_) {
      const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - begin;
      const bool due = static_cast<double>(wanted_) < elapsed.count() * bytesPerSecond;
      pollfd ready{pty_.master(), static_cast<short>(due ? POLLIN | POLLOUT : POLLIN), 0};
      ::poll(&ready, 1, 1);
      if ((ready.revents & POLLIN) != 0) pty_.readPending();
      if ((ready.revents & POLLOUT) == 0) continue;
      QByteArray bytes(1000, '\0');
      for (char &byte : bytes) byte = static_cast<char>(random());
      bytes[0] = '\xFF';  // begins like a frame, which makes more work
      const ssize_t taken = ::write(pty_.master(), bytes.constData(), static_cast<std::size_t>(bytes.size()));
      wanted_ += bytes.size();
      if (taken > 0) sent_ += taken;
    }
  }

  const Pty &pty_;
  long wanted_ = 0;
  std::atomic<long> sent_ = 0;
  std::atomic<bool> stopping_ = false;
  std::thread thread_;
};

/// For how long the event loop was kept from a timer, at the worst: by the clock, and by the processor time
/// that the thread took meanwhile, in which other programs of the machine have no part.
class Responsiveness {
 public:
  using Milliseconds = std::chrono::milliseconds;

  Responsiveness() {
    QObject::connect(&timer_, &QTimer::timeout, &timer_, [this] {
      note(std::chrono::steady_clock::now().time_since_epoch(), lastTurn_, longest_);
      note(processorTime(), lastTime_, longestWork_);
    });
    timer_.start(10ms);
  }
  Milliseconds longest() const { return std::chrono::duration_cast<Milliseconds>(longest_); }
  Milliseconds longestWork() const { return std::chrono::duration_cast<Milliseconds>(longestWork_); }

 private:
  using Duration = std::chrono::nanoseconds;

  static Duration processorTime() {
    timespec time{};
    ::clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec);
  }
  static void note(Duration now, Duration &last, Duration &longest) {
    longest = std::max(longest, now - std::exchange(last, now));
  }

  QTimer timer_;
  Duration lastTurn_ = std::chrono::steady_clock::now().time_since_epoch();
  Duration lastTime_ = processorTime();
  Duration longest_{};
  Duration longestWork_{};
};

#if defined(TAVRIL_SANITIZES_ADDRESS)
constexpr std::size_t bearableGrowth = 64u << 20;  // the sanitizer's own
constexpr auto bearableWork = 10s;
#else
constexpr std::size_t bearableGrowth = 8u << 20;
constexpr auto bearableWork = 2s;
#endif

// TAVRIL_FLOOD_SECONDS: for how long.
TEST_F(GuiBench, AFloodOfRandomBytesLeavesTheEditorResponsiveAndItsMemoryFlat) {
  bool isNumber = false;
  int seconds = qEnvironmentVariableIntValue("TAVRIL_FLOOD_SECONDS", &isNumber);
  if (!isNumber) seconds = 6;
  log.stopKeeping();
  connectToServo();
  application->serialPort()->close();

  const Pty pty;
  application->serialPort()->setPath(pty.path());
  application->serialFormat();
  Flood flood(pty);
  const Responsiveness responsiveness;
  const auto passed = [begin = std::chrono::steady_clock::now()] {
    return std::chrono::steady_clock::now() - begin;
  };
  // A sixth of the time to come to rest; then an alert is up for a third, and the rest is plain.
  EXPECT_FALSE(waitFor([] { return false; }, 1000ms * seconds / 6));
  const std::size_t before = process::residentBytes();
  std::size_t most = before;
  const auto watch = [&] {
    most = std::max(most, process::residentBytes());
    return false;
  };
  {
    const QtMainQueue::Hold alertIsUp(mainQueue);
    const int reads = terminal.count(Call::Read);
    waitFor(watch, 1000ms * seconds / 3);
    EXPECT_LE(terminal.count(Call::Read) - reads, LineSession::backpressureSlots)
        << "the alert did not hold the reads";
  }
  waitFor([&] { return watch() || passed() >= 1000ms * seconds; }, 1000ms * seconds);

  // In the midst of it the editor does as it is told.
  controller().LabelTouchEvent(QStringLiteral("capture"));
  EXPECT_TRUE(waitFor([this] { return textOf("TXcmd").contains(u"ff 4 97 fe"); }));
  flood.stop();
  std::printf(
      "%d s: %ld kB sent, %d reads, the event loop was kept for %ld ms at the most, %ld ms of these at work, "
      "memory grew by "
      "%zu kB\n",
      seconds, flood.sent() / 1000, terminal.count(Call::Read),
      static_cast<long>(responsiveness.longest().count()),
      static_cast<long>(responsiveness.longestWork().count()), (most - before) / 1024);
  EXPECT_GT(flood.sent(), 11'520L * seconds) << "less than a line of 115200 baud brings is no flood";
  EXPECT_LT(responsiveness.longestWork(), bearableWork);
  EXPECT_LE(most - before, bearableGrowth);
  EXPECT_TRUE(application->serialPort()->close());
}

}  // namespace
}  // namespace tavril
