#pragma once

#include "platform/linux/ThreadBackground.h"
#include "serial/SerialRequest.h"
#include "tests/support/ManualSerialQueue.h"
#include "tests/support/SerialBench.h"
#include "tests/support/WaitFor.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <set>
#include <vector>

namespace tavril {

/// Loops and pollers run on real threads; the jobs and timers of serial queues only when the test says so.
class ManualQueueBackground final : public Background {
 public:
  void run(Job job) override { threads_.run(std::move(job)); }
  std::shared_ptr<RepeatingWork> repeat(std::chrono::milliseconds interval, Job tick) override {
    return threads_.repeat(interval, std::move(tick));
  }
  std::shared_ptr<SerialQueue> serialQueue(const QString &label) override {
    queue = std::make_shared<ManualSerialQueue>(label);
    return queue;
  }

  /// The one that was made last.
  std::shared_ptr<ManualSerialQueue> queue;

 private:
  ThreadBackground threads_;
};

/// An open port on a real pseudo-terminal whose request queue and clock stand still until the test moves
/// them.
class RequestsBench : public testing::Test {
 protected:
  using Requests = std::vector<std::shared_ptr<SerialRequest>>;

  RequestsBench() {
    port->setDelegate(delegate);
    bench.terminal.atCall = [this](Call call) {
      if (call == Call::Write && atWrite) atWrite();
    };
    EXPECT_TRUE(port->open());
    EXPECT_TRUE(runMainUntil([&] { return delegate->events.contains("opened"); }));
    delegate->events.clear();
  }
  ~RequestsBench() override {
    delegate->atEvent = nullptr;
    if (!port) return;
    port->setDelegate({});
    port->close();
  }

  /// A request that sends its text and is answered by whatever ends in "!".
  static std::shared_ptr<SerialRequest> request(const QByteArray &text, double timeout_s = 0) {
    return SerialRequest::requestWithDataToSend(text, {}, timeout_s,
                                                [](const QByteArray &bytes) { return bytes.endsWith('!'); });
  }
  static std::shared_ptr<SerialRequest> requestWith(const QByteArray &text, ResponseEvaluator evaluator) {
    return SerialRequest::requestWithDataToSend(text, {}, 0, std::move(evaluator));
  }

  /// What has been sent to the servo's side so far.
  const QByteArray &sent() { return wasSent += pty.readPending(); }
  /// The servo's side says this, and the port has read it and done with it what it does at once.
  void arrives(const QByteArray &bytes) {
    const long expected = bench.terminal.bytesRead() + bytes.size();
    pty.write(bytes);
    EXPECT_TRUE(waitFor([&] { return bench.terminal.bytesRead() >= expected; }));
    EXPECT_TRUE(waitFor([&] { return bench.terminal.waitsAgainAfterReading(); }));
  }
  /// The same, and the request queue has dealt with it.
  void answer(const QByteArray &bytes) {
    arrives(bytes);
    queue->runAll();
  }
  template <typename Condition>
  bool runMainUntil(Condition condition) {
    return bench.mainQueue.runUntil(condition);
  }
  /// Both queues, until neither has anything left.
  void runAll() {
    do {
      queue->runAll();
    } while (bench.mainQueue.runAll() > 0);
  }
  void useDelegateWithout(const std::set<SerialPortCallback> &leftOut) {
    delegate = std::make_shared<RecordingDelegate>(leftOut);
    port->setDelegate(delegate);
  }
  Requests queued() const { return port->queuedRequests(); }

  /// Called at the beginning of each write; for writes on the test's own thread.
  std::function<void()> atWrite;
  Pty pty;
  SerialBench<ManualQueueBackground> bench;
  std::shared_ptr<SerialPort> port = bench.port("usbport-test", pty.path());
  std::shared_ptr<ManualSerialQueue> queue = bench.background.queue;
  std::shared_ptr<RecordingDelegate> delegate = std::make_shared<RecordingDelegate>();
  QByteArray wasSent;
};

}  // namespace tavril
