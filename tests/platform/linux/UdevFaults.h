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
  /// Messages of devices that went are lost, and only the others count as being there in time.
  bool removalsAreLost = false;
  std::deque<udev_device *> inTime;
  int devicesLookedAt = 0;
};

UdevFaults &udevFaults();

}  // namespace tavril
