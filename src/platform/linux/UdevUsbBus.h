#pragma once

#include "platform/UsbBus.h"

#include <vector>

namespace tavril {

/// The USB bus as udev knows it. An adapter counts as one for serial lines when it has a terminal, when its
/// interface says so, or by its maker's number.
class UdevUsbBus final : public UsbBus {
 public:
  std::vector<UsbAdapter> serialAdapters() const override;
};

}  // namespace tavril
