#include "tests/platform/linux/UdevFaults.h"

#include <libudev.h>

#include <cerrno>
#include <dlfcn.h>
#include <string_view>
#include <utility>

#include <poll.h>

namespace tavril {

UdevFaults &udevFaults() {
  static UdevFaults faults;
  return faults;
}

}  // namespace tavril

using tavril::udevFaults;

namespace {

template <typename Function>
Function *original(Function *, const char *name) {
  return reinterpret_cast<Function *>(dlsym(RTLD_NEXT, name));
}

bool isRemoval(udev_device *event) {
  const char *const action = udev_device_get_action(event);
  return action != nullptr && std::string_view(action) == "remove";
}

}  // namespace

extern "C" {

udev *udev_new() {
  return udevFaults().noContext ? nullptr : original(&udev_new, "udev_new")();
}

udev_monitor *udev_monitor_new_from_netlink(udev *context, const char *name) {
  if (udevFaults().noMonitor) return nullptr;
  return original(&udev_monitor_new_from_netlink, "udev_monitor_new_from_netlink")(context, name);
}

udev_device *udev_device_new_from_syspath(udev *context, const char *place) {
  ++udevFaults().devicesLookedAt;
  return original(&udev_device_new_from_syspath, "udev_device_new_from_syspath")(context, place);
}

udev_device *udev_monitor_receive_device(udev_monitor *monitor) {
  const auto receive = original(&udev_monitor_receive_device, "udev_monitor_receive_device");
  tavril::UdevFaults &faults = udevFaults();
  if (const auto kept = std::exchange(faults.overflowAfter, std::nullopt)) {
    // One that is on its way is among them.
    constexpr int longestWay_ms = 20000;
    for (;;) {
      const bool isOneMissing = faults.inTime.size() < *kept;
      pollfd input{udev_monitor_get_fd(monitor), POLLIN, 0};
      if (isOneMissing) ::poll(&input, 1, longestWay_ms);
      udev_device *waiting = receive(monitor);
      if (!waiting) break;
      if (isOneMissing && !(faults.removalsAreLost && isRemoval(waiting))) {
        faults.inTime.push_back(waiting);
      } else {
        udev_device_unref(waiting);
      }
    }
    errno = ENOBUFS;
    return nullptr;
  }
  if (faults.inTime.empty()) return receive(monitor);
  udev_device *first = faults.inTime.front();
  faults.inTime.pop_front();
  return first;
}

// udev's database, in which it notes the devices that it is done with, is not part of the mocked machine; the
// time that it notes there is.
int udev_device_get_is_initialized(udev_device *device) {
  return udev_device_get_property_value(device, "USEC_INITIALIZED") == nullptr ? 0 : 1;
}
}
