#include "app/AppDelegate.h"
#include "platform/linux/ThreadBackground.h"
#include "protocol/Function.h"
#include "protocol/RegisterCatalogue.h"
#include "simulator/FrameEndpoint.h"
#include "simulator/ServoModel.h"
#include "store/AlertErrorPresenter.h"
#include "store/StoreController.h"
#include "terminal/PosixTerminalCalls.h"
#include "tests/editor/EditorBench.h"
#include "tests/support/FakeDevices.h"
#include "tests/support/MemoryFiles.h"
#include "tests/support/MemoryTerminal.h"
#include "tests/support/ProcessCounts.h"
#include "tests/support/SerialBench.h"
#include "tests/support/Watchdog.h"

#include <gtest/gtest.h>

#include <random>

namespace tavril {
namespace {

using namespace std::chrono_literals;

/// Takes every notification at once and counts those that have been taken back.
class CountingNotifications final : public UserNotificationCenter {
 public:
  bool isAvailable() const override { return true; }
  void setDelegate(std::weak_ptr<UserNotificationCenterDelegate> delegate) override {
    delegate_ = std::move(delegate);
  }
  void deliver(const UserNotification &notification) override {
    ++delivered;
    if (const auto delegate = delegate_.lock()) delegate->didDeliverNotification(*this, notification);
  }
  void removeDeliveredNotification(const UserNotification &) override { ++removed; }

  int delivered = 0;
  int removed = 0;

 private:
  std::weak_ptr<UserNotificationCenterDelegate> delegate_;
};

/// Background work on a virtual clock: what repeats ticks on the clock's thread, all else has real threads.
class VirtualTimeBackground final : public Background {
 public:
  explicit VirtualTimeBackground(Timers &timers) : timers_(timers) {}

  void run(Job job) override { threads_.run(std::move(job)); }
  std::shared_ptr<RepeatingWork> repeat(std::chrono::milliseconds interval, Job tick) override {
    auto repeat = std::make_shared<Repeat>();
    repeat->timer = timers_.repeating(interval, tick);
    tick();
    return repeat;
  }
  std::shared_ptr<SerialQueue> serialQueue(const QString &label) override {
    return threads_.serialQueue(label);
  }

 private:
  struct Repeat final : RepeatingWork {
    void cancel() override { timer->stop(); }
    std::shared_ptr<Timer> timer;
  };

  Timers &timers_;
  // A queue's thread ends at once when it has nothing to do, so that none is left over from the last session.
  ThreadBackground threads_{std::chrono::milliseconds(0)};
};

/// Counts the alerts, and answers each with its first button.
class CountingAlert final : public ModalAlert {
 public:
  int run(const AlertContent &) override {
    ++count;
    return firstButton;
  }
  int count = 0;
};

class NoWait final : public BlockingWait {
 public:
  void wait(std::chrono::milliseconds) override {}
};

/// What must stay as it is, however long the program is used.
struct Holdings {
  std::size_t allocated = process::allocatedBytes();
  std::size_t resident = process::residentBytes();
  std::size_t descriptors = process::descriptors();
  std::size_t threads = process::threads();
  std::size_t timers = 0;
  std::size_t terminals = 0;
};

/// The editor's logic, the link and the serial layer in use, on a virtual clock and a terminal in memory,
/// with the virtual servo's bridge at its other end. Only the port's read loop has a thread of its own.
class Soak : public testing::Test {
 protected:
  Soak() {
    log.stopKeeping();
    terminal.atWrite = [this](const QByteArray &bytes) {
      endpoint.receive({reinterpret_cast<const std::uint8_t *>(bytes.constData()),
                        static_cast<std::size_t>(bytes.size())});
    };
    buildHelpTables(state, log);
    controller.viewDidLoad();
    devices.add(portName, portPath);
    application->applicationDidFinishLaunching();
  }
  ~Soak() override {
    if (application->serialPort()) application->serialPort()->setDelegate({});
    for (const auto &port : state.allSerialPortsInfo) port->close();
    application.reset();
    mainQueue.shutDown();
    state.SelectSerial.reset();
    state.allSerialPortsInfo.clear();
  }

  /// Replies are handed over one at a time, as a line at its pace would, until the servo has no more to say.
  void letTheServoAnswer() {
    while (true) {
      endpoint.advance(1ms);
      const auto delivery = endpoint.takeDelivery();
      if (!delivery) return;
      ++exchanges;
      terminal.give(QByteArray(reinterpret_cast<const char *>(delivery->data()),
                               static_cast<qsizetype>(delivery->size())));
      ASSERT_TRUE(mainQueue.runNext()) << "a reply was not delivered";
      endpoint.log().take();
    }
  }
  void connect() {
    application->serialFormat();
    ASSERT_TRUE(mainQueue.runNext()) << "the opening was not told";
    letTheServoAnswer();
    pass(1s);
    ASSERT_EQ(state.CanUseTavril, u"true");
    ASSERT_EQ(textOf(20).isEmpty(), false) << "the registers were not read";
  }
  void readAll() {
    controller.LabelTouchEvent(QStringLiteral("read"));
    letTheServoAnswer();
  }
  void drag() {
    state.TextMouseFlag = QStringLiteral("MouseDown");
    state.limitFlag = QStringLiteral("MouseIn");
    int position = model.position();
    for (int step = 0; step < 20; ++step) {
      position = std::clamp(position + static_cast<int>(random() % 41) - 20, 0, 1023);
      controller.FunctionCMD()->SetServoPosition(position);
      letTheServoAnswer();
      pass(20ms);
    }
    state.TextMouseFlag.clear();
    state.limitFlag.clear();
    endpoint.advance(2s);
    controller.LabelTouchEvent(QStringLiteral("capture"));
    letTheServoAnswer();
    ASSERT_EQ(state.returnSTR, QString::number(position)) << "the servo is not where it was dragged to";
    pass(10ms);
    ASSERT_EQ(view["angle"].text(), QString::number(position));
  }
  void writeAll() {
    controller.LabelTouchEvent(QStringLiteral("detailset"));
    letTheServoAnswer();
  }
  void replug() {
    const int alertsBefore = alert.count;
    terminal.unplug();
    pass(10ms);  // a poll
    mainQueue.runAll();
    ASSERT_EQ(application->serialPort(), nullptr) << "the removal was not noticed";
    ASSERT_EQ(alert.count, alertsBefore + 1) << "the removal was not told once";
    devices.pullOut(portPath);
    mainQueue.runAll();
    pass(5s);
    terminal.plugIn();
    endpoint.plugIn();
    devices.plugIn(portName, portPath);
    mainQueue.runAll();
    ASSERT_EQ(alert.count, alertsBefore + 2) << "the port that came was not told once";
    ASSERT_EQ(state.allSerialPortsInfo.size(), 1u);
    connect();
  }
  void pass(std::chrono::milliseconds time) { timers.advance(time); }
  QString textOf(int number) { return view.element(findRegister(number)->valueKey).text(); }

  /// At rest and connected, so that it is always the same that is looked at.
  Holdings holdings() {
    pass(10s);
    mainQueue.runAll();
    // The last session's reader may be about to end.
    awaitThreads(threadsAtRest);
    Holdings now;
    now.timers = timers.running();
    now.terminals = terminal.openDescriptors();
    return now;
  }
  static void awaitThreads(std::size_t count) {
    const auto deadline = std::chrono::steady_clock::now() + 10s;
    while (count > 0 && process::threads() > count && std::chrono::steady_clock::now() < deadline) {
      std::this_thread::yield();
    }
  }

  const QString portName = QStringLiteral("usbport-soak");
  const QString portPath = QStringLiteral("/dev/soak");
  std::mt19937 random{1};
  simulator::ServoModel model;
  simulator::FrameEndpoint endpoint{model, {}};
  MemoryTerminal terminal;
  RecordingLog log;
  ManualMainQueue mainQueue;
  ManualTimers timers;
  NoWait wait;
  CountingAlert alert;
  KeyTable strings;
  NotificationCenter notifications;
  CountingNotifications userNotifications;
  Desktop desktop{mainQueue, timers, wait, alert, strings, notifications, &userNotifications, log};
  MemoryFiles files;
  AlertErrorPresenter errors{alert};
  StoreController store{files, desktop, errors};
  FakeDevices devices;
  RecordingExit processExit;
  SharedState state;
  PortRegistry ports{state.allSerialPortsInfo};
  SerialEnvironment serial{mainQueue, background, terminal, devices, notifications, processExit, log, ports};
  VirtualTimeBackground background{timers};
  std::shared_ptr<AppDelegate> application = AppDelegate::make(state, desktop, serial, store);
  FakeView view;
  ViewController controller{state, *application, view, desktop};
  long exchanges = 0;
  std::size_t threadsAtRest = 0;
};

#if defined(TAVRIL_SANITIZES_ADDRESS) || defined(TAVRIL_SANITIZES_THREAD)
constexpr double usualDays = 0.1;
constexpr std::size_t bearableGrowth = 48u << 20;  // the sanitizer's own
#else
constexpr double usualDays = 1;
constexpr std::size_t bearableGrowth = 2u << 20;
#endif

// TAVRIL_SOAK_DAYS: for how long.
TEST_F(Soak, NothingGrowsWhileTheProgramIsUsed) {
  bool isNumber = false;
  double days = qEnvironmentVariable("TAVRIL_SOAK_DAYS").toDouble(&isNumber);
  if (!isNumber) days = usualDays;
  const long minutes = std::max(120L, static_cast<long>(days * 24 * 60));

  Watchdog watchdog(60s);
  connect();
  Holdings before;
  long replugs = 0;
  for (long minute = 0; minute < minutes; ++minute) {
    ASSERT_FALSE(HasFailure()) << "in minute " << minute;
    watchdog.pat("minute " + std::to_string(minute));
    if (minute % 2 == 0) drag();
    if (minute % 5 == 1) readAll();
    if (minute % 30 == 2) writeAll();
    if (minute % 20 == 3) {
      replug();
      ++replugs;
    }
    pass(std::chrono::minutes(minute + 1) - timers.now());
    // The first hour is for all that is made once.
    if (minute == 60) {
      threadsAtRest = process::threads();
      before = holdings();
    }
  }
  const Holdings after = holdings();
  std::printf(
      "%.1f days: %ld exchanges, %ld replugs, %d notifications\n"
      "allocated %zu kB before, %zu kB after; resident %zu kB before, %zu kB after\n"
      "descriptors %zu, %zu; threads %zu, %zu; timers %zu, %zu\n",
      static_cast<double>(minutes) / (24 * 60), exchanges, replugs, userNotifications.delivered,
      before.allocated / 1024, after.allocated / 1024, before.resident / 1024, after.resident / 1024,
      before.descriptors, after.descriptors, before.threads, after.threads, before.timers, after.timers);
  EXPECT_EQ(after.descriptors, before.descriptors);
  EXPECT_LE(after.threads, before.threads);
  EXPECT_EQ(after.timers, before.timers);
  EXPECT_EQ(after.terminals, before.terminals);
  EXPECT_LE(after.allocated, before.allocated + (256u << 10));
  EXPECT_LE(after.resident, before.resident + bearableGrowth);
  EXPECT_EQ(userNotifications.delivered, 2 * replugs);
  EXPECT_EQ(userNotifications.removed, userNotifications.delivered);
}

}  // namespace
}  // namespace tavril
