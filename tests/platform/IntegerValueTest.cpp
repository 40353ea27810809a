#include "platform/IntegerValue.h"
#include "tests/support/PlainElement.h"

#include <gtest/gtest.h>

namespace tavril {
namespace {

TEST(IntegerValue, TakesTheNumberThatLeadsTheText) {
  EXPECT_EQ(integerValueOf(u"300"), 300);
  EXPECT_EQ(integerValueOf(u"-10"), -10);
  EXPECT_EQ(integerValueOf(u"+7"), 7);
  EXPECT_EQ(integerValueOf(u"007"), 7);
}

TEST(IntegerValue, SkipsLeadingWhiteSpace) {
  EXPECT_EQ(integerValueOf(u" \t\n 42"), 42);
}

TEST(IntegerValue, EndsAtTheFirstOtherCharacter) {
  EXPECT_EQ(integerValueOf(u"12a3"), 12);
  EXPECT_EQ(integerValueOf(u"5-"), 5);
  EXPECT_EQ(integerValueOf(u"1.9"), 1);
}

TEST(IntegerValue, IsZeroWithoutALeadingNumber) {
  EXPECT_EQ(integerValueOf(u""), 0);
  EXPECT_EQ(integerValueOf(u"-"), 0);
  EXPECT_EQ(integerValueOf(u"--5"), 0);
  EXPECT_EQ(integerValueOf(u"- 5"), 0);
  EXPECT_EQ(integerValueOf(u"a12"), 0);
}

TEST(IntegerValue, SaturatesAt32Bits) {
  EXPECT_EQ(integerValueOf(u"2147483647"), 2147483647);
  EXPECT_EQ(integerValueOf(u"2147483648"), 2147483647);
  EXPECT_EQ(integerValueOf(u"99999999999"), 2147483647);
  EXPECT_EQ(integerValueOf(u"99999999999999999999999999"), 2147483647);
  EXPECT_EQ(integerValueOf(u"-2147483648"), -2147483647 - 1);
  EXPECT_EQ(integerValueOf(u"-2147483649"), -2147483647 - 1);
  EXPECT_EQ(integerValueOf(u"-99999999999999999999999999"), -2147483647 - 1);
}

TEST(IntegerValue, OnlyAsciiDigitsCount) {
  EXPECT_EQ(integerValueOf(u"\u0663"), 0);
}

TEST(ScreenElement, ShowsAndReadsBackAnInteger) {
  PlainElement element(QStringLiteral("sid"));
  element.setIntegerValue(-10);
  EXPECT_EQ(element.text(), QStringLiteral("-10"));
  EXPECT_EQ(element.integerValue(), -10);
  EXPECT_EQ(element.identifier(), QStringLiteral("sid"));
}

}  // namespace
}  // namespace tavril
