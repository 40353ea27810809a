#pragma once

namespace tavril::wire {

/// Both ends belong to it.
struct Range {
  int minimum = 0;
  int maximum = 0;

  constexpr bool contains(int value) const { return value >= minimum && value <= maximum; }
  bool operator==(const Range &) const = default;
};

/// The positions of the servo, and how many of them make a degree.
inline constexpr Range positionRange{0, 1023};
inline constexpr double positionsPerDegree = 3.41;
inline constexpr Range wholeDegrees{0, static_cast<int>(positionRange.maximum / positionsPerDegree)};

}  // namespace tavril::wire
