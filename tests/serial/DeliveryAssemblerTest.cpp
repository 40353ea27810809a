#include "serial/DeliveryAssembler.h"
#include "serial/DeliveryRule.h"

#include <gtest/gtest.h>

#include <vector>

namespace tavril {
namespace {

using std::chrono::milliseconds;
using Verdict = DeliveryRule::Verdict;

constexpr milliseconds bound{20};

/// A letter counts the bytes it begins: "c12" is whole, "c1" is not. Other bytes begin nothing.
Verdict byFirstLetter(const QByteArray &bytes) {
  if (bytes[0] < 'a' || bytes[0] > 'z') return Verdict::asItIs();
  const qsizetype length = bytes[0] - 'a' + 1;
  return bytes.size() < length ? Verdict::moreToCome() : Verdict::whole(length);
}

std::shared_ptr<const DeliveryRule> ruleOf(std::function<Verdict(const QByteArray &)> judge) {
  return std::make_shared<const DeliveryRule>(DeliveryRule{std::move(judge), bound});
}

class Assembler : public testing::Test {
 protected:
  void add(const QByteArray &bytes) {
    assembler.add(std::as_bytes(std::span(bytes.constData(), static_cast<std::size_t>(bytes.size()))), now);
  }
  std::vector<QByteArray> all() {
    std::vector<QByteArray> deliveries;
    while (auto delivery = assembler.next()) deliveries.push_back(*delivery);
    return deliveries;
  }
  using Deliveries = std::vector<QByteArray>;

  DeliveryAssembler::Time now{std::chrono::hours(1)};
  DeliveryAssembler assembler{ruleOf(byFirstLetter)};
};

TEST_F(Assembler, WithoutARuleEveryReadIsOneDelivery) {
  assembler = DeliveryAssembler(nullptr);
  add("c1");
  EXPECT_EQ(all(), Deliveries{"c1"});
  add("2c12");
  EXPECT_EQ(all(), Deliveries{"2c12"});
  EXPECT_FALSE(assembler.isWaiting());
}

TEST_F(Assembler, ARuleThatCannotBeAskedIsNone) {
  assembler = DeliveryAssembler(ruleOf(nullptr));
  add("c1");
  EXPECT_EQ(all(), Deliveries{"c1"});
}

TEST_F(Assembler, PiecesBecomeOneDelivery) {
  add("d");
  EXPECT_EQ(all(), Deliveries{});
  add("12");
  EXPECT_EQ(all(), Deliveries{});
  EXPECT_TRUE(assembler.isWaiting());
  add("3");
  EXPECT_EQ(all(), Deliveries{"d123"});
  EXPECT_FALSE(assembler.isWaiting());
}

TEST_F(Assembler, WhatIsGluedBecomesTwo) {
  add("c12b1");
  EXPECT_EQ(all(), (Deliveries{"c12", "b1"}));
}

TEST_F(Assembler, AWholeOneIsDeliveredWhileTheNextWaitsForItsRest) {
  add("c12d1");
  EXPECT_EQ(all(), Deliveries{"c12"});
  EXPECT_TRUE(assembler.isWaiting());
  add("23a");
  EXPECT_EQ(all(), (Deliveries{"d123", "a"}));
}

TEST_F(Assembler, AReadThatIsWholeByItselfIsNeverTakenForTheRestOfAnother) {
  add("d");
  add("c12");  // "dc12" would be one
  EXPECT_EQ(all(), (Deliveries{"d", "c12"}));
  add("e1");
  EXPECT_EQ(all(), Deliveries{});
  add("b1d1");
  EXPECT_EQ(all(), (Deliveries{"e1", "b1"})) << "nor one that only begins with a whole one";
  add("23");
  EXPECT_EQ(all(), Deliveries{"d123"});
  add("z");
  add("c12");  // "zc12" could still go on
  EXPECT_EQ(all(), (Deliveries{"z", "c12"}));
}

TEST_F(Assembler, WhatWasHeldInFrontOfAWholeReadIsJudgedAnew) {
  add("f");
  add("b");
  add("1");  // "b1" is whole, but only without what came before
  EXPECT_EQ(all(), Deliveries{});
  add("c12");
  EXPECT_EQ(all(), (Deliveries{"f", "b1", "c12"}));
}

TEST_F(Assembler, WhenHoldingWasWrongEachReadIsDeliveredAsItCame) {
  // A sign in the third place makes the beginning none.
  assembler = DeliveryAssembler(ruleOf([](const QByteArray &bytes) {
    return bytes.size() > 2 && bytes[2] == '!' ? Verdict::asItIs() : byFirstLetter(bytes);
  }));
  add("e");
  add("1");
  EXPECT_EQ(all(), Deliveries{});
  add("!?");
  EXPECT_EQ(all(), (Deliveries{"e", "1", "!?"}));
}

TEST_F(Assembler, AfterAFalseBeginningTheReadsBehindItAreJudgedByThemselves) {
  assembler = DeliveryAssembler(ruleOf([](const QByteArray &bytes) {
    return bytes.startsWith("zz") ? Verdict::asItIs() : byFirstLetter(bytes);
  }));
  add("z");
  EXPECT_EQ(all(), Deliveries{});
  add("zc12");
  EXPECT_EQ(all(), Deliveries{"z"}) << "the rest begins something";
  EXPECT_TRUE(assembler.isWaiting());
}

TEST_F(Assembler, TheTimeOfAReadBehindAFalseBeginningCountsFromWhenThatReadCame) {
  add("d1");
  EXPECT_EQ(all(), Deliveries{});
  now += milliseconds(19);
  add("c");
  EXPECT_EQ(all(), Deliveries{});
  now += milliseconds(1);
  EXPECT_EQ(assembler.timeLeft(now), milliseconds(0));
  EXPECT_EQ(assembler.takeFirstRead(), "d1");
  EXPECT_EQ(all(), Deliveries{});
  EXPECT_EQ(assembler.timeLeft(now), milliseconds(19));
  add("12");
  EXPECT_EQ(all(), Deliveries{"c12"});
}

TEST_F(Assembler, WhatBeginsNothingIsDeliveredAsItIsWithAllThatCameWithIt) {
  add("?c12");
  EXPECT_EQ(all(), Deliveries{"?c12"});
  add("c12?c1");
  EXPECT_EQ(all(), (Deliveries{"c12", "?c1"}));
}

TEST_F(Assembler, TheTimeCountsFromTheFirstByteWhateverFollows) {
  add("z");
  EXPECT_EQ(all(), Deliveries{});
  EXPECT_EQ(assembler.timeLeft(now), bound);
  now += milliseconds(15);
  add("12");
  EXPECT_EQ(all(), Deliveries{});
  EXPECT_EQ(assembler.timeLeft(now), milliseconds(5));
  now += std::chrono::microseconds(4500);
  EXPECT_EQ(assembler.timeLeft(now), milliseconds(1)) << "rounded up: a wait of no time would spin";
  now += milliseconds(1);
  EXPECT_EQ(assembler.timeLeft(now), milliseconds(0));
  EXPECT_EQ(assembler.takeFirstRead(), "z");
  EXPECT_EQ(all(), Deliveries{"12"});
  EXPECT_FALSE(assembler.isWaiting());
}

TEST_F(Assembler, AfterAWholeOneTheTimeOfTheRestCountsFromWhenItCame) {
  add("c1");
  EXPECT_EQ(all(), Deliveries{});
  now += milliseconds(18);
  add("2d");
  EXPECT_EQ(all(), Deliveries{"c12"});
  EXPECT_EQ(assembler.timeLeft(now), bound);
}

TEST_F(Assembler, ARestThatComesTooLateBeginsAnew) {
  add("d1");
  EXPECT_EQ(all(), Deliveries{});
  EXPECT_EQ(assembler.takeFirstRead(), "d1");
  add("23");
  EXPECT_EQ(all(), Deliveries{"23"});
}

TEST_F(Assembler, NoMoreIsHeldThanTheLargestDelivery) {
  assembler = DeliveryAssembler(ruleOf([](const QByteArray &) { return Verdict::moreToCome(); }));
  const auto most = static_cast<qsizetype>(DeliveryAssembler::largestDelivery);
  add(QByteArray(most - 1, 'x'));
  EXPECT_EQ(all(), Deliveries{});
  EXPECT_EQ(assembler.room(), 1U);
  add("x");
  EXPECT_EQ(all(), Deliveries{QByteArray(most - 1, 'x')}) << "a rule that never has enough";
  EXPECT_EQ(assembler.room(), DeliveryAssembler::largestDelivery - 1);
}

TEST_F(Assembler, ARuleThatCountsWrongLosesNothing) {
  for (const qsizetype count : {qsizetype(-1), qsizetype(0), qsizetype(4), qsizetype(1000)}) {
    assembler = DeliveryAssembler(ruleOf([&](const QByteArray &) { return Verdict::whole(count); }));
    add("abc");
    EXPECT_EQ(all(), Deliveries{"abc"}) << count;
  }
}

TEST_F(Assembler, ARuleIsAskedOnceAboutTheSameBytes) {
  int asked = 0;
  assembler = DeliveryAssembler(ruleOf([&](const QByteArray &bytes) {
    ++asked;
    return byFirstLetter(bytes);
  }));
  add("c1");
  for (int i = 0; i < 5; ++i) EXPECT_EQ(all(), Deliveries{});
  EXPECT_EQ(asked, 1);
  add("2");
  EXPECT_EQ(all(), Deliveries{"c12"});
  EXPECT_EQ(asked, 3) << "about the read by itself, and about all that is held";
}

}  // namespace
}  // namespace tavril
