#include "serial/SerialRequest.h"
#include "tests/support/Rescue.h"
#include "tests/support/Responder.h"
#include "tests/support/SerialBench.h"
#include "tests/support/WaitFor.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <future>
#include <iostream>
#include <limits>
#include <map>
#include <random>
#include <semaphore>
#include <thread>
#include <utility>

namespace tavril {
namespace {

using namespace std::chrono_literals;

std::shared_ptr<SerialRequest> request(const QByteArray &text, double timeout_s = 0) {
  return SerialRequest::requestWithDataToSend(text, {}, timeout_s,
                                              [](const QByteArray &bytes) { return bytes.endsWith('!'); });
}

/// An answer for each request that came, whose texts end in ";".
QByteArray answerAll(const QByteArray &came) {
  return QByteArray(came.count(';'), '!');
}

class SerialPortRequestsOnThreads : public testing::Test {
 protected:
  SerialPortRequestsOnThreads() { port->setDelegate(delegate); }
  ~SerialPortRequestsOnThreads() override {
    delegate->atEvent = nullptr;
    if (!port) return;
    port->setDelegate({});
    port->close();
  }
  template <typename Condition>
  bool runUntil(Condition condition) {
    return bench.mainQueue.runUntil(condition);
  }
  bool opened() {
    return port->open() && runUntil([&] { return delegate->events.contains("opened"); });
  }

  Pty pty;
  SerialBench<> bench;
  std::shared_ptr<SerialPort> port = bench.port("usbport-test", pty.path());
  std::shared_ptr<RecordingDelegate> delegate = std::make_shared<RecordingDelegate>();
};

TEST_F(SerialPortRequestsOnThreads, EvaluatorsRunOnTheRequestQueueAndCallbacksOnTheMainThread) {
  ASSERT_TRUE(opened());
  std::atomic<bool> onMainThread = false;
  std::atomic<bool> nested = true;
  const auto asked = SerialRequest::requestWithDataToSend("ask;", {}, 0, [&](const QByteArray &bytes) {
    onMainThread = onMainThread || bench.mainQueue.isMainThread();
    nested = port->sendRequest(request("nested"));
    return bytes == "!";
  });
  delegate->atEvent = [&](const QString &, const SerialPortDelegate::Port &) {
    EXPECT_TRUE(bench.mainQueue.isMainThread());
  };
  const Responder servo(pty, answerAll);
  EXPECT_TRUE(port->sendRequest(asked));
  EXPECT_TRUE(runUntil([&] { return !delegate->responses.empty(); }));
  EXPECT_FALSE(onMainThread);
  EXPECT_FALSE(nested) << "it would have waited for itself";
}

TEST_F(SerialPortRequestsOnThreads, AnUnansweredRequestTimesOutAndTheNextIsSent) {
  ASSERT_TRUE(opened());
  const auto first = request("one", 0.02);
  const auto second = request("two");
  const auto start = std::chrono::steady_clock::now();
  EXPECT_TRUE(port->sendRequest(first));
  EXPECT_TRUE(port->sendRequest(second));
  EXPECT_TRUE(runUntil([&] { return !delegate->timeouts.empty(); }));
  EXPECT_GE(std::chrono::steady_clock::now() - start, 20ms);
  EXPECT_EQ(delegate->timeouts.front(), first);
  EXPECT_EQ(pty.read(6), "onetwo");
  EXPECT_EQ(port->pendingRequest(), second);
  pty.write("ok!");
  EXPECT_TRUE(runUntil([&] { return !delegate->responses.empty(); }));
  EXPECT_EQ(delegate->responses.front().first, second);
}

TEST_F(SerialPortRequestsOnThreads, ManyExchangesLoseNothing) {
  constexpr std::size_t many = 500;
  ASSERT_TRUE(opened());
  const Responder servo(pty, answerAll);
  std::vector<std::shared_ptr<SerialRequest>> all;
  for (std::size_t i = 0; i < many; ++i) {
    all.push_back(request(QByteArray::number(static_cast<int>(i)) + ';', 30));
    EXPECT_TRUE(port->sendRequest(all.back()));
  }
  EXPECT_TRUE(runUntil([&] { return delegate->responses.size() == many; }));
  for (std::size_t i = 0; i < many; ++i) ASSERT_EQ(delegate->responses[i].first, all[i]) << i;
  EXPECT_TRUE(delegate->timeouts.empty());
}

TEST_F(SerialPortRequestsOnThreads, RequestsMayBeSentFromSeveralThreadsAtOnce) {
  constexpr std::size_t each = 100;
  ASSERT_TRUE(opened());
  const Responder servo(pty, answerAll);
  std::vector<std::thread> senders;
  for (int thread = 0; thread < 3; ++thread) {
    senders.emplace_back([&] {
      for (std::size_t i = 0; i < each; ++i) EXPECT_TRUE(port->sendRequest(request("x;")));
    });
  }
  EXPECT_TRUE(runUntil([&] { return delegate->responses.size() == 3 * each; }));
  for (std::thread &sender : senders) sender.join();
}

TEST_F(SerialPortRequestsOnThreads, ThePollerMayWaitForTheMainThreadWhileThatSendsARequest) {
  bench.terminal.setPinsOfLine(0);
  ASSERT_TRUE(opened());
  bench.terminal.setPinsOfLine(Pin::cts);
  EXPECT_TRUE(waitFor([&] { return bench.mainQueue.pending() > 0; })) << "the poller did not come";
  EXPECT_TRUE(port->sendRequest(request("ask")));
  EXPECT_EQ(pty.read(3), "ask");
}

TEST_F(SerialPortRequestsOnThreads, ARequestCanBeSentWhileThePollerWaitsToTellThatTheDeviceIsGone) {
  ASSERT_TRUE(opened());
  pty.unplug();
  EXPECT_TRUE(waitFor([&] { return bench.mainQueue.pending() > 0; }));
  EXPECT_FALSE(port->sendRequest(request("late")));
  EXPECT_TRUE(runUntil([&] { return delegate->events.contains("closed"); }));
  EXPECT_TRUE(waitFor([&] { return !port->pendingRequest(); })) << "closing forgets it";
}

TEST_F(SerialPortRequestsOnThreads, ClosingEndsASendThatIsHeldUpOnTheRequestQueue) {
  ASSERT_TRUE(opened());
  port->sendRequest(request("one"));
  port->sendRequest(request("two"));
  EXPECT_EQ(pty.read(3), "one");
  ASSERT_EQ(::tcflow(pty.slave(), TCOOFF), 0);
  const int writes = bench.terminal.count(Call::Write);
  pty.write("ok!");
  EXPECT_TRUE(waitFor([&] { return bench.terminal.count(Call::Write) > writes; }));
  Rescue rescue([&] { ::tcflow(pty.slave(), TCOON); });
  EXPECT_TRUE(port->close());
  EXPECT_TRUE(waitFor([&] { return !port->pendingRequest(); }));
  EXPECT_FALSE(rescue.wasNeeded());
}

TEST_F(SerialPortRequestsOnThreads, WhatIsLeftOfARequestIsNotSentOnceThePortIsOpenAnew) {
  constexpr qsizetype length = 600;
  constexpr int rounds = 100;
  bench.terminal.writeAtMost = 1;
  const Responder servo(pty, [](const QByteArray &) { return QByteArray(); });
  // In every other round the sender is held in the midst of its writes until the port has been closed; in the
  // others it is cut off wherever it happens to be, if it has not finished by then.
  constexpr int never = std::numeric_limits<int>::max();
  std::atomic<int> writesUntilHeld = never;
  std::binary_semaphore held(0);
  std::binary_semaphore isClosed(0);
  bench.terminal.atCall = [&](Call call) {
    if (call != Call::Write || bench.terminal.count(Call::Write) < writesUntilHeld) return;
    writesUntilHeld = never;
    held.release();
    isClosed.acquire();
  };
  int cutOff = 0;
  for (int round = 0; round < rounds; ++round) {
    ASSERT_TRUE(port->open());
    const int before = bench.terminal.count(Call::Write);
    const auto writes = [&] { return bench.terminal.count(Call::Write) - before; };
    bool isHeld = round % 2 == 0;
    if (isHeld) writesUntilHeld = before + 1;
    int writesBeforeClosing = 0;
    const auto token = port->observe("isOpen", [&](const Change &) {
      if (port->isOpen()) return;
      writesBeforeClosing = writes();
      if (std::exchange(isHeld, false)) isClosed.release();
    });
    auto sending = std::async(std::launch::async, [&] { return port->sendData(QByteArray(length, 'x')); });
    if (isHeld) {
      ASSERT_TRUE(held.try_acquire_for(20s));
    } else {
      while (writes() == 0) std::this_thread::yield();
    }
    EXPECT_TRUE(port->close());
    EXPECT_TRUE(port->open());
    // The port is the test thread's to close, so all that follows the closing belongs to the new opening.
    const bool wasSent = sending.get();
    if (writesBeforeClosing < length) {
      EXPECT_FALSE(wasSent);
      ++cutOff;
    }
    EXPECT_TRUE(port->close());
    bench.mainQueue.runAll();
  }
  EXPECT_GE(cutOff, rounds / 2);
}

TEST_F(SerialPortRequestsOnThreads, APortDroppedOnAnotherThreadGoesWithItsRequests) {
  ASSERT_TRUE(opened());
  port->sendRequest(request("one", 0.001));
  for (int i = 0; i < 10; ++i) port->sendRequest(request("more", 0.001));
  const std::weak_ptr<SerialPort> weak = port;
  bench.allSerialPortsInfo.clear();
  std::thread([last = std::move(port)]() mutable { last.reset(); }).join();
  EXPECT_TRUE(waitFor([&] {
    bench.mainQueue.runAll();
    return weak.expired();
  }));
  EXPECT_TRUE(waitFor([&] { return bench.terminal.count(Call::Close) == 1; }));
}

// ------------------------------------------------------------------------------------------------ hammering

std::size_t openDescriptors() {
  const std::filesystem::directory_iterator all("/proc/self/fd");
  return static_cast<std::size_t>(std::distance(begin(all), end(all)));
}

/// What a request is known by: who sent it, and as which one.
struct Tag {
  int sender = 0;
  int number = 0;
};

/// Hears everything, and objects to what must not be.
class Judge final : public SerialPortDelegate {
 public:
  bool respondsTo(SerialPortCallback callback) const override {
    if (callback == SerialPortCallback::WasClosed) return hearsClosing;
    return callback != SerialPortCallback::RequestDidTimeout || hearsTimeouts;
  }
  void serialPortWasRemovedFromSystem(const Port &) override {}
  void didReceiveResponse(const Port &, const QByteArray &bytes,
                          const std::shared_ptr<SerialRequest> &request) override {
    EXPECT_TRUE(request->dataIsValidResponse(bytes));
    EXPECT_FALSE(bytes.isEmpty());
    judge(request);
    ++responses;
  }
  void requestDidTimeout(const Port &, const std::shared_ptr<SerialRequest> &request) override {
    ASSERT_NE(request, nullptr);
    EXPECT_GT(request->timeoutInterval(), 0);
    judge(request);
    ++timeouts;
  }
  void serialPortWasClosed(const Port &) override { ++closings; }

  std::atomic<bool> hearsClosing = true;
  std::atomic<bool> hearsTimeouts = true;
  int responses = 0;
  int timeouts = 0;
  int closings = 0;

 private:
  /// Each comes to one end at most, and those of one sender in the order in which they were sent.
  void judge(const std::shared_ptr<SerialRequest> &request) {
    const auto tag = std::any_cast<Tag>(request->userInfo());
    const auto [last, isFirst] = last_.try_emplace(tag.sender, tag.number);
    EXPECT_TRUE(isFirst || last->second < tag.number) << tag.sender << ": " << tag.number;
    last->second = tag.number;
  }

  std::map<int, int> last_;
};

class SerialPortRequestsHammering : public testing::TestWithParam<unsigned> {
 protected:
  /// A source of chance for one thread.
  class Dice {
   public:
    explicit Dice(unsigned seed) : random_(seed) {}
    int operator()(int sides) { return static_cast<int>(random_() % static_cast<unsigned>(sides)); }

   private:
    std::mt19937 random_;
  };

  static std::shared_ptr<SerialRequest> anyRequest(Dice &dice, const Tag &tag) {
    ResponseEvaluator evaluator = [](const QByteArray &bytes) { return bytes.endsWith('!'); };
    switch (dice(6)) {
      case 0:
        evaluator = nullptr;
        break;
      case 1:
        evaluator = [](const QByteArray &) { return false; };
        break;
      case 2:
        evaluator = [](const QByteArray &bytes) { return !bytes.isEmpty(); };
        break;
      default:
        break;
    }
    const double timeout_s = dice(8) == 0 ? 0 : 0.0002 * (1 + dice(10));
    return SerialRequest::requestWithDataToSend(QByteArray(dice(20), 'q'), tag, timeout_s, evaluator);
  }

  static QByteArray anyAnswer(Dice &dice) {
    static const std::array<const char *, 5> answers{"", "half", "ok!", "!", "two!!"};
    return answers.at(static_cast<std::size_t>(dice(static_cast<int>(answers.size()))));
  }

  /// One port from its making to its end, under everything that can happen to it.
  void live() {
    auto pty = std::make_unique<Pty>();
    auto servo = std::make_unique<Responder>(
        *pty, [answers = std::make_shared<Dice>(seed())](const QByteArray &) { return anyAnswer(*answers); });
    auto port = bench.port("usbport-test", pty->path());
    const auto judge = std::make_shared<Judge>();
    port->setDelegate(judge);
    port->open();

    // Another thread sends as well, and holds the port while it does.
    std::thread sender([port, ofThisThread = Dice(seed()), count = dice(20)]() mutable {
      for (int number = 0; number < count; ++number) port->sendRequest(anyRequest(ofThisThread, {1, number}));
      port.reset();
    });
    int number = 0;
    for (int step = 0; step < 30; ++step) {
      switch (dice(14)) {
        case 0:
          port->open();
          break;
        case 1:
          port->close();
          break;
        case 2:
        case 3:
        case 4:
          bench.mainQueue.runAll();
          break;
        case 5:
          judge->hearsClosing = dice(2) == 0;
          break;
        case 6:
          judge->hearsTimeouts = dice(3) != 0;
          break;
        case 7:
          if (dice(4) != 0) break;
          servo.reset();
          pty->unplug();
          break;
        case 8:
        case 9:
          letThingsHappen(*judge);
          break;
        default:
          port->sendRequest(anyRequest(dice, {0, number++}));
          break;
      }
    }
    sender.join();
    judge->hearsClosing = true;
    if (dice(3) != 0 && port->isOpen()) expectThatClosingForgets(*port);
    total.responses += judge->responses;
    total.timeouts += judge->timeouts;
    const std::weak_ptr<SerialPort> weak = port;
    bench.allSerialPortsInfo.clear();
    port.reset();
    EXPECT_TRUE(waitFor([&] {
      bench.mainQueue.runAll();
      return weak.expired();
    }));
  }

  unsigned seed() { return static_cast<unsigned>(dice(1 << 30)); }

  /// Gives the threads a moment, unless something is told before it is over.
  void letThingsHappen(const Judge &judge) {
    const auto told = [&judge] { return judge.responses + judge.timeouts; };
    waitFor([&, before = told()] { return bench.mainQueue.runAll() > 0 && told() > before; }, 3ms);
  }

  void expectThatClosingForgets(SerialPort &port) {
    port.close();
    EXPECT_TRUE(waitFor([&] {
      bench.mainQueue.runAll();
      return !port.isOpen() && !port.pendingRequest() && port.queuedRequests().empty();
    }));
  }

  struct {
    int responses = 0;
    int timeouts = 0;
  } total;
  Dice dice{GetParam()};
  const std::size_t descriptorsBefore = openDescriptors();
  SerialBench<> bench;
};

INSTANTIATE_TEST_SUITE_P(Seeds, SerialPortRequestsHammering, testing::Values(5u, 66u, 777u, 8888u));

TEST_P(SerialPortRequestsHammering, ManyLivesOfAPortEndEachRequestOnceAndLeaveNothing) {
  std::cout << "seed " << GetParam() << '\n';
  for (int life = 0; life < 60 && !HasFailure(); ++life) live();
  EXPECT_GT(total.responses, 0);
  EXPECT_GT(total.timeouts, 0);
  EXPECT_TRUE(waitFor([&] { return bench.terminal.count(Call::Lock) == bench.terminal.count(Call::Close); }));
  EXPECT_TRUE(waitFor([&] { return openDescriptors() == descriptorsBefore; }))
      << openDescriptors() << " descriptors, before " << descriptorsBefore;
}

}  // namespace
}  // namespace tavril
