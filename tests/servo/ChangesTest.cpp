#include "servo/Changes.h"

#include <gtest/gtest.h>

#include <vector>

namespace tavril::servo {
namespace {

TEST(Dangers, AreValuesThatMayLockTheServoUp) {
  EXPECT_EQ(dangersOf({{2, 0}}, {}).size(), 1U);
  EXPECT_EQ(dangersOf({{2, 1}}, {}).size(), 0U);
  for (const int limit : {5, 7, 8}) EXPECT_EQ(dangersOf({{limit, 0}}, {}).size(), 1U) << limit;
  EXPECT_EQ(dangersOf({{6, 0}}, {}).size(), 0U);
}

TEST(Dangers, AreVoltagesTheWrongWayRound) {
  EXPECT_EQ(dangersOf({{6, 85}}, {{7, 84}}).size(), 1U);
  EXPECT_EQ(dangersOf({{7, 59}}, {{6, 60}}).size(), 1U);
  EXPECT_EQ(dangersOf({{6, 70}, {7, 60}}, {{6, 10}, {7, 90}}).size(), 1U);
  EXPECT_EQ(dangersOf({{6, 60}, {7, 60}}, {}).size(), 0U);
  // What was so before is not this change's doing.
  EXPECT_EQ(dangersOf({{9, 5}}, {{6, 85}, {7, 60}}).size(), 0U);
}

TEST(Dangers, AreLimitsThatArePassedNow) {
  EXPECT_EQ(dangersOf({{5, 40}}, {{19, 41}}).size(), 1U);
  EXPECT_EQ(dangersOf({{5, 40}}, {{19, 40}}).size(), 0U);
  EXPECT_EQ(dangersOf({{6, 75}}, {{18, 74}}).size(), 1U);
  EXPECT_EQ(dangersOf({{8, 5}}, {{20, 10}}).size(), 1U);
}

TEST(SafeOrder, HasWiderLimitsFirstAndTheReplyPolicyLast) {
  std::vector<Change> changes;
  for (int number = 1; number <= 15; ++number) changes.push_back({.number = number, .from = 10, .to = 20});
  changes[6].to = 5;  // max_voltage becomes narrower, and so does min_voltage, which rises
  std::vector<int> order;
  for (const Change &change : inSafeOrder(changes)) order.push_back(change.number);
  EXPECT_EQ(order, (std::vector<int>{5, 8, 6, 7, 12, 13, 14, 9, 10, 11, 15, 4, 3, 1, 2}));
}

}  // namespace
}  // namespace tavril::servo
