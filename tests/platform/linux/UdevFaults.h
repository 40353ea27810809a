#pragma once

namespace tavril {

/// Makes libudev fail on demand, and counts what it is asked. It takes the place of a few of libudev's
/// functions in the test program, and passes on to them what is not to fail.
struct UdevFaults {
  bool noContext = false;
  bool noMonitor = false;
  bool overflowOnce = false;  ///< what is waiting in the monitor is lost, as when its buffer is too small
  int devicesLookedAt = 0;
};

UdevFaults &udevFaults();

}  // namespace tavril
