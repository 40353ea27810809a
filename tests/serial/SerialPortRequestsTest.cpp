#include "tests/serial/RequestsBench.h"

#include <limits>

namespace tavril {
namespace {

using namespace std::chrono_literals;
using Callback = SerialPortCallback;

class SerialPortRequests : public RequestsBench {};

// ---------------------------------------------------------------------------------------- one after another

TEST_F(SerialPortRequests, ARequestIsSentAndPendingAndItsResponseIsTold) {
  const auto asked = request("ask");
  EXPECT_TRUE(port->sendRequest(asked));
  EXPECT_EQ(sent(), "ask");
  EXPECT_EQ(port->pendingRequest(), asked);
  EXPECT_TRUE(queued().empty());
  answer("done!");
  EXPECT_TRUE(delegate->responses.empty()) << "told on the main queue only";
  EXPECT_EQ(port->pendingRequest(), nullptr);
  runAll();
  ASSERT_EQ(delegate->responses.size(), 1u);
  EXPECT_EQ(delegate->responses[0].first, asked);
  EXPECT_EQ(delegate->responses[0].second, "done!");
}

TEST_F(SerialPortRequests, OfTwoSentBackToBackTheSecondWaitsInQueuedRequestsUntilTheFirstGetsItsResponse) {
  const auto first = request("one");
  const auto second = request("two");
  EXPECT_TRUE(port->sendRequest(first));
  EXPECT_TRUE(port->sendRequest(second));
  EXPECT_EQ(port->pendingRequest(), first);
  EXPECT_EQ(queued(), Requests{second});
  EXPECT_EQ(sent(), "one");
  answer("ok!");
  EXPECT_EQ(port->pendingRequest(), second);
  EXPECT_TRUE(queued().empty());
  EXPECT_EQ(sent(), "onetwo");
}

TEST_F(SerialPortRequests, OfTwoSentBackToBackTheSecondWaitsInQueuedRequestsUntilTheFirstTimesOut) {
  const auto first = request("one", 0.5);
  const auto second = request("two");
  port->sendRequest(first);
  port->sendRequest(second);
  queue->advance(499ms);
  runAll();
  EXPECT_EQ(queued(), Requests{second});
  queue->advance(1ms);
  runAll();
  EXPECT_EQ(delegate->timeouts, Requests{first});
  EXPECT_EQ(port->pendingRequest(), second);
  EXPECT_TRUE(queued().empty());
  EXPECT_EQ(sent(), "onetwo");
}

TEST_F(SerialPortRequests, ManyAreSentInTheirOrder) {
  Requests all;
  for (int i = 0; i < 20; ++i) all.push_back(request(QByteArray::number(i) + ' '));
  for (const auto &each : all) EXPECT_TRUE(port->sendRequest(each));
  EXPECT_EQ(queued(), Requests(all.begin() + 1, all.end()));
  QByteArray expected;
  for (std::size_t i = 0; i < all.size(); ++i) {
    expected += all[i]->dataToSend();
    EXPECT_EQ(sent(), expected);
    answer("!");
  }
  runAll();
  ASSERT_EQ(delegate->responses.size(), all.size());
  for (std::size_t i = 0; i < all.size(); ++i) EXPECT_EQ(delegate->responses[i].first, all[i]);
}

TEST_F(SerialPortRequests, ARequestCanBeSentAgain) {
  const auto same = request("again");
  port->sendRequest(same);
  port->sendRequest(same);
  EXPECT_EQ(queued(), Requests{same});
  answer("1!");
  answer("2!");
  runAll();
  ASSERT_EQ(delegate->responses.size(), 2u);
  EXPECT_EQ(delegate->responses[1].second, "2!");
}

TEST_F(SerialPortRequests, TheResponseCallbackMaySendTheNext) {
  delegate->atEvent = [&](const QString &event, const SerialPortDelegate::Port &told) {
    const bool goesOn = event == u"response" && delegate->responses.size() < 3;
    EXPECT_TRUE(!goesOn || told->sendRequest(request("next ")));
  };
  port->sendRequest(request("first "));
  for (int i = 0; i < 3; ++i) {
    answer("!");
    runAll();
  }
  EXPECT_EQ(sent(), "first next next ");
  EXPECT_EQ(delegate->responses.size(), 3u);
}

TEST_F(SerialPortRequests, NoRequestIsNone) {
  EXPECT_FALSE(port->sendRequest(nullptr));
  EXPECT_EQ(port->pendingRequest(), nullptr);
}

// ----------------------------------------------------------------------------------------- what is received

TEST_F(SerialPortRequests, EveryDeliveryIsAddedToTheOnesBeforeAndCheckedAtOnce) {
  QList<QByteArray> seen;
  port->sendRequest(requestWith("ask", [&](const QByteArray &bytes) {
    seen.append(bytes);
    return bytes == "abc";
  }));
  answer("a");
  answer("b");
  EXPECT_NE(port->pendingRequest(), nullptr);
  answer("c");
  EXPECT_EQ(seen, (QList<QByteArray>{"", "a", "ab", "abc"}));
  EXPECT_EQ(port->pendingRequest(), nullptr);
  runAll();
  ASSERT_EQ(delegate->responses.size(), 1u);
  EXPECT_EQ(delegate->responses[0].second, "abc");
}

TEST_F(SerialPortRequests, BytesThatAlreadySatisfyTheEvaluatorWhenSendingFinishesCompleteTheRequestAtOnce) {
  // The queue is busy with sending while they come, and sees to them before anything else.
  atWrite = [&] { arrives("early!"); };
  EXPECT_TRUE(port->sendRequest(request("ask")));
  EXPECT_EQ(port->pendingRequest(), nullptr);
  runAll();
  ASSERT_EQ(delegate->responses.size(), 1u);
  EXPECT_EQ(delegate->responses[0].second, "early!");
}

TEST_F(SerialPortRequests, AnEvaluatorThatAcceptsNothingAsAResponseCompletesTheRequestAtOnceUntold) {
  EXPECT_TRUE(port->sendRequest(requestWith("ask", [](const QByteArray &bytes) { return bytes.isEmpty(); })));
  EXPECT_EQ(port->pendingRequest(), nullptr);
  runAll();
  EXPECT_TRUE(delegate->events.isEmpty());
}

TEST_F(SerialPortRequests, ARequestWithoutAnEvaluatorCompletesByItsOwnSendingAndIsNotReported) {
  port->sendRequest(request("one"));
  port->sendRequest(requestWith("two", {}));
  port->sendRequest(requestWith("three", {}));
  const auto last = request("four");
  port->sendRequest(last);
  answer("ok!");
  EXPECT_EQ(sent(), "onetwothreefour");
  EXPECT_EQ(port->pendingRequest(), last);
  runAll();
  EXPECT_EQ(delegate->responses.size(), 1u);
}

TEST_F(SerialPortRequests, ARequestWithoutAnEvaluatorHasNoTimeLeftToRunOut) {
  port->sendRequest(SerialRequest::requestWithDataToSend("x", {}, 0.1, {}));
  EXPECT_EQ(queue->timers().running(), 0u);
  queue->advance(1s);
  runAll();
  EXPECT_TRUE(delegate->events.isEmpty());
}

TEST_F(SerialPortRequests, SendingEmptiesWhatCameBefore) {
  answer("old!");
  const auto asked = request("ask");
  port->sendRequest(asked);
  EXPECT_EQ(port->pendingRequest(), asked);
  answer("new!");
  runAll();
  ASSERT_EQ(delegate->responses.size(), 1u);
  EXPECT_EQ(delegate->responses[0].second, "new!");
}

TEST_F(SerialPortRequests, WhatComesWithOneResponseDoesNotCountForTheNextRequest) {
  port->sendRequest(requestWith("one", [](const QByteArray &bytes) { return bytes.contains('!'); }));
  const auto second = requestWith("two", [](const QByteArray &bytes) { return bytes.contains('!'); });
  port->sendRequest(second);
  answer("a!b!");
  EXPECT_EQ(port->pendingRequest(), second);
  runAll();
  ASSERT_EQ(delegate->responses.size(), 1u);
  EXPECT_EQ(delegate->responses[0].second, "a!b!");
}

TEST_F(SerialPortRequests, BytesThatComeWhileNothingIsPendingAccumulate) {
  answer("ab");
  answer("cd");
  // Whoever makes a request the pending one without sending it finds them.
  port->setPendingRequest(request("never sent"));
  answer("!");
  runAll();
  ASSERT_EQ(delegate->responses.size(), 1u);
  EXPECT_EQ(delegate->responses[0].second, "abcd!");
  EXPECT_EQ(sent(), "");
}

TEST_F(SerialPortRequests, BytesThatComeWhileNothingIsPendingWakeNoThread) {
  for (int i = 0; i < 5; ++i) arrives("unasked");
  EXPECT_EQ(queue->broughtByOthers(), 0);
  port->sendRequest(request("one"));
  arrives("answer!");
  EXPECT_EQ(queue->broughtByOthers(), 1);
  // The next ones must not overtake those that are still on their way.
  port->setPendingRequest(nullptr);
  arrives("late");
  EXPECT_EQ(queue->broughtByOthers(), 2);
  queue->runAll();
  arrives("unasked");
  EXPECT_EQ(queue->broughtByOthers(), 2);
}

TEST_F(SerialPortRequests, OfTheBytesThatComeWhileNothingIsPendingTheLatestAreKept) {
  constexpr qsizetype most = 64 * 1024;
  const QByteArray noise(1024, 'n');
  for (qsizetype i = 0; i <= most; i += noise.size()) answer(noise);
  answer("end");
  port->setPendingRequest(request("never sent"));
  answer("!");
  runAll();
  ASSERT_EQ(delegate->responses.size(), 1u);
  EXPECT_EQ(delegate->responses[0].second, QByteArray(most - 3, 'n') + "end!");
}

TEST_F(SerialPortRequests, OfTheBytesThatComeForAPendingRequestNoneIsDropped) {
  constexpr qsizetype much = 70 * 1024;
  port->sendRequest(requestWith("ask", [](const QByteArray &bytes) { return bytes.size() == much; }));
  const QByteArray part(1024, 'p');
  for (qsizetype i = 0; i < much; i += part.size()) answer(part);
  runAll();
  ASSERT_EQ(delegate->responses.size(), 1u);
  EXPECT_EQ(delegate->responses[0].second.size(), much);
}

TEST_F(SerialPortRequests, ADelegateThatLeavesDataOutStillHearsResponses) {
  useDelegateWithout({Callback::DidReceiveData});
  port->sendRequest(request("ask"));
  answer("ok!");
  runAll();
  EXPECT_TRUE(delegate->received.isEmpty());
  EXPECT_EQ(delegate->events, QStringList{"response"});
}

TEST_F(SerialPortRequests, ADelegateThatLeavesResponsesOutIsNotToldAndTheNextRequestIsSent) {
  useDelegateWithout({Callback::DidReceiveResponse});
  port->sendRequest(request("one"));
  port->sendRequest(request("two"));
  answer("ok!");
  runAll();
  EXPECT_EQ(sent(), "onetwo");
  EXPECT_EQ(delegate->received, "ok!");
  EXPECT_TRUE(delegate->responses.empty());
}

TEST_F(SerialPortRequests, AResponseIsToldAfterTheDataItCameIn) {
  QStringList order;
  delegate->atEvent = [&](const QString &event, const SerialPortDelegate::Port &) { order.append(event); };
  port->sendRequest(request("one"));
  port->sendRequest(request("two"));
  answer("1");
  answer("!");
  answer("2!");
  EXPECT_TRUE(order.isEmpty());
  runAll();
  EXPECT_EQ(order, (QStringList{"data", "data", "response", "data", "response"}));
}

TEST_F(SerialPortRequests, AnyNumberMayCompleteInOneGo) {
  constexpr int many = 20000;
  port->sendRequest(request(""));
  for (int i = 0; i < many; ++i) port->sendRequest(requestWith("", {}));
  const auto last = request("last");
  port->sendRequest(last);
  answer("!");
  EXPECT_EQ(port->pendingRequest(), last);
  EXPECT_TRUE(queued().empty());
}

// ------------------------------------------------------------------------------------------------ time-outs

TEST_F(SerialPortRequests, ATimeOutIsATimerOfThatIntervalWithATenthOfItAsLeeway) {
  port->sendRequest(request("ask", 1.5));
  const auto &timers = queue->timers().entries();
  ASSERT_EQ(timers.size(), 1u);
  EXPECT_EQ(timers[0]->interval, 1500000000ns);
  EXPECT_EQ(timers[0]->leeway, 150000000ns);
}

TEST_F(SerialPortRequests, TimeOutsOfNothingAndLessAndOfNoNumberAreNone) {
  for (const double none : {0.0, -0.0, -1.0, std::numeric_limits<double>::quiet_NaN(),
                            -std::numeric_limits<double>::infinity()}) {
    port->sendRequest(request("ask", none));
    EXPECT_EQ(queue->timers().running(), 0u) << none;
    answer("!");
  }
}

TEST_F(SerialPortRequests, TimeOutsBeyondCountingLastAsLongAsAnybodyWaits) {
  for (const double endless : {1e10, 1e300, std::numeric_limits<double>::infinity()}) {
    port->sendRequest(request("ask", endless));
    ASSERT_EQ(queue->timers().running(), 1u) << endless;
    EXPECT_GT(queue->timers().entries().back()->interval, std::chrono::years(99));
    answer("!");
  }
}

TEST_F(SerialPortRequests,
       ARequestWithTimeOut0AndAnEvaluatorThatNeverAcceptsBlocksTheQueueUntilThePortCloses) {
  const auto never = requestWith("never", [](const QByteArray &) { return false; });
  const auto waiting = request("waiting");
  port->sendRequest(never);
  port->sendRequest(waiting);
  answer("anything!");
  queue->advance(std::chrono::years(1));
  runAll();
  EXPECT_EQ(port->pendingRequest(), never);
  EXPECT_EQ(queued(), Requests{waiting});
  EXPECT_TRUE(port->close());
  runAll();
  EXPECT_EQ(port->pendingRequest(), nullptr);
  EXPECT_TRUE(queued().empty());
  EXPECT_EQ(sent(), "never");
}

TEST_F(SerialPortRequests, AResponseInTimeStopsTheTimer) {
  port->sendRequest(request("ask", 1));
  queue->advance(999ms);
  answer("ok!");
  EXPECT_EQ(queue->timers().running(), 0u);
  queue->advance(10s);
  runAll();
  EXPECT_EQ(delegate->events, QStringList{"response"});
}

TEST_F(SerialPortRequests, EachRequestHasATimeOutOfItsOwnFromWhenItIsSent) {
  const auto first = request("one", 1);
  const auto second = request("two", 1);
  port->sendRequest(first);
  queue->advance(600ms);
  port->sendRequest(second);
  EXPECT_EQ(queue->timers().running(), 1u);
  answer("ok!");
  queue->advance(900ms);
  runAll();
  EXPECT_TRUE(delegate->timeouts.empty());
  queue->advance(100ms);
  runAll();
  EXPECT_EQ(delegate->timeouts, Requests{second});
  EXPECT_EQ(queue->timers().running(), 0u) << "a timer repeats, but a time-out is told once";
  queue->advance(10s);
  runAll();
  EXPECT_EQ(delegate->timeouts.size(), 1u);
  EXPECT_EQ(port->pendingRequest(), nullptr);
}

TEST_F(SerialPortRequests, AfterATimeOutTheNextRequestIsSentOnlyOnceTheDelegateHasHeard) {
  delegate->atEvent = [&](const QString &event, const SerialPortDelegate::Port &) {
    if (event != u"timeout") return;
    queue->runAll();
    EXPECT_EQ(sent(), "one");
  };
  port->sendRequest(request("one", 1));
  port->sendRequest(request("two"));
  queue->advance(1s);
  queue->runAll();
  EXPECT_EQ(sent(), "one") << "the delegate has not heard yet";
  bench.mainQueue.runAll();
  EXPECT_EQ(delegate->events, QStringList{"timeout"});
  EXPECT_EQ(sent(), "one") << "sending is the request queue's business";
  queue->runAll();
  EXPECT_EQ(sent(), "onetwo");
}

TEST_F(SerialPortRequests, WithoutATimeOutCallbackTheNextRequestIsSentAtOnce) {
  useDelegateWithout({Callback::RequestDidTimeout});
  port->sendRequest(request("one", 1));
  port->sendRequest(request("two"));
  queue->advance(1s);
  EXPECT_EQ(sent(), "onetwo");
  runAll();
  EXPECT_TRUE(delegate->timeouts.empty());
}

TEST_F(SerialPortRequests, WithoutADelegateTheNextRequestIsSentAtOnce) {
  port->setDelegate({});
  port->sendRequest(request("one", 1));
  port->sendRequest(request("two"));
  queue->advance(1s);
  EXPECT_EQ(sent(), "onetwo");
}

TEST_F(SerialPortRequests, ADelegateThatGoesBeforeItHearsOfATimeOutDoesNotHoldUpTheNextRequest) {
  port->sendRequest(request("one", 1));
  port->sendRequest(request("two"));
  queue->advance(1s);
  port->setDelegate({});
  runAll();
  EXPECT_EQ(sent(), "onetwo");
  EXPECT_TRUE(delegate->timeouts.empty());
}

TEST_F(SerialPortRequests, WhatComesAfterTheTimeIsUpIsNoResponseAlsoBeforeTheDelegateHasHeard) {
  const auto second = request("two");
  port->sendRequest(request("one", 1));
  port->sendRequest(second);
  queue->advance(1s);
  answer("late!");
  runAll();
  EXPECT_EQ(delegate->events, QStringList{"timeout"});
  EXPECT_EQ(delegate->received, "late!");
  EXPECT_EQ(port->pendingRequest(), second);
  answer("ok!");
  runAll();
  ASSERT_EQ(delegate->responses.size(), 1u);
  EXPECT_EQ(delegate->responses[0].second, "ok!") << "sending has emptied the late bytes";
}

TEST_F(SerialPortRequests, TheTimeOutCallbackMaySendARequestWhichWaitsItsTurn) {
  const auto again = request("again");
  delegate->atEvent = [&](const QString &event, const SerialPortDelegate::Port &told) {
    EXPECT_TRUE(event != u"timeout" || told->sendRequest(again));
  };
  port->sendRequest(request("one", 1));
  port->sendRequest(request("two", 1));
  queue->advance(1s);
  runAll();
  EXPECT_EQ(sent(), "onetwo");
  EXPECT_EQ(queued(), Requests{again});
}

}  // namespace
}  // namespace tavril
