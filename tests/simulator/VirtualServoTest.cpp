#include "simulator/VirtualServo.h"
#include "tests/simulator/SlaveTerminal.h"
#include "tests/support/WaitFor.h"

#include <gtest/gtest.h>

#include <atomic>
#include <condition_variable>
#include <ctime>
#include <mutex>
#include <semaphore>
#include <set>
#include <utility>

#include <sys/ioctl.h>
#include <termios.h>

namespace tavril::simulator {
namespace {

using namespace std::chrono_literals;

const Bytes detect{0xFF, 0x04, 0x90, 0xFE};
const Bytes detected{0xFF, 0x05, 0x90, 0x01, 0xFE};

/// Lines from the server's thread, to be waited for.
class LineCollector {
 public:
  void add(const QString &line) {
    const std::lock_guard lock(mutex_);
    lines_.insert(line);
    came_.notify_all();
  }
  /// False when the line does not come.
  bool waitFor(const QString &line) {
    std::unique_lock lock(mutex_);
    return came_.wait_for(lock, 60s, [&] { return lines_.count(line) > 0; });
  }

 private:
  std::mutex mutex_;
  std::condition_variable came_;
  std::set<QString> lines_;
};

TEST(VirtualServo, AnswersOverARealTerminal) {
  VirtualServo servo;
  ASSERT_TRUE(servo.start());
  const SlaveTerminal host(servo.path());
  ASSERT_TRUE(host.isOpen());
  EXPECT_EQ(host.exchange(detect, 5), detected);
  EXPECT_EQ(host.exchange({0xFF, 0x07, 0x92, 0x08, 0x01, 0x2C, 0xFE}, 5),
            (Bytes{0xFF, 0x05, 0x92, 0x08, 0xFE}));
  EXPECT_EQ(host.exchange({0xFF, 0x05, 0x91, 0x08, 0xFE}, 7),
            (Bytes{0xFF, 0x07, 0x91, 0x08, 0x01, 0x2C, 0xFE}));
  EXPECT_EQ(servo.framesSeen(), 3);
}

/// Whether others are kept out. Only the superuser can look when they are.
bool isExclusive(const QString &path) {
  const SlaveTerminal probe(path);
  int flag = 1;
  return !probe.isOpen() || ::ioctl(probe.descriptor(), TIOCGEXCL, &flag) != 0 || flag != 0;
}

TEST(VirtualServo, TheExclusiveModeThatAClientHasLeftBehindIsGivenBack) {
  VirtualServo servo;
  ASSERT_TRUE(servo.start());
  {
    const SlaveTerminal killed(servo.path());
    ASSERT_EQ(::ioctl(killed.descriptor(), TIOCEXCL), 0);
  }
  EXPECT_TRUE(tavril::waitFor([&] { return !isExclusive(servo.path()); }));
}

TEST(VirtualServo, TheExclusiveModeOfAClientIsKeptWhileItHasTheTerminal) {
  VirtualServo servo;
  ASSERT_TRUE(servo.start());
  const SlaveTerminal client(servo.path());
  {
    const SlaveTerminal other(servo.path());
    ASSERT_EQ(::ioctl(client.descriptor(), TIOCEXCL), 0);
  }
  // Once this is answered the server has seen the other go.
  EXPECT_EQ(client.exchange(detect, 5), detected);
  int flag = 0;
  EXPECT_EQ(::ioctl(client.descriptor(), TIOCGEXCL, &flag), 0);
  EXPECT_EQ(flag, 1);
}

TEST(VirtualServo, ATerminalThatNobodyHasSetUpIsRawAndWithoutEcho) {
  VirtualServo servo;
  ASSERT_TRUE(servo.start());
  const SlaveTerminal host(servo.path());
  termios attributes{};
  ASSERT_EQ(::tcgetattr(host.descriptor(), &attributes), 0);
  EXPECT_EQ(attributes.c_lflag & static_cast<tcflag_t>(ECHO | ICANON | ISIG | IEXTEN), 0U);
  EXPECT_EQ(attributes.c_oflag & static_cast<tcflag_t>(OPOST), 0U);
  // Line feed, carriage return, XOFF and interrupt go through unchanged, and come back so.
  for (const std::uint8_t code : Bytes{0x0A, 0x0D, 0x13, 0x03}) {
    EXPECT_EQ(host.exchange({0xFF, 0x05, 0xF9, code, 0xFE}, 5), (Bytes{0xFF, 0x05, 0xF9, code, 0xFE}));
  }
}

TEST(VirtualServo, ClientsMayComeAndGo) {
  VirtualServo servo;
  ASSERT_TRUE(servo.start());
  for (int i = 0; i < 5; ++i) {
    const SlaveTerminal host(servo.path());
    ASSERT_TRUE(host.isOpen());
    EXPECT_EQ(host.exchange(detect, 5), detected);
  }
}

TEST(VirtualServo, AFrameThatIsNeverFinishedIsReportedByItself) {
  VirtualServo servo;
  ASSERT_TRUE(servo.start());
  const SlaveTerminal host(servo.path());
  ASSERT_TRUE(host.write({0xFF, 0x05, 0x91}));
  EXPECT_EQ(host.read(5), (Bytes{0xFF, 0x05, 0xF9, 0x01, 0xFE}));
}

TEST(VirtualServo, AFrameThatWaitsInTheTerminalIsNotLateWhenTheServerIs) {
  std::binary_semaphore held(0);
  std::binary_semaphore released(0);
  Options options;
  bool isFirst = true;
  options.log = [&](const QString &) {
    if (!std::exchange(isFirst, false)) return;
    held.release();
    released.acquire();
  };
  VirtualServo servo(options);
  ASSERT_TRUE(servo.start());
  const SlaveTerminal host(servo.path());
  Bytes sent = detect;
  sent.resize(50, 0x00);
  sent.insert(sent.end(), {0xFF, 0x05, 0x91});
  ASSERT_TRUE(host.write(sent));
  const bool isHeld = held.try_acquire_for(20s);
  EXPECT_TRUE(host.write({0x01, 0xFE}));
  // Nothing can come meanwhile; it is the server's time that passes.
  ::poll(nullptr, 0, 2 * static_cast<int>(FrameEndpoint::frameTimeout.count()));
  released.release();
  ASSERT_TRUE(isHeld);
  EXPECT_EQ(host.read(12), (Bytes{0xFF, 0x05, 0x90, 0x01, 0xFE, 0xFF, 0x07, 0x91, 0x01, 0x00, 0x01, 0xFE}));
}

TEST(VirtualServo, UnplugHangsTheLineUp) {
  VirtualServo servo;
  ASSERT_TRUE(servo.start());
  const SlaveTerminal host(servo.path());
  ASSERT_EQ(host.exchange(detect, 5), detected);
  servo.unplug();
  EXPECT_FALSE(servo.serving());
  EXPECT_TRUE(host.hungUp());
  std::uint8_t byte = 0;
  EXPECT_EQ(::read(host.descriptor(), &byte, 1), 0);
  errno = 0;
  EXPECT_EQ(::write(host.descriptor(), &byte, 1), -1);
  EXPECT_EQ(errno, EIO);
  termios attributes{};
  errno = 0;
  EXPECT_EQ(::tcgetattr(host.descriptor(), &attributes), -1);
  EXPECT_EQ(errno, EIO);
}

TEST(VirtualServo, PluggedInAgainItStillHasItsSettings) {
  VirtualServo servo;
  ASSERT_TRUE(servo.start());
  {
    const SlaveTerminal host(servo.path());
    ASSERT_EQ(host.exchange({0xFF, 0x07, 0x92, 0x01, 0x00, 0x2A, 0xFE}, 5),
              (Bytes{0xFF, 0x05, 0x92, 0x01, 0xFE}));
  }
  servo.unplug();
  ASSERT_TRUE(servo.start());
  const SlaveTerminal host(servo.path());
  EXPECT_EQ(host.exchange({0xFF, 0x05, 0x91, 0x01, 0xFE}, 7),
            (Bytes{0xFF, 0x07, 0x91, 0x01, 0x00, 0x2A, 0xFE}));
}

TEST(VirtualServo, PullsItsOwnPlugAndTells) {
  std::mutex mutex;
  std::condition_variable told;
  bool unplugged = false;
  Options options{.unplugAfter = 2};
  options.unplugged = [&] {
    const std::lock_guard lock(mutex);
    unplugged = true;
    told.notify_all();
  };
  VirtualServo servo(options);
  ASSERT_TRUE(servo.start());
  const SlaveTerminal host(servo.path());
  EXPECT_EQ(host.exchange(detect, 5), detected);
  ASSERT_TRUE(host.writeDelivery(detect));
  EXPECT_TRUE(host.hungUp());
  std::unique_lock lock(mutex);
  EXPECT_TRUE(told.wait_for(lock, 20s, [&] { return unplugged; }));
  EXPECT_FALSE(servo.serving());
}

TEST(VirtualServo, MayBeUnpluggedFromItsLog) {
  VirtualServo *plugged = nullptr;
  Options options;
  options.log = [&](const QString &line) {
    if (line.contains(u"release the motor")) plugged->unplug();
  };
  VirtualServo servo(options);
  plugged = &servo;
  ASSERT_TRUE(servo.start());
  const SlaveTerminal host(servo.path());
  EXPECT_EQ(host.exchange(detect, 5), detected);
  ASSERT_TRUE(host.writeDelivery({0xFF, 0x04, 0x93, 0xFE}));
  EXPECT_TRUE(host.hungUp());
  servo.stop();
}

TEST(VirtualServo, StopsBeforeItWasStartedAndTwice) {
  VirtualServo servo;
  servo.stop();
  EXPECT_TRUE(servo.path().isEmpty());
  ASSERT_TRUE(servo.start());
  EXPECT_TRUE(servo.start()) << "serving already";
  servo.stop();
  servo.stop();
  EXPECT_FALSE(servo.serving());
}

TEST(VirtualServo, LogsTheWholeDelivery) {
  LineCollector lines;
  Options options;
  options.log = [&](const QString &line) { lines.add(line); };
  VirtualServo servo(options);
  ASSERT_TRUE(servo.start());
  const SlaveTerminal host(servo.path());
  ASSERT_EQ(host.exchange({0xFF, 0x05, 0x91, 0x01, 0xFE}, 7).size(), 7U);
  EXPECT_TRUE(lines.waitFor(QStringLiteral("-> FF 05 91 01 FE  read register 1  (50 bytes)")));
  EXPECT_TRUE(lines.waitFor(QStringLiteral("<- FF 07 91 01 00 01 FE  register 1 is 1")));
  ASSERT_TRUE(host.write({0xFF, 0x04, 0x93, 0xFE}));
  EXPECT_TRUE(lines.waitFor(QStringLiteral("-> FF 04 93 FE  release the motor  (4 bytes)")));
}

TEST(VirtualServo, SplitRepliesComeWhole) {
  VirtualServo servo({.splitSize = 2, .splitGap = 1ms});
  ASSERT_TRUE(servo.start());
  const SlaveTerminal host(servo.path());
  for (int i = 0; i < 3; ++i) EXPECT_EQ(host.exchange(detect, 5), detected);
}

TEST(VirtualServo, GluedRepliesComeInOrder) {
  VirtualServo servo({.glue = true});
  ASSERT_TRUE(servo.start());
  const SlaveTerminal host(servo.path());
  ASSERT_TRUE(host.writeDelivery(detect));
  ASSERT_TRUE(host.writeDelivery({0xFF, 0x04, 0x93, 0xFE}));
  EXPECT_EQ(host.read(9), (Bytes{0xFF, 0x05, 0x90, 0x01, 0xFE, 0xFF, 0x04, 0x93, 0xFE}));
}

TEST(VirtualServo, RepliesStandAtTheEndOfTheNoise) {
  VirtualServo servo({.noise = true, .seed = 5});
  ASSERT_TRUE(servo.start());
  const SlaveTerminal host(servo.path());
  for (int i = 0; i < 10; ++i) {
    ASSERT_TRUE(host.writeDelivery(detect));
    EXPECT_TRUE(host.readUntil(detected));
  }
}

TEST(VirtualServo, AtWirePaceAnExchangeTakesAtLeastItsBytes) {
  VirtualServo servo({.pace = true});
  ASSERT_TRUE(servo.start());
  const SlaveTerminal host(servo.path());
  const auto began = std::chrono::steady_clock::now();
  for (int i = 0; i < 5; ++i) ASSERT_EQ(host.exchange(detect, 5), detected);
  // 55 bytes at 86.8 us, five times; how much longer it takes is up to the machine.
  EXPECT_GE(std::chrono::steady_clock::now() - began, 5 * 55 * 86806ns);
}

TEST(VirtualServo, BytesThatNobodyReadsAreLostAndDoNotBlock) {
  LineCollector lines;
  std::atomic<std::size_t> replied = 0;
  std::atomic<std::size_t> lost = 0;
  Options options;
  options.log = [&](const QString &line) {
    if (line.contains(u"bytes lost, nobody reads")) {
      lost += line.section(u' ', 1, 1).toUInt();
    } else if (line.startsWith(u"<- ")) {
      replied += static_cast<std::size_t>(line.mid(3).section(QStringLiteral("  "), 0, 0).split(u' ').size());
    }
    lines.add(line);
  };
  VirtualServo servo(options);
  ASSERT_TRUE(servo.start());
  const SlaveTerminal host(servo.path());
  // Far more than any terminal keeps; a slow server is not given all of them.
  std::size_t commands = 0;
  for (; lost == 0 && commands < 100'000; ++commands) ASSERT_TRUE(host.writeAll(detect));
  // Bytes that nobody answers. Once the first is told, all replies are sent or lost, and once the second is,
  // they are told too.
  ASSERT_TRUE(host.writeAll({0x55}));
  ASSERT_TRUE(lines.waitFor(QStringLiteral("-> 55  stray  (1 bytes)")));
  ASSERT_TRUE(host.writeAll({0x66}));
  ASSERT_TRUE(lines.waitFor(QStringLiteral("-> 66  stray  (1 bytes)")));
  EXPECT_EQ(static_cast<std::size_t>(servo.framesSeen()), commands);
  EXPECT_EQ(replied, 5 * commands);
  EXPECT_GT(lost, 0U);
  const std::size_t kept = replied - lost;
  EXPECT_EQ(host.read(kept).size(), kept);
  EXPECT_EQ(host.exchange({0xFF, 0x05, 0xF9, 0x77, 0xFE}, 5), (Bytes{0xFF, 0x05, 0xF9, 0x77, 0xFE}));
}

TEST(VirtualServo, SleepsWhileThereIsNothingToDo) {
  VirtualServo servo;
  ASSERT_TRUE(servo.start());
  const SlaveTerminal host(servo.path());
  ASSERT_EQ(host.exchange(detect, 5), detected);
  // Nobody else computes in this process while this thread waits, so all time used is the server's.
  const std::clock_t before = std::clock();
  pollfd silence{host.descriptor(), POLLIN, 0};
  EXPECT_EQ(::poll(&silence, 1, 500), 0);
  EXPECT_LT(std::clock() - before, CLOCKS_PER_SEC / 5);
}

TEST(VirtualServo, SleepsThoughNoClientIsLeft) {
  VirtualServo servo;
  ASSERT_TRUE(servo.start());
  {
    const SlaveTerminal host(servo.path());
    ASSERT_EQ(host.exchange(detect, 5), detected);
  }
  const std::clock_t before = std::clock();
  ::poll(nullptr, 0, 500);
  EXPECT_LT(std::clock() - before, CLOCKS_PER_SEC / 5);
}

TEST(VirtualServo, TheModelMayBeSeenAndChangedWhileItServes) {
  VirtualServo servo;
  ASSERT_TRUE(servo.start());
  const SlaveTerminal host(servo.path());
  servo.withModel([](ServoModel &model) { model.write(1, 77); });
  EXPECT_EQ(host.exchange({0xFF, 0x05, 0x91, 0x01, 0xFE}, 7),
            (Bytes{0xFF, 0x07, 0x91, 0x01, 0x00, 0x4D, 0xFE}));
  ASSERT_EQ(host.exchange({0xFF, 0x06, 0x96, 0x03, 0x00, 0xFE}, 4), (Bytes{0xFF, 0x04, 0x96, 0xFE}));
  int position = 0;
  const auto deadline = std::chrono::steady_clock::now() + 20s;
  while (position != 0x300 && std::chrono::steady_clock::now() < deadline) {
    servo.withModel([&](ServoModel &model) { position = model.position(); });
  }
  EXPECT_EQ(position, 0x300);
}

TEST(VirtualServo, TheModelMayBePreparedBeforeTheStart) {
  VirtualServo servo;
  servo.withModel([](ServoModel &model) { model.write(1, 9); });
  ASSERT_TRUE(servo.start());
  const SlaveTerminal host(servo.path());
  EXPECT_EQ(host.exchange({0xFF, 0x05, 0x91, 0x01, 0xFE}, 7),
            (Bytes{0xFF, 0x07, 0x91, 0x01, 0x00, 0x09, 0xFE}));
}

TEST(VirtualServo, FaultsMayBeChangedWhileItServes) {
  VirtualServo servo;
  ASSERT_TRUE(servo.start());
  const SlaveTerminal host(servo.path());
  servo.withOptions([](Options &options) { options.servos = Options::Servos::None; });
  EXPECT_EQ(host.exchange(detect, 5), (Bytes{0xFF, 0x05, 0x90, 0x00, 0xFE}));
}

}  // namespace
}  // namespace tavril::simulator
