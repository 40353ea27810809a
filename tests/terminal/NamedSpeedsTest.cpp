#include "terminal/NamedSpeeds.h"

#include <gtest/gtest.h>

#include <array>

namespace tavril {
namespace {

// As C libraries before glibc 2.42 have it, and as those since then have it, whichever this test is built
// with.
constexpr std::array<NamedSpeed, 3> codes{{{9600, 13}, {57600, 4097}, {115200, 4098}}};
constexpr std::array<NamedSpeed, 3> plainNumbers{{{9600, 9600}, {57600, 57600}, {115200, 115200}}};

TEST(NamedSpeeds, ASpeedHasItsConstantWhereConstantsAreCodes) {
  EXPECT_EQ(constantOfSpeed(codes, 9600), speed_t{13});
  EXPECT_EQ(constantOfSpeed(codes, 115200), speed_t{4098});
}

TEST(NamedSpeeds, ASpeedHasItsConstantWhereConstantsAreTheSpeedsThemselves) {
  EXPECT_EQ(constantOfSpeed(plainNumbers, 9600), speed_t{9600});
  EXPECT_EQ(constantOfSpeed(plainNumbers, 115200), speed_t{115200});
}

TEST(NamedSpeeds, ANumberThatIsACodeAndEveryOtherThatIsNotInTheListHasNone) {
  for (const unsigned long number : {0ul, 13ul, 4097ul, 4098ul, 9601ul, 250000ul, (1ul << 32) + 9600ul}) {
    EXPECT_EQ(constantOfSpeed(codes, number), std::nullopt) << number;
    EXPECT_EQ(constantOfSpeed(plainNumbers, number), std::nullopt) << number;
  }
}

TEST(NamedSpeeds, ThisSystemsListHasEachSpeedOnceAndInOrder) {
  unsigned long before = 0;
  for (const NamedSpeed &speed : namedSpeeds()) {
    EXPECT_GT(speed.baudRate, before);
    EXPECT_EQ(constantOfSpeed(namedSpeeds(), speed.baudRate), speed.constant);
    before = speed.baudRate;
  }
  EXPECT_EQ(namedSpeeds().size(), 30U);
  EXPECT_EQ(constantOfSpeed(namedSpeeds(), 115200), speed_t{B115200});
}

}  // namespace
}  // namespace tavril
