#pragma once

namespace tavril {

/// Makes libudev fail on demand. It takes the place of a few of libudev's functions in the test program, and
/// passes on to them what is not to fail.
struct UdevFaults {
  bool noContext = false;
  bool noMonitor = false;
  bool overflowOnce = false;  ///< what is waiting in the monitor is lost, as when its buffer is too small
};

UdevFaults &udevFaults();

}  // namespace tavril
