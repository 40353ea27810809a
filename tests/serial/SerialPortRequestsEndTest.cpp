#include "tests/serial/RequestsBench.h"

#include <cerrno>

namespace tavril {
namespace {

using namespace std::chrono_literals;
using Callback = SerialPortCallback;

const QString writeError = QStringLiteral("error ") + QString::number(EIO);

class SerialPortRequestsEnd : public RequestsBench {};

// ------------------------------------------------------------------------------------------ failing to send

TEST_F(SerialPortRequestsEnd, AFailingSendReturnsFalseAndTheRequestStaysPending) {
  bench.terminal.fail(Call::Write, EIO, 1);
  const auto failing = request("lost");
  const auto waiting = request("waiting");
  EXPECT_FALSE(port->sendRequest(failing));
  EXPECT_EQ(port->pendingRequest(), failing);
  EXPECT_TRUE(port->sendRequest(waiting));
  EXPECT_EQ(queued(), Requests{waiting});
  runAll();
  EXPECT_EQ(delegate->events, QStringList{writeError});
  EXPECT_EQ(sent(), "");
}

TEST_F(SerialPortRequestsEnd, AFailingSendIsNotCheckedForAResponse) {
  bench.terminal.fail(Call::Write, EIO, 1);
  const auto failing = requestWith("lost", {});
  EXPECT_FALSE(port->sendRequest(failing));
  EXPECT_EQ(port->pendingRequest(), failing);
}

TEST_F(SerialPortRequestsEnd, AFailedSendWithATimeOutIsToldAsTimedOutAndTheQueueMovesOn) {
  bench.terminal.fail(Call::Write, EIO, 1);
  const auto failing = request("lost", 1);
  EXPECT_FALSE(port->sendRequest(failing));
  port->sendRequest(request("next"));
  queue->advance(1s);
  runAll();
  EXPECT_EQ(delegate->events, (QStringList{writeError, "timeout"}));
  EXPECT_EQ(delegate->timeouts, Requests{failing});
  EXPECT_EQ(sent(), "next");
}

TEST_F(SerialPortRequestsEnd, AFailedSendWithoutATimeOutBlocksTheQueueUntilThePortIsClosed) {
  bench.terminal.fail(Call::Write, EIO, 1);
  port->sendRequest(request("lost"));
  port->sendRequest(request("next"));
  queue->advance(std::chrono::years(1));
  runAll();
  EXPECT_EQ(queued().size(), 1u);
  port->close();
  runAll();
  EXPECT_TRUE(queued().empty());
  EXPECT_EQ(port->pendingRequest(), nullptr);
}

TEST_F(SerialPortRequestsEnd, AWaitingRequestThatCannotBeSentStaysPendingAndThoseBehindItWait) {
  const auto failing = request("lost", 1);
  const auto waiting = request("three");
  port->sendRequest(request("one"));
  port->sendRequest(failing);
  port->sendRequest(waiting);
  bench.terminal.fail(Call::Write, EIO, 1);
  answer("ok!");
  EXPECT_EQ(port->pendingRequest(), failing);
  EXPECT_EQ(queued(), Requests{waiting});
  queue->advance(1s);
  runAll();
  EXPECT_EQ(delegate->timeouts, Requests{failing});
  EXPECT_EQ(sent(), "onethree");
}

TEST_F(SerialPortRequestsEnd, OnAClosedPortSendingFailsWithoutAnErrorAndTheRequestStaysPending) {
  port->close();
  runAll();
  delegate->events.clear();
  const auto early = request("early", 1);
  EXPECT_FALSE(port->sendRequest(early));
  EXPECT_EQ(port->pendingRequest(), early);
  queue->advance(1s);
  runAll();
  EXPECT_EQ(delegate->events, QStringList{"timeout"});
  EXPECT_EQ(port->pendingRequest(), nullptr);
}

// -------------------------------------------------------------------------------------------------- closing

TEST_F(SerialPortRequestsEnd, ClosingForgetsThemOnTheRequestQueueAfterTheDelegateHasHeard) {
  bool stillThere = false;
  delegate->atEvent = [&](const QString &event, const SerialPortDelegate::Port &told) {
    if (event == u"closed") stillThere = told->pendingRequest() && told->queuedRequests().size() == 1;
  };
  port->sendRequest(request("one"));
  port->sendRequest(request("two"));
  port->close();
  EXPECT_TRUE(stillThere);
  EXPECT_NE(port->pendingRequest(), nullptr);
  queue->runAll();
  EXPECT_EQ(port->pendingRequest(), nullptr);
  EXPECT_TRUE(queued().empty());
}

TEST_F(SerialPortRequestsEnd, WithoutAClosedCallbackTheySurviveTheClosingAndStillTimeOutAndGoOn) {
  useDelegateWithout({Callback::WasClosed});
  const auto first = request("one", 1);
  const auto second = request("two", 1);
  const auto third = request("three");
  for (const auto &each : {first, second, third}) port->sendRequest(each);
  port->close();
  runAll();
  EXPECT_EQ(port->pendingRequest(), first);
  EXPECT_EQ(queued(), (Requests{second, third}));
  queue->advance(1s);
  runAll();
  EXPECT_EQ(delegate->timeouts, Requests{first});
  EXPECT_EQ(port->pendingRequest(), second) << "could not be sent, and is pending all the same";
  ASSERT_TRUE(port->open());
  queue->advance(1s);
  runAll();
  EXPECT_EQ(delegate->timeouts, (Requests{first, second}));
  EXPECT_EQ(port->pendingRequest(), third);
  EXPECT_EQ(sent(), "onethree");
}

TEST_F(SerialPortRequestsEnd, TheTimeOutOfARequestThatClosingForgotEndsWithIt) {
  port->sendRequest(request("one", 1));
  port->close();
  queue->runAll();
  EXPECT_EQ(queue->timers().running(), 0u);
  ASSERT_TRUE(port->open());
  const auto patient = request("two");
  port->sendRequest(patient);
  queue->advance(10s);
  runAll();
  EXPECT_TRUE(delegate->timeouts.empty());
  EXPECT_EQ(port->pendingRequest(), patient);
}

TEST_F(SerialPortRequestsEnd, ATimeOutToldAfterTheClosingDoesNotEndTheRequestThatIsPendingByThen) {
  const auto first = request("one", 1);
  port->sendRequest(first);
  queue->advance(1s);
  port->close();
  ASSERT_TRUE(port->open());
  const auto second = request("two");
  const auto third = request("three");
  port->sendRequest(second);
  port->sendRequest(third);
  runAll();
  EXPECT_EQ(delegate->timeouts, Requests{first});
  EXPECT_EQ(port->pendingRequest(), second);
  EXPECT_EQ(queued(), Requests{third});
  answer("ok!");
  EXPECT_EQ(port->pendingRequest(), third);
}

TEST_F(SerialPortRequestsEnd, ARequestSentInTheClosedCallbackIsForgottenToo) {
  delegate->atEvent = [&](const QString &event, const SerialPortDelegate::Port &told) {
    if (event == u"closed") told->sendRequest(request("too late"));
  };
  port->close();
  EXPECT_NE(port->pendingRequest(), nullptr);
  runAll();
  EXPECT_EQ(port->pendingRequest(), nullptr);
}

TEST_F(SerialPortRequestsEnd, RequestsSentOnceTheClosedCallbackHasOpenedThePortAnewAreNotForgotten) {
  const auto first = request("first");
  const auto second = request("second");
  delegate->atEvent = [&](const QString &event, const SerialPortDelegate::Port &told) {
    if (event != u"closed") return;
    EXPECT_TRUE(told->open());
    EXPECT_TRUE(told->sendRequest(first));
    EXPECT_TRUE(told->sendRequest(second));
  };
  port->sendRequest(request("pending "));
  port->sendRequest(request("waiting "));
  port->close();
  delegate->atEvent = nullptr;
  EXPECT_EQ(queued().size(), 3u);
  runAll();
  EXPECT_EQ(port->pendingRequest(), first);
  EXPECT_EQ(queued(), Requests{second});
  EXPECT_EQ(sent(), "pending first");
  port->close();
  runAll();
  EXPECT_EQ(port->pendingRequest(), nullptr);
  EXPECT_TRUE(queued().empty());
}

TEST_F(SerialPortRequestsEnd, ARequestThatIsPendingSinceTheClosedCallbackOpenedThePortAnewKeepsItsTimeOut) {
  const auto later = request("later", 1);
  delegate->atEvent = [&](const QString &event, const SerialPortDelegate::Port &told) {
    if (event == u"closed" && told->open()) told->sendRequest(later);
  };
  port->close();
  delegate->atEvent = nullptr;
  runAll();
  EXPECT_EQ(port->pendingRequest(), later);
  queue->advance(1s);
  runAll();
  EXPECT_EQ(delegate->timeouts, Requests{later});
}

TEST_F(SerialPortRequestsEnd, APulledPlugForgetsThem) {
  port->sendRequest(request("one"));
  port->sendRequest(request("two"));
  pty.unplug();
  EXPECT_TRUE(runMainUntil([&] { return delegate->events.contains("closed"); }));
  EXPECT_TRUE(queue->runUntil([&] { return !port->pendingRequest(); }));
  EXPECT_TRUE(queued().empty());
}

// ------------------------------------------------------------------------------------------------ observers

TEST_F(SerialPortRequestsEnd, ObserversHearOfEachRequestThatComesToTheWaitingOnesOrLeavesThem) {
  std::vector<Change> changes;
  int queuedChanged = 0;
  const auto token = port->observe("requestsQueue", [&](const Change &change) { changes.push_back(change); });
  const auto other = port->observe("queuedRequests", [&](const Change &) {
    EXPECT_TRUE(queue->isCurrent());
    ++queuedChanged;
  });
  port->sendRequest(request("one"));
  EXPECT_EQ(queuedChanged, 0) << "it never waited";
  port->sendRequest(request("two"));
  port->sendRequest(request("three"));
  answer("ok!");
  ASSERT_EQ(changes.size(), 3u);
  EXPECT_EQ(changes[0].kind, Change::Kind::Insertion);
  EXPECT_EQ(changes[0].indexes, std::vector<std::size_t>{0});
  EXPECT_EQ(changes[1].kind, Change::Kind::Insertion);
  EXPECT_EQ(changes[1].indexes, std::vector<std::size_t>{1});
  EXPECT_EQ(changes[2].kind, Change::Kind::Removal);
  EXPECT_EQ(changes[2].indexes, std::vector<std::size_t>{0});
  EXPECT_EQ(queuedChanged, 3);
}

TEST_F(SerialPortRequestsEnd, ObserversSeeTheListAsItIsAfterTheChange) {
  std::vector<std::size_t> sizes;
  const auto token =
      port->observe("queuedRequests", [&](const Change &) { sizes.push_back(queued().size()); });
  for (int i = 0; i < 3; ++i) port->sendRequest(request("x"));
  answer("!");
  answer("!");
  EXPECT_EQ(sizes, (std::vector<std::size_t>{1, 2, 1, 0}));
}

TEST_F(SerialPortRequestsEnd, ObserversHearWhenClosingEmptiesTheWaitingOnes) {
  int told = 0;
  const auto token = port->observe("queuedRequests", [&](const Change &) { ++told; });
  port->sendRequest(request("one"));
  port->close();
  queue->runAll();
  EXPECT_EQ(told, 0) << "none was waiting";
  ASSERT_TRUE(port->open());
  port->sendRequest(request("one"));
  port->sendRequest(request("two"));
  port->close();
  queue->runAll();
  EXPECT_EQ(told, 2);
}

// ----------------------------------------------------------------------------------- whence, and until when

TEST_F(SerialPortRequestsEnd, SendingFromAnEvaluatorIsRefusedAndLogged) {
  bool accepted = true;
  port->sendRequest(requestWith("one", [&](const QByteArray &) {
    accepted = port->sendRequest(request("nested"));
    return true;
  }));
  EXPECT_FALSE(accepted);
  EXPECT_EQ(sent(), "one");
  EXPECT_EQ(port->pendingRequest(), nullptr);
  EXPECT_EQ(bench.log.warnings().filter("request queue of its port").size(), 1);
}

TEST_F(SerialPortRequestsEnd, SendingFromAnObserverOfTheWaitingOnesIsRefused) {
  int refused = 0;
  const auto token = port->observe("queuedRequests", [&](const Change &) {
    if (!port->sendRequest(request("nested"))) ++refused;
  });
  port->sendRequest(request("one"));
  port->sendRequest(request("two"));
  EXPECT_EQ(refused, 1);
  EXPECT_EQ(queued().size(), 1u);
}

TEST_F(SerialPortRequestsEnd, APortThatIsDroppedGoesWithItsRequestsAndTimeOutAndTellsNobody) {
  const auto pending = request("one", 1);
  const std::weak_ptr<SerialRequest> waiting = [&] {
    const auto made = request("two");
    port->sendRequest(pending);
    port->sendRequest(made);
    return made;
  }();
  const std::weak_ptr<SerialPort> weak = port;
  delegate->events.clear();
  bench.allSerialPortsInfo.clear();
  port.reset();
  EXPECT_TRUE(waitFor([&] { return weak.expired() && waiting.expired(); }));
  EXPECT_EQ(queue->timers().running(), 0u);
  queue->advance(10s);
  runAll();
  EXPECT_TRUE(delegate->events.isEmpty());
}

TEST_F(SerialPortRequestsEnd, ATimeOutOrResponseThatWaitsToBeToldDoesNotKeepAPortAlive) {
  port->sendRequest(request("one"));
  port->sendRequest(request("two", 1));
  answer("ok!");
  queue->advance(1s);
  EXPECT_GE(bench.mainQueue.pending(), 2u);
  const std::weak_ptr<SerialPort> weak = port;
  bench.allSerialPortsInfo.clear();
  port.reset();
  EXPECT_TRUE(waitFor([&] { return weak.expired(); }));
  runAll();
  EXPECT_TRUE(delegate->events.isEmpty());
}

TEST_F(SerialPortRequestsEnd, AnEvaluatorMayDropTheLastReferenceToThePort) {
  const std::weak_ptr<SerialPort> weak = port;
  port->sendRequest(requestWith("one", [&](const QByteArray &bytes) {
    if (bytes.isEmpty()) return false;
    port.reset();
    return true;
  }));
  port->sendRequest(request("two"));
  bench.allSerialPortsInfo.clear();
  answer("x");
  EXPECT_TRUE(waitFor([&] { return weak.expired(); }));
  EXPECT_EQ(sent(), "onetwo");
}

}  // namespace
}  // namespace tavril
