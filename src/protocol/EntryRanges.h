#pragma once

#include <QStringView>

#include <array>
#include <span>

namespace tavril {

/// The range in which a setting may be entered. Registers 2 to 4 are chosen from a list and have no row.
struct EntryRange {
  int registerNumber;
  QStringView identifier;  ///< of the field in which it is entered
  int minimum;             ///< inclusive, as is the maximum
  int maximum;
  bool signAllowed;
  QStringView entryKey;  ///< where the text last read from the servo is kept
};

/// In the order of the registers.
std::span<const EntryRange, 12> entryRanges();
/// The range of the register, or nothing.
const EntryRange *entryRangeOf(int registerNumber);

}  // namespace tavril
