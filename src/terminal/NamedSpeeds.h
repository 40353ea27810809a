#pragma once

#include <optional>
#include <span>

#include <termios.h>

namespace tavril {

/// A speed in bits per second, and the constant that stands for it in a termios record. The constant is a
/// code in older C libraries (4098 for 115200) and the speed itself since glibc 2.42.
struct NamedSpeed {
  unsigned long baudRate;
  speed_t constant;
};

/// Every speed that <termios.h> has a constant for.
std::span<const NamedSpeed> namedSpeeds();

/// The constant of exactly this speed. None when the list does not have it, also when the number is the code
/// of another speed.
std::optional<speed_t> constantOfSpeed(std::span<const NamedSpeed> speeds, unsigned long baudRate);

}  // namespace tavril
