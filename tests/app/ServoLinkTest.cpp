#include "app/LinkGuest.h"
#include "app/ServoLink.h"
#include "tests/app/FaultyServo.h"
#include "tests/app/GuestBench.h"
#include "tests/support/Responder.h"

#include <algorithm>
#include <atomic>
#include <future>
#include <optional>
#include <stop_token>
#include <thread>
#include <vector>

namespace tavril {
namespace {

using namespace std::chrono_literals;
using Outcome = LinkAnswer::Outcome;

constexpr std::chrono::seconds longTime{30};

wire::CommandBuffer command(const char *hex) {
  wire::CommandBuffer buffer{};
  std::ranges::copy(QByteArray::fromHex(hex), buffer.begin());
  return buffer;
}

const wire::CommandBuffer readPosition = command("FF0497FE");
const wire::CommandBuffer readRegister8 = command("FF059108FE");
const wire::CommandBuffer moveTo1023 = command("FF069603FFFE");
const wire::CommandBuffer release = command("FF0493FE");

QByteArray hexOf(const std::vector<std::uint8_t> &bytes) {
  return QByteArray(reinterpret_cast<const char *>(bytes.data()), static_cast<qsizetype>(bytes.size()))
      .toHex();
}

class ServoLinkTest : public GuestBench {
 protected:
  std::future<LinkAnswer> asks(const wire::CommandBuffer &question,
                               std::chrono::milliseconds timeout = longTime,
                               const std::stop_token &cancelled = {}, const ServoLink::Until &until = {}) {
    return std::async(std::launch::async, [=, link = application->link()] {
      return LinkGuest(link).ask(question, until, timeout, cancelled);
    });
  }
  /// The frame of the next command on the line.
  QByteArray nextFrame() {
    const QByteArray sent = pty->read(50);
    EXPECT_EQ(sent.size(), 50);
    return sent.first(FaultyServo::byteAt(sent, 1)).toHex();
  }

  std::stop_source cancelling;
};

TEST_F(ServoLinkTest, AGuestIsAnsweredWithTheTimesOfAskingAndArrival) {
  const QString shownBefore = textOf("RXcmd");
  const auto before = std::chrono::steady_clock::now();
  auto answer = asks(readPosition);
  EXPECT_EQ(nextFrame(), "ff0497fe");
  const auto between = std::chrono::steady_clock::now();
  pty->write(QByteArray::fromHex("FF069703FFFE"));
  const LinkAnswer got = answer.get();
  EXPECT_EQ(got.outcome, Outcome::Answered);
  EXPECT_EQ(hexOf(got.bytes), "ff069703fffe");
  EXPECT_GE(got.sent, before);
  EXPECT_LE(got.sent, between);
  EXPECT_GE(got.arrived, between);
  EXPECT_EQ(bench.mainQueue.pending(), 0U) << "the answer takes no place in the main queue";
  EXPECT_EQ(textOf("RXcmd"), shownBefore);
}

TEST_F(ServoLinkTest, AGuestGoesOnWhileAModalAlertHoldsTheMainThread) {
  int answers = 0;
  alert.whileUp = [&] {
    const Responder servo(*pty, [](const QByteArray &) { return QByteArray::fromHex("FF069703FFFE"); });
    for (int times = 0; times < 20; ++times) {
      if (asks(readPosition).get().outcome == Outcome::Answered) ++answers;
    }
  };
  application->didReceiveData(application->serialPort(), QByteArray::fromHex("FF059000FE"));
  EXPECT_EQ(alert.contents.size(), 1U);
  EXPECT_EQ(answers, 20);
  EXPECT_EQ(state.ToolbarFlag, "MotorInitFail");
}

TEST_F(ServoLinkTest, ACommandOfTheEditorGoesOutAfterTheExchangeWithoutTheMainThread) {
  auto answer = asks(readPosition, 100ms);
  EXPECT_EQ(nextFrame(), "ff0497fe");
  for (const auto &frame : {release, readRegister8}) {
    state.SerialCMD = frame;
    application->SendCMDtoMCU();
    EXPECT_EQ(state.SerialCMD, wire::CommandBuffer{});
  }
  EXPECT_EQ(nextFrame(), "ff0493fe") << "the guest is not answered, and this thread waits for the line";
  EXPECT_EQ(nextFrame(), "ff059108fe");
  pty->write(QByteArray::fromHex("FF079108012CFE"));
  EXPECT_TRUE(bench.mainQueue.runNext());
  EXPECT_EQ(textOf("MaxLoad_value"), "300");
  EXPECT_EQ(answer.get().outcome, Outcome::Unanswered);
}

TEST_F(ServoLinkTest, WhatIsEnoughForTheGuestEndsItsExchange) {
  const auto hasError = [](wire::Bytes bytes) { return bytes.size() == 5 && bytes[2] == 249; };
  auto answer = asks(readPosition, longTime, {}, hasError);
  EXPECT_EQ(nextFrame(), "ff0497fe");
  pty->write(QByteArray::fromHex("FF05F904FE"));
  const LinkAnswer got = answer.get();
  EXPECT_EQ(got.outcome, Outcome::Answered);
  EXPECT_EQ(hexOf(got.bytes), "ff05f904fe");
  EXPECT_EQ(asks(readPosition).get().outcome, Outcome::TooSoon);
}

TEST_F(ServoLinkTest, NoGuestIsServedWithoutAServoOrAfterTheUserGaveUp) {
  state.CanUseTavril = QStringLiteral("fail");
  EXPECT_EQ(asks(readPosition).get().outcome, Outcome::NotServed);
  state.CanUseTavril = QStringLiteral("true");
  state.CancelConnectFlag = QStringLiteral("disconnect");
  EXPECT_EQ(asks(readPosition).get().outcome, Outcome::NotServed);
  state.CancelConnectFlag.clear();
  auto answer = asks(readPosition);
  EXPECT_EQ(nextFrame(), "ff0497fe");
  pty->write(QByteArray::fromHex("FF069703FFFE"));
  EXPECT_EQ(answer.get().outcome, Outcome::Answered);
  state.CanUseTavril.clear();
  EXPECT_EQ(asks(readPosition).get().outcome, Outcome::NotServed);
}

TEST_F(ServoLinkTest, NoGuestIsServedOnAPortThatWasOpenedAnewUntilAServoWasDetected) {
  ASSERT_TRUE(application->serialPort()->close());
  ASSERT_TRUE(application->serialPort()->open());
  EXPECT_EQ(asks(readPosition).get().outcome, Outcome::NotServed);
  state.CanUseTavril = QStringLiteral("true");  // as it was, which the decoder says anew
  auto answer = asks(readPosition);
  EXPECT_EQ(nextFrame(), "ff0497fe");
  pty->write(QByteArray::fromHex("FF069703FFFE"));
  EXPECT_EQ(answer.get().outcome, Outcome::Answered);
}

TEST_F(ServoLinkTest, AGuestThatWaitsForItsTurnIsToldThatNoneIsServedAnyMore) {
  state.SerialCMD = readRegister8;
  application->SendCMDtoMCU();
  EXPECT_EQ(nextFrame(), "ff059108fe");
  auto answer = asks(readPosition);
  EXPECT_EQ(answer.wait_for(20ms), std::future_status::timeout);
  state.CanUseTavril = QStringLiteral("fail");
  EXPECT_EQ(answer.get().outcome, Outcome::NotServed);
}

TEST_F(ServoLinkTest, AQuestionCanBeCancelledFromAnotherThread) {
  auto sent = asks(readPosition, longTime, cancelling.get_token());
  EXPECT_EQ(nextFrame(), "ff0497fe");
  auto waiting = asks(readRegister8, longTime, cancelling.get_token());
  EXPECT_EQ(sent.wait_for(20ms), std::future_status::timeout);
  cancelling.request_stop();
  EXPECT_EQ(sent.get().outcome, Outcome::Cancelled);
  EXPECT_EQ(waiting.get().outcome, Outcome::Cancelled);
  EXPECT_EQ(asks(readRegister8, longTime, cancelling.get_token()).get().outcome, Outcome::Cancelled);
  EXPECT_EQ(pty->readPending(), QByteArray()) << "what was cancelled before its turn was never sent";
}

TEST_F(ServoLinkTest, OneGuestAtATimeChangesSomethingAndStopsWithoutWaiting) {
  LinkGuest run(application->link());
  EXPECT_EQ(asks(moveTo1023).get().outcome, Outcome::NotAllowed);
  EXPECT_FALSE(run.stop(release));
  {
    LinkGuest before(application->link());
    EXPECT_TRUE(before.claimChanges());
    EXPECT_FALSE(run.claimChanges());
  }
  EXPECT_TRUE(run.claimChanges()) << "the claim has ended with the other guest";
  EXPECT_EQ(run.ask(release, {}, longTime).outcome, Outcome::Sent);
  EXPECT_EQ(nextFrame(), "ff0493fe");

  auto sampled = asks(readPosition);
  EXPECT_EQ(nextFrame(), "ff0497fe");
  EXPECT_TRUE(run.stop(moveTo1023));
  EXPECT_EQ(nextFrame(), "ff069603fffe") << "although another guest awaits an answer";
  pty->write(QByteArray::fromHex("FF0496FEFF069703FFFE"));
  EXPECT_EQ(sampled.get().outcome, Outcome::Answered);
  EXPECT_EQ(bench.mainQueue.pending(), 0U);
}

TEST_F(ServoLinkTest, ClosingThePortTellsTheGuestsThatWait) {
  auto sent = asks(readPosition);
  EXPECT_EQ(nextFrame(), "ff0497fe");
  auto waiting = asks(readRegister8);
  EXPECT_EQ(sent.wait_for(20ms), std::future_status::timeout);
  EXPECT_TRUE(application->serialPort()->close());
  EXPECT_EQ(sent.get().outcome, Outcome::Closed);
  EXPECT_EQ(waiting.get().outcome, Outcome::Closed);
  EXPECT_EQ(asks(readPosition).get().outcome, Outcome::Closed);
}

TEST_F(ServoLinkTest, APulledPlugTellsTheGuestsThatWait) {
  auto answer = asks(readPosition);
  EXPECT_EQ(nextFrame(), "ff0497fe");
  pty->unplug();
  std::jthread waker([&] {
    answer.wait();
    bench.mainQueue.async([] {});
  });
  ASSERT_TRUE(bench.mainQueue.runUntil([&] { return answer.wait_for(0s) == std::future_status::ready; }));
  waker.join();  // before the future is used up
  EXPECT_EQ(answer.get().outcome, Outcome::Closed);
}

TEST_F(ServoLinkTest, GuestsOutliveTheApplicationDelegate) {
  LinkGuest guest(application->link());
  auto answer = std::async(std::launch::async, [&] { return guest.ask(readPosition, {}, longTime); });
  EXPECT_EQ(nextFrame(), "ff0497fe");
  application->serialPort()->setDelegate({});
  application.reset();
  EXPECT_EQ(answer.get().outcome, Outcome::Closed);
  EXPECT_EQ(guest.ask(readPosition, {}, longTime).outcome, Outcome::Closed);
}

TEST_F(ServoLinkTest, TheEditorReadsAllRegistersInTheirOrderWhileAGuestAsksWithoutPause) {
  std::vector<int> read;
  std::optional<Responder> servo(std::in_place, *pty, [&](const QByteArray &came) {
    QByteArray replies;
    for (qsizetype at = 0; at + 50 <= came.size(); at += 50) {
      const int number = FaultyServo::byteAt(came, at + 3);
      if (FaultyServo::byteAt(came, at + 2) == 151) {
        replies += QByteArray::fromHex("FF06970001FE");
      } else {
        read.push_back(number);
        replies += QByteArray::fromHex("FF0791") + static_cast<char>(number) + QByteArray::fromHex("0001FE");
      }
    }
    return replies;
  });
  std::atomic<int> answers = 0;
  std::jthread guest([&](const std::stop_token &stop) {
    LinkGuest sampler(application->link());
    while (!stop.stop_requested()) {
      if (sampler.ask(readPosition, {}, longTime, stop).outcome == Outcome::Answered) ++answers;
    }
  });
  for (int times = 0; times < 5; ++times) {
    elements.at(QStringLiteral("PresentLoad_value")).setText(QString());
    state.FunctionCMD->ReadMotorParameter(1);
    ASSERT_TRUE(bench.mainQueue.runUntil([&] { return textOf("PresentLoad_value") == "1"; }));
  }
  guest.request_stop();
  guest.join();
  servo.reset();
  EXPECT_GT(answers, 0);
  ASSERT_EQ(read.size(), 100U);
  for (std::size_t k = 0; k < read.size(); ++k) EXPECT_EQ(read[k], static_cast<int>(k % 20) + 1);
}

}  // namespace
}  // namespace tavril
