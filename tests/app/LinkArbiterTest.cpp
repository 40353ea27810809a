#include "app/LinkArbiter.h"
#include "platform/Bytes.h"

#include <QByteArray>

#include <gtest/gtest.h>

#include <algorithm>

namespace tavril {
namespace {

using namespace std::chrono_literals;
using Guest = LinkArbiter::Guest;
using Receiver = LinkArbiter::Receiver;
using Turn = LinkArbiter::Turn;

constexpr Guest sampler{1};
constexpr Guest plan{2};

const char *const readRegister8 = "FF059108FE";
const char *const readRegister9 = "FF059109FE";
const char *const readPosition = "FF0497FE";
const char *const register8Is300 = "FF079108012CFE";
const char *const register9Is440 = "FF07910901B8FE";
const char *const positionIs1023 = "FF069703FFFE";
const char *const moveTo1023 = "FF069603FFFE";
const char *const release = "FF0493FE";
const char *const error = "FF05F904FE";

wire::CommandBuffer command(const char *hex) {
  wire::CommandBuffer buffer{};
  std::ranges::copy(QByteArray::fromHex(hex), buffer.begin());
  return buffer;
}

class LinkArbiterTest : public testing::Test {
 protected:
  LinkArbiterTest() { arbiter.setServesGuests(true); }

  void pass(std::chrono::milliseconds time) { now += time; }

  /// Whether the command is sent at once.
  bool editorSends(const char *hex) {
    arbiter.editorAsks(command(hex), now);
    return sentByEditor() == hex;
  }
  /// What the editor sends now.
  QByteArray sentByEditor() {
    const auto sent = arbiter.nextOfEditor(now);
    if (!sent) return {};
    return QByteArray(reinterpret_cast<const char *>(sent->data()), (*sent)[1]).toHex().toUpper();
  }
  Turn turn(Guest guest, const char *hex) { return arbiter.turnOf(guest, command(hex), now); }

  LinkArbiter::Route routeAt(const char *hex, LinkArbiter::Time came) {
    const QByteArray delivery = QByteArray::fromHex(hex);
    return arbiter.routeOf(asBytes(delivery), came, now);
  }
  LinkArbiter::Route route(const char *hex) { return routeAt(hex, now); }
  Receiver receiver(const char *hex) { return route(hex).receiver; }

  LinkArbiter arbiter;
  LinkArbiter::Time now{1h};
};

// -------------------------------------------------------------------------------------------- the editor

TEST_F(LinkArbiterTest, WithoutGuestsTheEditorSendsAtOnceAndGetsEverything) {
  for (int times = 0; times < 3; ++times) {
    EXPECT_TRUE(editorSends(readRegister8));
    EXPECT_EQ(receiver(error), Receiver::Editor);
    EXPECT_EQ(receiver("FF07"), Receiver::Editor);
    EXPECT_EQ(receiver(""), Receiver::Editor);
    EXPECT_EQ(receiver(register8Is300), Receiver::Editor);
    EXPECT_EQ(receiver(register8Is300), Receiver::Editor) << "a copy, which the decoder gets as well";
    EXPECT_EQ(receiver(positionIs1023), Receiver::Editor) << "not asked for";
    EXPECT_EQ(receiver("FF0493FE"), Receiver::Editor);
  }
}

TEST_F(LinkArbiterTest, TheEditorWaitsForTheExchangeOfAGuestUntilItIsAnswered) {
  ASSERT_EQ(turn(sampler, readPosition), Turn::Now);
  EXPECT_FALSE(editorSends(readRegister8));
  pass(5ms);
  EXPECT_EQ(receiver(positionIs1023), Receiver::Guest);
  EXPECT_EQ(sentByEditor(), readRegister8);
}

TEST_F(LinkArbiterTest, TheEditorWaitsThirtyMillisecondsAtMostAndKeepsItsOrder) {
  ASSERT_EQ(turn(sampler, readPosition), Turn::Now);
  pass(1ms);
  EXPECT_FALSE(editorSends(readRegister8));
  pass(10ms);
  EXPECT_FALSE(editorSends(readRegister9));
  EXPECT_EQ(arbiter.nextChange(now), now + 20ms);
  pass(19ms);
  EXPECT_EQ(sentByEditor(), "");
  pass(1ms);
  EXPECT_EQ(sentByEditor(), readRegister8);
  EXPECT_EQ(sentByEditor(), "") << "this one has only waited 20 ms";
  EXPECT_EQ(arbiter.nextChange(now), now + 10ms);
  pass(10ms);
  EXPECT_EQ(sentByEditor(), readRegister9);
}

TEST_F(LinkArbiterTest, AGuestThatGivesUpLetsTheEditorGo) {
  ASSERT_EQ(turn(sampler, readPosition), Turn::Now);
  EXPECT_FALSE(editorSends(readRegister8));
  arbiter.givesUp(sampler, now);
  EXPECT_EQ(sentByEditor(), readRegister8);
}

// --------------------------------------------------------------------------------------------- waiting

TEST_F(LinkArbiterTest, GuestsAreNotServedUntilTheyMayBe) {
  arbiter.setServesGuests(false);
  EXPECT_EQ(turn(sampler, readPosition), Turn::NotServed);
  arbiter.setServesGuests(true);
  EXPECT_EQ(turn(sampler, readPosition), Turn::Now);
}

TEST_F(LinkArbiterTest, GuestsTakeTurns) {
  ASSERT_EQ(turn(sampler, readPosition), Turn::Now);
  EXPECT_EQ(turn(plan, readRegister8), Turn::Later);
  EXPECT_EQ(receiver(positionIs1023), Receiver::Guest);
  EXPECT_EQ(turn(sampler, readPosition), Turn::Later) << "the other one has waited longer";
  EXPECT_EQ(turn(plan, readRegister8), Turn::Now);
  EXPECT_EQ(route(register8Is300).guest, plan);
  EXPECT_EQ(turn(sampler, readPosition), Turn::Now);
}

TEST_F(LinkArbiterTest, AGuestThatLeavesKeepsNobodyWaiting) {
  ASSERT_EQ(turn(sampler, readPosition), Turn::Now);
  EXPECT_EQ(turn(plan, readRegister8), Turn::Later);
  arbiter.leaves(plan);
  EXPECT_EQ(receiver(positionIs1023), Receiver::Guest);
  EXPECT_EQ(turn(sampler, readPosition), Turn::Now);
}

TEST_F(LinkArbiterTest, GuestsWaitForTheAnswerToTheEditorOneSecondAtMost) {
  ASSERT_TRUE(editorSends(readRegister8));
  EXPECT_EQ(turn(sampler, readPosition), Turn::Later);
  EXPECT_EQ(receiver(register8Is300), Receiver::Editor);
  EXPECT_EQ(turn(sampler, readPosition), Turn::Now);
  EXPECT_EQ(receiver(positionIs1023), Receiver::Guest);

  ASSERT_TRUE(editorSends(readRegister8));
  pass(999ms);
  EXPECT_EQ(turn(sampler, readPosition), Turn::Later);
  EXPECT_EQ(arbiter.nextChange(now), now + 1ms);
  pass(1ms);
  EXPECT_EQ(turn(sampler, readPosition), Turn::Now);
}

TEST_F(LinkArbiterTest, GuestsWaitDuringASweepAlsoWhileItsWritesAreAnswered) {
  for (const char *hex : {"FF0792010001FE", "FF07920E000AFE"}) {
    ASSERT_TRUE(editorSends(hex));
    const QByteArray acknowledgement = "FF0592" + QByteArray(hex).sliced(6, 2) + "FE";
    EXPECT_EQ(receiver(acknowledgement.constData()), Receiver::Editor);
    EXPECT_EQ(turn(sampler, readPosition), Turn::Later);
    pass(100ms);
    EXPECT_EQ(turn(sampler, readPosition), Turn::Later);
  }
  ASSERT_TRUE(editorSends("FF07920FFFF6FE"));
  EXPECT_EQ(turn(sampler, readPosition), Turn::Later);
  EXPECT_EQ(receiver("FF05920FFE"), Receiver::Editor);
  EXPECT_EQ(turn(sampler, readPosition), Turn::Now) << "the last setting was written";
}

TEST_F(LinkArbiterTest, ASweepThatBreaksOffKeepsGuestsWaitingForASecond) {
  ASSERT_TRUE(editorSends("FF0792010001FE"));
  EXPECT_EQ(receiver("FF059201FE"), Receiver::Editor);
  EXPECT_EQ(arbiter.nextChange(now), now + 1s);
  pass(1s);
  EXPECT_EQ(turn(sampler, readPosition), Turn::Now);
}

TEST_F(LinkArbiterTest, NobodyWaitsForAnAnswerToARelease) {
  ASSERT_TRUE(editorSends(release));
  EXPECT_EQ(turn(sampler, readPosition), Turn::Now);
  EXPECT_EQ(receiver(positionIs1023), Receiver::Guest);
  ASSERT_TRUE(arbiter.claimChanges(plan));
  ASSERT_EQ(turn(plan, release), Turn::Now);
  EXPECT_FALSE(arbiter.isOpen(plan));
  EXPECT_TRUE(editorSends(readRegister8));
  EXPECT_EQ(receiver("FF0493FE"), Receiver::Nobody) << "should a servo answer it all the same";
}

// --------------------------------------------------------------------------------------------- changes

TEST_F(LinkArbiterTest, OneGuestAtATimeMayMoveOrWrite) {
  for (const char *hex : {"FF0792010001FE", release, "FF0494FE", "FF0495FE", moveTo1023}) {
    EXPECT_EQ(turn(plan, hex), Turn::NotAllowed) << hex;
  }
  EXPECT_TRUE(arbiter.claimChanges(plan));
  EXPECT_TRUE(arbiter.claimChanges(plan));
  EXPECT_FALSE(arbiter.claimChanges(sampler));
  arbiter.releaseChanges(sampler);
  EXPECT_EQ(turn(sampler, moveTo1023), Turn::NotAllowed);
  EXPECT_EQ(turn(plan, moveTo1023), Turn::Now);
  arbiter.releaseChanges(plan);
  EXPECT_TRUE(arbiter.claimChanges(sampler));
}

TEST_F(LinkArbiterTest, WhoMayChangeSomethingMayStopAtAnyTime) {
  EXPECT_FALSE(arbiter.stops(plan, command(release), now));
  ASSERT_TRUE(arbiter.claimChanges(plan));
  ASSERT_TRUE(editorSends(readRegister8));
  arbiter.setServesGuests(false);
  EXPECT_FALSE(arbiter.stops(sampler, command(release), now));
  EXPECT_TRUE(arbiter.stops(plan, command(moveTo1023), now));
  EXPECT_EQ(receiver("FF0496FE"), Receiver::Nobody);
  EXPECT_EQ(receiver(error), Receiver::Editor);
  EXPECT_EQ(receiver(register8Is300), Receiver::Editor);
}

// --------------------------------------------------------------------------------------------- routes

TEST_F(LinkArbiterTest, AnAnswerGoesToWhoAskedForThisRegister) {
  ASSERT_EQ(turn(sampler, readRegister8), Turn::Now);
  arbiter.editorAsks(command(readRegister9), now);
  pass(30ms);
  ASSERT_EQ(sentByEditor(), readRegister9);
  const auto answer = route(register8Is300);
  EXPECT_EQ(answer.receiver, Receiver::Guest);
  EXPECT_EQ(answer.guest, sampler);
  EXPECT_TRUE(answer.isAnswer);
  EXPECT_FALSE(arbiter.isOpen(sampler));
  EXPECT_EQ(receiver(register9Is440), Receiver::Editor);
}

TEST_F(LinkArbiterTest, IfBothAskedTheEditorGetsTheFirstAnswerAndTheGuestTheNext) {
  ASSERT_EQ(turn(sampler, readRegister8), Turn::Now);
  arbiter.editorAsks(command(readRegister8), now);
  pass(30ms);
  ASSERT_EQ(sentByEditor(), readRegister8);
  EXPECT_EQ(receiver(register8Is300), Receiver::Editor);
  EXPECT_TRUE(arbiter.isOpen(sampler));
  EXPECT_EQ(receiver(register8Is300), Receiver::Guest);
  EXPECT_EQ(receiver(register8Is300), Receiver::Nobody);
}

TEST_F(LinkArbiterTest, ALateAnswerToAGuestIsNobodysForASecond) {
  ASSERT_EQ(turn(sampler, readRegister8), Turn::Now);
  pass(100ms);
  arbiter.givesUp(sampler, now);
  pass(500ms);
  EXPECT_EQ(receiver(register8Is300), Receiver::Nobody);
  pass(500ms);
  EXPECT_EQ(receiver(register8Is300), Receiver::Editor);
}

TEST_F(LinkArbiterTest, ALateAnswerToAGuestIsTheEditorsIfItAskedTheSame) {
  ASSERT_EQ(turn(sampler, readRegister8), Turn::Now);
  arbiter.givesUp(sampler, now);
  ASSERT_TRUE(editorSends(readRegister8));
  EXPECT_EQ(receiver(register8Is300), Receiver::Editor);
  EXPECT_EQ(receiver(register8Is300), Receiver::Nobody);
}

TEST_F(LinkArbiterTest, ACopyOfAGuestsAnswerIsNobodys) {
  ASSERT_EQ(turn(sampler, readRegister8), Turn::Now);
  EXPECT_EQ(receiver(register8Is300), Receiver::Guest);
  EXPECT_EQ(receiver(register8Is300), Receiver::Nobody);
}

TEST_F(LinkArbiterTest, WhatWasReadBeforeAQuestionWasSentDoesNotAnswerIt) {
  ASSERT_EQ(turn(sampler, readRegister8), Turn::Now);
  const auto read = now;
  EXPECT_EQ(receiver(register8Is300), Receiver::Guest);
  pass(1ms);
  ASSERT_EQ(turn(sampler, readRegister8), Turn::Now);
  const auto copy = routeAt(register8Is300, read);
  EXPECT_EQ(copy.receiver, Receiver::Nobody);
  EXPECT_TRUE(arbiter.isOpen(sampler));
  EXPECT_EQ(receiver(register8Is300), Receiver::Guest);

  ASSERT_TRUE(editorSends(readRegister8));
  EXPECT_EQ(routeAt(register8Is300, read).receiver, Receiver::Nobody);
  EXPECT_EQ(receiver(register8Is300), Receiver::Editor);
}

TEST_F(LinkArbiterTest, WhatIsNoReplyIsAGuestsOnlyIfNobodyElseWaits) {
  // An error, the beginning of a reply, one that is a byte short, noise with a reply in it, an impossible
  // position.
  for (const char *hex : {error, "FF07", "FF06910801FE", "00FF079108012CFE", "FF0697FFFFFE"}) {
    EXPECT_EQ(receiver(hex), Receiver::Editor) << hex;
    ASSERT_EQ(turn(sampler, readRegister8), Turn::Now);
    const auto toGuest = route(hex);
    EXPECT_EQ(toGuest.receiver, Receiver::Guest) << hex;
    EXPECT_FALSE(toGuest.isAnswer);
    arbiter.editorAsks(command(readRegister9), now);
    pass(30ms);
    ASSERT_EQ(sentByEditor(), readRegister9);
    EXPECT_EQ(receiver(hex), Receiver::Editor) << hex;
    EXPECT_EQ(receiver(register9Is440), Receiver::Editor);
    EXPECT_EQ(receiver(register8Is300), Receiver::Guest);
  }
}

TEST_F(LinkArbiterTest, WhatIsNoReplyIsNobodysSoonAfterAGuestGaveUp) {
  ASSERT_EQ(turn(sampler, readRegister8), Turn::Now);
  pass(100ms);
  arbiter.givesUp(sampler, now);
  EXPECT_EQ(receiver("FF07"), Receiver::Nobody)
      << "the beginning of a late reply must not make the editor read";
  pass(1s);
  EXPECT_EQ(receiver("FF07"), Receiver::Editor);
}

TEST_F(LinkArbiterTest, AfterThePortWasOpenedOrClosedNobodyAwaitsAnything) {
  ASSERT_EQ(turn(sampler, readRegister8), Turn::Now);
  EXPECT_FALSE(editorSends(readRegister9));
  arbiter.forget();
  EXPECT_EQ(sentByEditor(), "");
  EXPECT_FALSE(arbiter.isOpen(sampler));
  EXPECT_EQ(receiver(register8Is300), Receiver::Editor);
  EXPECT_EQ(turn(sampler, readRegister8), Turn::Now);
}

// --------------------------------------------------------------------------------------------- repeats

TEST_F(LinkArbiterTest, AQuestionIsRepeatedOnlyAfterAReadOfAnotherRegisterWasAnswered) {
  ASSERT_EQ(turn(sampler, readPosition), Turn::Now);
  pass(100ms);
  arbiter.givesUp(sampler, now);
  EXPECT_EQ(turn(sampler, readPosition), Turn::TooSoon);
  EXPECT_EQ(turn(plan, readPosition), Turn::TooSoon) << "nor may another guest";
  ASSERT_EQ(turn(sampler, readRegister8), Turn::Now);
  pass(5ms);
  ASSERT_EQ(receiver(register8Is300), Receiver::Guest);
  EXPECT_EQ(turn(sampler, readPosition), Turn::Now);
}

TEST_F(LinkArbiterTest, TheEditorsOwnAnswerIsStillToComeIfItGotTheLateOneOfAGuest) {
  ASSERT_EQ(turn(sampler, readPosition), Turn::Now);
  pass(40ms);
  arbiter.givesUp(sampler, now);
  ASSERT_TRUE(editorSends(readRegister8));
  ASSERT_TRUE(editorSends(readPosition));
  pass(1ms);
  ASSERT_EQ(receiver(positionIs1023), Receiver::Editor);
  ASSERT_EQ(receiver(register8Is300), Receiver::Editor);
  EXPECT_EQ(turn(plan, readPosition), Turn::TooSoon) << "its answer would be taken for that to the editor";
  EXPECT_EQ(receiver(positionIs1023), Receiver::Nobody);
}

TEST_F(LinkArbiterTest, AnErrorReportIsNoAnswerThatAllowsARepetition) {
  ASSERT_EQ(turn(sampler, readPosition), Turn::Now);
  ASSERT_EQ(receiver(error), Receiver::Guest);
  arbiter.givesUp(sampler, now);
  EXPECT_EQ(turn(sampler, readPosition), Turn::TooSoon)
      << "it may have been the report of an earlier question";
}

TEST_F(LinkArbiterTest, AnAnswerToTheEditorAllowsTheRepetitionAsWell) {
  ASSERT_EQ(turn(sampler, readPosition), Turn::Now);
  arbiter.givesUp(sampler, now);
  pass(1ms);
  ASSERT_TRUE(editorSends(readRegister8));
  ASSERT_EQ(receiver(register8Is300), Receiver::Editor);
  EXPECT_EQ(turn(sampler, readPosition), Turn::Now);
}

TEST_F(LinkArbiterTest, AServoThatDoesNotAnswerMayBeAskedAgainAfterASecond) {
  ASSERT_EQ(turn(sampler, readPosition), Turn::Now);
  arbiter.givesUp(sampler, now);
  pass(999ms);
  EXPECT_EQ(turn(sampler, readPosition), Turn::TooSoon);
  pass(1ms);
  EXPECT_EQ(turn(sampler, readPosition), Turn::Now);
}

TEST_F(LinkArbiterTest, WhatNeedNotBeAnsweredMayBeRepeated) {
  ASSERT_TRUE(arbiter.claimChanges(plan));
  for (const char *hex : {moveTo1023, "FF0792010001FE", release}) {
    for (int times = 0; times < 2; ++times) {
      ASSERT_EQ(turn(plan, hex), Turn::Now) << hex;
      arbiter.givesUp(plan, now);
    }
  }
}

}  // namespace
}  // namespace tavril
