// Reads the twenty registers again and again over an emulated line, as the program does, and prints a line
// for each reading: its time in nanoseconds and how many commands it took.
//   reading-sequence wire|16|1 RULE LATENCY RUNS
// The adapter's timer in ms, or none; RULE and LATENCY are 1 for what the link asks for, 0 for without. A
// reading that has not ended within ten seconds has the time -1.
#include "bench/BenchLink.h"
#include "bench/EmulatedAdapter.h"
#include "platform/Log.h"
#include "serial/SerialPort.h"

#include <QCoreApplication>
#include <QEventLoop>
#include <QTimer>

#include <cstdio>
#include <cstdlib>
#include <string_view>

namespace {

using namespace tavril;
using namespace tavril::bench;
using Clock = std::chrono::steady_clock;

constexpr std::chrono::seconds patience{10};
constexpr int registers = 20;

/// Hands everything to the link and looks for the last register's reply.
class Watcher final : public SerialPortDelegate {
 public:
  explicit Watcher(AppDelegate &link) : link_(link) {}

  bool respondsTo(SerialPortCallback callback) const override { return link_.respondsTo(callback); }
  void serialPortWasRemovedFromSystem(const Port &port) override {
    link_.serialPortWasRemovedFromSystem(port);
  }
  void serialPortWasOpened(const Port &) override {}  // no detection: the readings are begun from here
  void didReceiveData(const Port &port, const QByteArray &bytes) override {
    link_.didReceiveData(port, bytes);
    if (bytes.size() == 7 && bytes[3] == registers) loop.quit();
  }

  QEventLoop loop;

 private:
  AppDelegate &link_;
};

}  // namespace

int main(int argc, char **argv) {
  if (argc != 5) {
    std::fputs("usage: reading-sequence wire|16|1 RULE LATENCY RUNS\n", stderr);
    return 2;
  }
  const QCoreApplication application(argc, argv);
  const bool withRule = std::string_view(argv[2]) == "1";
  const bool withLatency = std::string_view(argv[3]) == "1";
  WireLine line{std::chrono::milliseconds(std::atoi(argv[1]))};
  StreamLog log;
  PosixTerminalCalls posix(linesTo(log));
  EmulatedAdapter calls(posix, line);
  BenchLink link(line.path(), &calls);

  // What the link sets is taken back again where it is to be measured without.
  link.application->serialFormat();
  const auto port = link.application->serialPort();
  const auto watcher = std::make_shared<Watcher>(*link.application);
  port->setDelegate({});
  port->close();
  if (!withRule) port->setDeliveryRule({});
  port->setUsesLowLatency(withLatency);
  port->setDelegate(watcher);
  if (!port->open()) {
    std::fputs("reading-sequence: the port cannot be opened\n", stderr);
    return 1;
  }

  bool timedOut = false;
  QTimer limit;
  limit.setSingleShot(true);
  limit.callOnTimeout([&] {
    timedOut = true;
    watcher->loop.quit();
  });
  for (int run = 0; run < std::atoi(argv[4]); ++run) {
    timedOut = false;
    const int before = line.framesSeen();
    limit.start(patience);
    const auto begin = Clock::now();
    link.state.FunctionCMD->ReadMotorParameter(1);
    watcher->loop.exec();
    const auto time = std::chrono::nanoseconds(Clock::now() - begin).count();
    std::printf("%lld %d\n", timedOut ? -1LL : static_cast<long long>(time), line.framesSeen() - before);
    std::fflush(stdout);
  }
  return 0;
}
