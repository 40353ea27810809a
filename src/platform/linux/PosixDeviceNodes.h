#pragma once

#include "platform/DeviceNodes.h"

#include <QString>

namespace tavril {

/// The nodes of this machine, with the user database for the names.
class PosixDeviceNodes final : public DeviceNodes {
 public:
  DeviceNode look(const QString &path) const override;
};

}  // namespace tavril
