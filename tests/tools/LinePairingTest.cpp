#include "tools/LinePairing.h"

#include <gtest/gtest.h>

namespace tavril {
namespace {

TEST(LinePairing, WritesEachPairOnALineOfItsOwn) {
  const LinePairing pairing = LinePairing::of({"a", "b"}, {"x", "y"});
  EXPECT_EQ(pairing.table, QStringLiteral("\"a\"=\"x\";\n\"b\"=\"y\";\n"));
  EXPECT_FALSE(pairing.missing);
}

TEST(LinePairing, OfNoLinesIsAnEmptyTable) {
  EXPECT_EQ(LinePairing::of({}, {}).table, QString());
  EXPECT_EQ(LinePairing::of({}, {"x"}).table, QString());
  EXPECT_FALSE(LinePairing::of({}, {}).missing);
}

TEST(LinePairing, OfEmptyLinesIsAPairOfEmptyTexts) {
  EXPECT_EQ(LinePairing::of({""}, {""}).table, QStringLiteral("\"\"=\"\";\n"));
}

TEST(LinePairing, AValueFileWithMoreLinesThanTheKeyFileHasItsExtraLinesIgnored) {
  EXPECT_EQ(LinePairing::of({"a"}, {"x", "y", "z"}).table, QStringLiteral("\"a\"=\"x\";\n"));
}

TEST(LinePairing, AValueFileWithFewerLinesFailsAtTheFirstMissingLine) {
  const LinePairing pairing = LinePairing::of({"a", "b", "c"}, {"x", "y"});
  EXPECT_EQ(pairing.missing, 2);
  EXPECT_EQ(pairing.table, QString());
  EXPECT_EQ(LinePairing::of({"a"}, {}).missing, 0);
}

TEST(LinePairing, QuotesBackslashesAndCarriageReturnsStandAsTheyAre) {
  EXPECT_EQ(LinePairing::of({" a\r"}, {"say \"x\"\\n\t"}).table,
            QStringLiteral("\" a\r\"=\"say \"x\"\\n\t\";\n"));
}

TEST(LinePairing, TextsOfAnyScriptAreKept) {
  const QString text = QString::fromUtf8("轉換 \U0001F600 ü");
  EXPECT_EQ(LinePairing::of({text}, {text}).table, QStringLiteral("\"%1\"=\"%1\";\n").arg(text));
}

TEST(LinePairing, ReservesWhatItNeedsAndNoMore) {
  const QStringList lines(1000, QStringLiteral("0123456789"));
  const LinePairing pairing = LinePairing::of(lines, lines);
  EXPECT_EQ(pairing.table.size(), 27 * 1000);
  // Strings round a reservation up by some bytes, but do not double.
  EXPECT_LT(pairing.table.capacity(), 27 * 1000 + 64);
}

}  // namespace
}  // namespace tavril
