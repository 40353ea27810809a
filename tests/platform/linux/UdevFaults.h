#pragma once

#include <cstddef>
#include <deque>
#include <optional>

struct udev_device;

namespace tavril {

/// Makes libudev fail on demand, and counts what it is asked. It takes the place of a few of libudev's
/// functions in the test program, and passes on to them what is not to fail.
struct UdevFaults {
  bool noContext = false;
  bool noMonitor = false;
  /// The monitor's buffer was too small: of what is waiting in it, all after so many messages is lost. The
  /// kernel says so first, and then hands over those that were there in time.
  std::optional<std::size_t> overflowAfter;
  /// How many of the first messages are lost instead of being there in time.
  std::size_t lostFirst = 0;
  std::deque<udev_device *> inTime;
  int devicesLookedAt = 0;
};

UdevFaults &udevFaults();

}  // namespace tavril
