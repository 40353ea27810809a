#include "wire/Registers.h"
#include "wire/StatusBits.h"

#include <gtest/gtest.h>

#include <set>

namespace tavril::wire {
namespace {

TEST(Registers, AreTwentyOfWhichFifteenCanBeWritten) {
  EXPECT_EQ(registerCount, 20);
  EXPECT_EQ(settingCount, 15);
  EXPECT_EQ(measuredRegisters.front().number, 16);
  EXPECT_EQ(settingRegisters.back().number, 15);
}

TEST(Registers, AreFoundByTheirNumbersAlone) {
  for (int number = 1; number <= 20; ++number) EXPECT_EQ(findRegister(number)->number, number);
  for (const int number : {-1, 0, 21, 255}) EXPECT_EQ(findRegister(number), nullptr) << number;
}

TEST(Registers, HaveKeysThatStandOnce) {
  std::set<std::u16string_view> values;
  std::set<std::u16string_view> names;
  for (const Register &row : registers) {
    values.insert(row.keys.value);
    names.insert(row.keys.name);
  }
  EXPECT_EQ(values.size(), 20u);
  EXPECT_EQ(names.size(), 20u);
}

TEST(Registers, HaveTheRangesOfTheEditor) {
  const auto range = [](int number) { return findRegister(number)->range; };
  for (const int number : {1, 5, 6, 7}) EXPECT_EQ(range(number), (Range{0, 253})) << number;
  EXPECT_EQ(range(8), (Range{0, 512}));
  for (const int number : {9, 10, 11}) EXPECT_EQ(range(number), (Range{0, 32766})) << number;
  for (const int number : {12, 13, 14}) EXPECT_EQ(range(number), (Range{0, 255})) << number;
  EXPECT_EQ(range(15), (Range{-20, 20}));
}

TEST(Registers, HaveTheRangeOfTheirChoices) {
  EXPECT_EQ(findRegister(2)->range, (Range{0, 2}));
  EXPECT_EQ(findRegister(3)->range, (Range{0, 1}));
  EXPECT_EQ(findRegister(4)->range, (Range{0, 1}));
}

TEST(Registers, HaveTheirValuesInOneByteOrTwo) {
  EXPECT_EQ(valueOf(*findRegister(8), 1, 44), 300);
  EXPECT_EQ(valueOf(*findRegister(11), 255, 254), 65534);
  EXPECT_EQ(valueOf(*findRegister(15), 0xFF, 0xF6), -10);
  EXPECT_EQ(valueOf(*findRegister(15), 0, 20), 20);
  EXPECT_EQ(valueOf(*findRegister(5), 9, 80), 80);
}

TEST(Registers, AreCheckPeriodsFrom12To14) {
  for (const Register &row : registers) EXPECT_EQ(row.isPeriod(), row.number >= 12 && row.number <= 14);
}

TEST(Registers, AreBitListsAt16And17) {
  for (const Register &row : registers) EXPECT_EQ(row.isBitList(), row.number == 16 || row.number == 17);
}

TEST(Registers, LimitWhatTheServoMeasures) {
  for (const Register &row : registers) {
    const bool isLimit = row.number >= 5 && row.number <= 8;
    EXPECT_EQ(row.limited != 0, isLimit) << row.number;
    if (row.isSetting()) {
      EXPECT_EQ(row.stage == WriteStage::Limit, isLimit) << row.number;
    }
  }
  EXPECT_EQ(findRegister(5)->limited, 19);
  EXPECT_EQ(findRegister(6)->limited, 18);
  EXPECT_EQ(findRegister(7)->limited, 18);
  EXPECT_EQ(findRegister(8)->limited, 20);
  for (const Register &row : registers) EXPECT_EQ(row.isLowest, row.number == 6) << row.number;
}

TEST(StatusBits, HaveTextsButForErrorBit4) {
  for (const StatusBit &bit : errorBits) EXPECT_EQ(bit.key.empty(), bit.bit == 4);
  for (const StatusBit &bit : detailBits) EXPECT_FALSE(bit.key.empty());
}

TEST(StatusBits, DependOnTheTorquePolicyInDetailBit6) {
  EXPECT_EQ(detailBits[2].mask(), 0x40);
  EXPECT_EQ(detailBits[2].keyFor(true), u"StatusDetailMsg60");
  EXPECT_EQ(detailBits[2].keyFor(false), u"StatusDetailMsg61");
  EXPECT_EQ(detailBits[3].keyFor(true), u"StatusDetailMsg7");
  EXPECT_EQ(detailBits[3].keyFor(false), u"StatusDetailMsg7");
}

}  // namespace
}  // namespace tavril::wire
