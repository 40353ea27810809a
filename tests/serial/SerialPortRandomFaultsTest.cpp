#include "platform/Log.h"
#include "tests/serial/AccountingCalls.h"
#include "tests/serial/SystemCallFaults.h"
#include "tests/support/ProcessCounts.h"
#include "tests/support/SerialBench.h"
#include "tests/support/Watchdog.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <optional>
#include <random>
#include <thread>

#include <sys/ioctl.h>

namespace tavril {
namespace {

using namespace std::chrono_literals;

#ifdef TAVRIL_SANITIZES_THREAD
constexpr std::uint32_t usualRuns = 500;
#else
constexpr std::uint32_t usualRuns = 10'000;
#endif

std::uint32_t fromEnvironment(const char *name, std::uint32_t usual) {
  bool isNumber = false;
  const uint value = qEnvironmentVariable(name).toUInt(&isNumber);
  return isNumber ? value : usual;
}

/// Over all runs.
struct Totals {
  long failedWaits = 0;
  long failedWaitsTold = 0;
};

/// One port on a real terminal and real threads, with the system calls beneath failing at random.
class FaultyUse {
 public:
  FaultyUse(const Pty &pty, std::uint32_t seed, SystemCallFaults &faults)
      : pty_(pty), random_(seed), faults_(faults) {
    static constexpr std::array probabilities{0.0, 0.02, 0.05, 0.1, 0.2, 0.3, 0.5, 0.7};
    faults_.arm(seed, probabilities[random_() % probabilities.size()]);
    const RegistryHandle device = devices_.handleOf(QStringLiteral("usbport-test"), pty.path());
    port_ = SerialPort::initWithDevice(environment_, device);
    devices_.release(device);
    port_->setDelegate(delegate_);
  }
  ~FaultyUse() {
    port_.reset();
    mainQueue_.shutDown();
    listed_.clear();
  }
  FaultyUse(const FaultyUse &) = delete;
  FaultyUse &operator=(const FaultyUse &) = delete;

  void useThePort() {
    for (auto steps = 5 + random_() % 12; steps > 0; --steps) takeAStep();
    faults_.disarm();
    EXPECT_TRUE(port_->close()) << "without faults a port can be closed, whatever it has been through";
    EXPECT_FALSE(port_->isOpen());
    endTheThreads();
    mainQueue_.runAll();
  }

  void expectNothingIsLost(Totals &totals) {
    const AccountingCalls::Books books = calls_.books();
    EXPECT_EQ(delegate_->events.count("opened"), books.openings) << "each opening is told once";
    EXPECT_EQ(delegate_->events.count("closed"), books.openings) << "each closing is told once";
    EXPECT_LE(opensThatFailed_, books.failedOpenings);
    EXPECT_EQ(sendsThatFailed_, books.failedWrites);

    // A read may be told after one of the next opening, for two threads do the telling; none may be missing.
    auto told = delegate_->deliveries;
    auto read = books.reads;
    std::ranges::sort(told);
    std::ranges::sort(read);
    EXPECT_EQ(told, read) << "each read is told once, as one delivery";
    EXPECT_EQ(pty_.readPending(), books.written) << "what was written is what the device gets";
    EXPECT_TRUE(books.written.endsWith(lastSent_));

    const auto errors = static_cast<int>(delegate_->errors.size());
    const int certain = books.failedOpenings + books.failedWrites;
    EXPECT_GE(errors, certain + books.failedWaits + books.failedPolls - 2 * books.openings)
        << "each error is told, but for the last of each thread, which may see the port closing";
    EXPECT_LE(errors, certain + books.failedWaits + books.failedPolls + books.otherFailures +
                          sendsThatMayHaveBeenCutOff_)
        << "no error is made up";
    const auto waitsTold =
        std::ranges::count(delegate_->errors, ENOMEM, [](const Error &error) { return error.code; });
    EXPECT_LE(waitsTold, books.failedWaits);
    totals.failedWaits += books.failedWaits;
    totals.failedWaitsTold += waitsTold;
    const bool wasGone =
        std::ranges::any_of(delegate_->errors, [](auto &error) { return error.code == ENXIO; });
    EXPECT_TRUE(wasGone || delegate_->events.count("removed") == 0);
  }

 private:
  QByteArray someBytes() {
    QByteArray bytes(static_cast<qsizetype>(1 + random_() % 200), '\0');
    for (char &byte : bytes) byte = static_cast<char>(random_() & 0xFF);
    return bytes;
  }
  void open() {
    if (!port_->isOpen() && !port_->open()) ++opensThatFailed_;
  }
  void send() {
    const QByteArray bytes = someBytes();
    const int before = calls_.books().failedWrites;
    if (port_->sendData(bytes)) {
      lastSent_ = bytes;
    } else {
      lastSent_.clear();
      // A port that was closed before writes nothing, and there is nothing to tell then; one that is closed
      // in between, because its device has gone, tells that it was.
      const int failed = calls_.books().failedWrites - before;
      sendsThatFailed_ += failed;
      if (failed == 0) ++sendsThatMayHaveBeenCutOff_;
    }
  }
  void takeAStep() {
    switch (random_() % 12) {
      case 0:
      case 1:
      case 2:
        open();
        return letTheThreadsAct(1);  // the first poll
      case 3:
      case 4:
        return send();
      case 5:
      case 6:
        pty_.write(someBytes());
        return letTheThreadsAct(2);  // a wait that ends, and a read
      case 7:
      case 8:
        mainQueue_.runAll();
        return;
      case 9:
        return port_->setBaudRate(random_() % 2 == 0 ? 115200 : 9600);
      case 10:
        return random_() % 2 == 0 ? port_->setRTS(!port_->RTS())
                                  : port_->setUsesRTSCTSFlowControl(!port_->usesRTSCTSFlowControl());
      default:
        EXPECT_TRUE(port_->close());
    }
  }
  /// Until they have made some calls. That takes microseconds, unless they pause after a fault; the bound is
  /// for those, and what they have done by then does not matter.
  void letTheThreadsAct(int calls) {
    if (port_->isOpen()) calls_.awaitCallsOfOthers(calls, 1ms);
  }
  /// The threads may have something to say until they end, and some wait for the main thread with it.
  void endTheThreads() {
    bool ended = false;
    std::thread closer([&] {
      background_.reset();
      mainQueue_.async([&] { ended = true; });
    });
    EXPECT_TRUE(mainQueue_.runUntil([&] { return ended; }));
    closer.join();
  }

  const Pty &pty_;
  std::mt19937 random_;
  SystemCallFaults &faults_;
  RecordingLog log_;
  PosixTerminalCalls posix_{linesTo(log_)};
  AccountingCalls calls_{posix_};
  FakeDevices devices_;
  NotificationCenter notifications_;
  RecordingExit processExit_;
  PortRegistry::PortList listed_;
  PortRegistry ports_{listed_};
  ManualMainQueue mainQueue_;
  std::optional<ThreadBackground> background_{std::in_place};
  SerialEnvironment environment_{mainQueue_,     *background_, calls_, devices_,
                                 notifications_, processExit_, log_,   ports_};
  std::shared_ptr<RecordingDelegate> delegate_ = std::make_shared<RecordingDelegate>();
  std::shared_ptr<SerialPort> port_;
  int opensThatFailed_ = 0;
  int sendsThatFailed_ = 0;
  int sendsThatMayHaveBeenCutOff_ = 0;
  QByteArray lastSent_;
};

// TAVRIL_FAULT_SEED: the first seed; TAVRIL_FAULT_RUNS: how many runs.
TEST(SerialPortRandomFaults, AnyFaultAtAnyCallLosesNothingAndLeavesNothingBehind) {
  const std::uint32_t first = fromEnvironment("TAVRIL_FAULT_SEED", 1);
  const std::uint32_t runs = fromEnvironment("TAVRIL_FAULT_RUNS", usualRuns);
  SystemCallFaults faults;
  Totals totals;
  Watchdog watchdog(30s);
  const Pty pty;
  faults.closed(pty.slave());
  const std::size_t descriptors = process::descriptors();
  const std::size_t threads = process::threads();
  for (std::uint32_t seed = first; seed < first + runs && !testing::Test::HasFailure(); ++seed) {
    const std::string where = "TAVRIL_FAULT_SEED=" + std::to_string(seed) + " TAVRIL_FAULT_RUNS=1";
    const testing::ScopedTrace trace(__FILE__, __LINE__, where);
    watchdog.pat(where);
    ::tcflush(pty.slave(), TCIOFLUSH);
    // A fault may have kept the last run from taking its flag away, and only the superuser could open the
    // terminal.
    ::ioctl(pty.slave(), TIOCNXCL);
    pty.readPending();
    {
      FaultyUse run(pty, seed, faults);
      run.useThePort();
      run.expectNothingIsLost(totals);
    }
    EXPECT_EQ(faults.openTerminals(), 0u) << "a terminal was left open";
    EXPECT_EQ(process::descriptors(), descriptors) << "a descriptor was left open";
    EXPECT_TRUE(process::threadsComeTo(threads)) << "a thread was left running";
  }
  // Whoever is closing the port beats the reader to it now and then; that is rare.
  EXPECT_GE(10 * totals.failedWaitsTold, 9 * totals.failedWaits) << "failed waits were not told";
  EXPECT_GT(faults.failures(), static_cast<int>(runs)) << "the calls did not go through the faults";
  EXPECT_TRUE(faults.shortened() > 0 || runs <= 100);
  std::printf("%u runs, %d calls failed, %d were cut short; of %ld failed waits %ld were told\n", runs,
              faults.failures(), faults.shortened(), totals.failedWaits, totals.failedWaitsTold);
}

}  // namespace
}  // namespace tavril
