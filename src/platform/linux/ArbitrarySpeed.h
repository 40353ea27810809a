#pragma once

namespace tavril {

/// Sets both speeds of the line to any number of bits per second and reads back that the driver came within
/// 2% of it. 0 on success, else the error number: EINVAL when the driver chose another speed.
int setArbitrarySpeedOf(int descriptor, unsigned long baudRate);

}  // namespace tavril
