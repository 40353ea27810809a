#pragma once

namespace tavril {

/// Bits per second.
struct LineSpeeds {
  unsigned input = 0;
  unsigned output = 0;
};

/// Whether settings with these control flags have a speed outside the fixed list, which the flags do not say.
bool isArbitrarySpeed(unsigned controlFlags);
/// The line's speeds as the driver has them; zeros when they cannot be read.
LineSpeeds speedsOf(int descriptor);
/// Sets them, where the line's control flags leave them open. 0 on success, else the error number.
int setSpeedsOf(int descriptor, const LineSpeeds &speeds);

/// Sets both speeds of the line to any number of bits per second and reads back that the driver came within
/// 2% of it. 0 on success, else the error number: EINVAL when the driver chose another speed.
int setArbitrarySpeedOf(int descriptor, unsigned long baudRate);

}  // namespace tavril
