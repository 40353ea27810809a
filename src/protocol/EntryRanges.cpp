#include "protocol/EntryRanges.h"

#include <algorithm>

namespace tavril {

namespace {

// Kept: C23.
constexpr std::array<EntryRange, 12> ranges{{
    {1, u"sid", 0, 253, false, u"sID"},
    {5, u"maxtemp", 0, 253, false, u"maxTemp"},
    {6, u"minvolt", 0, 253, false, u"minVolt"},
    {7, u"maxvolt", 0, 253, false, u"maxVolt"},
    {8, u"maxload", 0, 512, false, u"maxLoad"},
    {9, u"kp", 0, 32766, false, u"kp"},
    {10, u"ki", 0, 32766, false, u"ki"},
    {11, u"kd", 0, 32766, false, u"kd"},
    {12, u"overtemp", 0, 255, false, u"overTemp"},
    {13, u"overvolt", 0, 255, false, u"overVolt"},
    {14, u"overload", 0, 255, false, u"overLoad"},
    {15, u"calangle", -20, 20, true, u"calibrationAngle"},
}};

}  // namespace

std::span<const EntryRange, 12> entryRanges() {
  return ranges;
}

const EntryRange *entryRangeOf(int registerNumber) {
  const auto *found = std::ranges::find(ranges, registerNumber, &EntryRange::registerNumber);
  return found == ranges.end() ? nullptr : found;
}

}  // namespace tavril
