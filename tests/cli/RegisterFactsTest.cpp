#include "cli/RegisterFacts.h"
#include "platform/StringTable.h"
#include "simulator/Registers.h"
#include "tests/support/KeyTable.h"

#include <QString>

#include <gtest/gtest.h>

#include <iterator>

namespace tavril::cli {
namespace {

int numberOf(const QString &text) {
  const wire::Register *row = registerNamed(text);
  return row ? row->number : 0;
}

TEST(RegisterNames, AreThoseOfTheVirtualServo) {
  const auto rows = wire::settingRegisters;
  ASSERT_EQ(std::size(rows), simulator::registers::settings.size());
  for (std::size_t i = 0; i < simulator::registers::settings.size(); ++i) {
    const wire::Register &row = *wire::findRegister(static_cast<int>(i) + 1);
    const simulator::registers::SettingRow &setting = simulator::registers::settings[i];
    EXPECT_EQ(keyOf(row), QString::fromLatin1(setting.key));
    EXPECT_EQ(row.range.minimum, setting.lowest) << setting.key;
    EXPECT_EQ(row.range.maximum, setting.highest) << setting.key;
  }
}

TEST(RegisterNames, AreTheKeysAndTheNumbers) {
  for (const wire::Register &row : wire::registers) {
    EXPECT_EQ(numberOf(keyOf(row)), row.number);
    EXPECT_EQ(numberOf(QString::number(row.number)), row.number);
  }
  EXPECT_EQ(numberOf(QStringLiteral("KP")), 9);
  EXPECT_EQ(numberOf(QStringLiteral("max-load")), 8);
}

TEST(RegisterNames, UnderstandTheTemperatureSpeltRightToo) {
  EXPECT_EQ(numberOf(QStringLiteral("max_tempertaure")), 5);
  EXPECT_EQ(numberOf(QStringLiteral("max_temperature")), 5);
}

TEST(RegisterNames, AreNoneOutsideTheCatalogue) {
  for (const char *text : {"0", "21", "-1", "", "kq", "9.0", "kp "}) {
    EXPECT_EQ(numberOf(QString::fromLatin1(text)), 0) << text;
  }
}

TEST(RegisterNames, SuggestTheNearestOne) {
  EXPECT_TRUE(
      unknownRegisterText(QStringLiteral("max_laod")).contains(QStringLiteral("Did you mean max_load?")));
  EXPECT_TRUE(unknownRegisterText(QStringLiteral("kpp")).contains(QStringLiteral("Did you mean kp?")));
  const QString far = unknownRegisterText(QStringLiteral("colour"));
  EXPECT_FALSE(far.contains(QStringLiteral("Did you mean"))) << far.toStdString();
  for (const wire::Register &row : wire::registers) EXPECT_TRUE(far.contains(keyOf(row)));
}

TEST(SettingRanges, AreThoseOfTheEditor) {
  const auto range = [](int number) { return rangeText(*wire::findRegister(number)).toStdString(); };
  EXPECT_EQ(range(1), "0 to 253");
  EXPECT_EQ(range(5), "0 to 253");
  EXPECT_EQ(range(8), "0 to 512");
  EXPECT_EQ(range(9), "0 to 32766");
  EXPECT_EQ(range(12), "0 to 255");
  EXPECT_EQ(range(15), "-20 to 20");
  EXPECT_EQ(range(16), "read only");
}

TEST(Meaning, IsSaidInWords) {
  const KeyTable strings;
  const auto meaning = [&](int number, int value, std::optional<int> policy = 1) {
    return meaningOf(*wire::findRegister(number), value, policy, strings).toStdString();
  };
  EXPECT_EQ(meaning(2, 1), "answers status and read commands");
  EXPECT_EQ(meaning(2, 7), "no known choice");
  EXPECT_EQ(meaning(12, 12), "120 ms");
  EXPECT_EQ(meaning(9, 440), "");
  EXPECT_EQ(meaning(20, 20), "0.100 A");
  EXPECT_EQ(meaning(16, 0), "none");
  EXPECT_EQ(meaning(16, 5), "[StatusErrorMsg0]; [StatusErrorMsg2]");
  EXPECT_EQ(meaning(16, 0x10), "none");
  EXPECT_EQ(meaning(17, 0x40, 0), "[StatusDetailMsg60]");
  EXPECT_EQ(meaning(17, 0x40, 1), "[StatusDetailMsg61]");
  EXPECT_EQ(meaning(17, 0x40, std::nullopt), "[StatusDetailMsg60] (or: [StatusDetailMsg61])");
  EXPECT_EQ(meaning(17, 0x10, std::nullopt), "[StatusDetailMsg4]");
}

}  // namespace
}  // namespace tavril::cli
